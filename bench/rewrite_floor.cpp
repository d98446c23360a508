// SPDX-License-Identifier: MIT
// The least a safe in-place rewrite asks of the kernel, for comparison with vantorel-cli under
// bench/batch.sh: the same steps for each file (read it and keep it open, write an unnamed new
// file, one sync of the whole file system for each slice, look at the path again, name the new
// file, replace the old one, close the old one), the same eight threads and slices of 128, and
// nothing else: no parsing, no normalising, no owner or lock, no error report beyond the first.
// Each file gets its own bytes back, so its content does not change; a file it cannot read or
// write whole (64 KiB at most) is left alone.
//
//   bench/batch.sh 10000 build/bench/rewrite_floor
//
// Takes the last argument as the folder, so that it runs where vantorel-cli runs.
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

std::atomic<bool> failed{false};

void check(bool ok, const char *what)
{
    if (!ok && !failed.exchange(true))
        std::fprintf(stderr, "rewrite_floor: %s: %s\n", what, errno ? std::strerror(errno) : "not the whole file");
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: rewrite_floor [ignored arguments] FOLDER\n");
        return 2;
    }
    const std::string folder = argv[argc - 1];
    std::vector<std::string> files;
    DIR *listing = ::opendir(folder.c_str());
    check(listing != nullptr, folder.c_str());
    while (const dirent *entry = listing ? ::readdir(listing) : nullptr)
        if (std::string_view(entry->d_name).ends_with(".wepn"))
            files.push_back(folder + '/' + entry->d_name);
    if (listing)
        ::closedir(listing);
    std::sort(files.begin(), files.end());

    const int folderFd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    check(folderFd >= 0, folder.c_str());
    constexpr std::size_t kSlice = 128;
    std::atomic<std::size_t> next{0};
    const auto work = [&] {
        std::string bytes(1 << 16, '\0');
        std::vector<int> created;
        std::vector<int> read;
        std::thread closer;
        for (std::size_t first; (first = next.fetch_add(kSlice)) < files.size();) {
            const std::size_t last = std::min(first + kSlice, files.size());
            created.clear();
            for (std::size_t i = first; i < last; ++i) {
                // A file that is not read whole, or not written whole, is left as it is.
                errno = 0;
                const int fd = ::open(files[i].c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
                struct stat seen {};
                const bool opened = fd >= 0 && ::fstat(fd, &seen) == 0 && seen.st_size < std::ssize(bytes);
                const ssize_t length = opened ? ::read(fd, bytes.data(), bytes.size()) : -1;
                check(opened && length == seen.st_size, "reading");
                read.push_back(fd);
                int fresh = length == seen.st_size ? ::open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0644) : -1;
                if (fresh >= 0 && ::write(fresh, bytes.data(), static_cast<std::size_t>(length)) != length) {
                    ::close(fresh);
                    fresh = -1;
                }
                check(fresh >= 0, "writing");
                created.push_back(fresh);
            }
            check(::syncfs(folderFd) == 0, "syncing");
            for (std::size_t i = first; i < last; ++i) {
                if (created[i - first] < 0)
                    continue;
                struct stat now {};
                const std::string temporary = folder + "/.floor-" + std::to_string(i) + ".tmp";
                check(::lstat(files[i].c_str(), &now) == 0, "looking");
                // Without the privilege to link by descriptor (older systems), through /proc.
                const std::string byProc = "/proc/self/fd/" + std::to_string(created[i - first]);
                check(::linkat(created[i - first], "", AT_FDCWD, temporary.c_str(), AT_EMPTY_PATH) == 0
                          || ::linkat(AT_FDCWD, byProc.c_str(), AT_FDCWD, temporary.c_str(), AT_SYMLINK_FOLLOW) == 0,
                      "linking");
                check(::rename(temporary.c_str(), files[i].c_str()) == 0, "replacing");
                ::close(created[i - first]);
            }
            if (closer.joinable())
                closer.join();
            closer = std::thread([old = std::move(read)] {
                for (const int fd : old)
                    ::close(fd);
            });
            read.clear();
        }
        if (closer.joinable())
            closer.join();
    };
    std::vector<std::thread> threads;
    for (int k = 0; k < 8; ++k)
        threads.emplace_back(work);
    for (std::thread &thread : threads)
        thread.join();
    check(::fsync(folderFd) == 0, "syncing the folder");
    return failed ? 1 : 0;
}
