// SPDX-License-Identifier: MIT
#include "BatchSave.h"

#include "AtomicFile.h"
#include "Parallel.h"

#include <atomic>
#include <cerrno>
#include <map>
#include <set>
#include <system_error>

#ifdef __linux__
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace BatchSave {

namespace {

std::string reasonOf(int error)
{
    return std::system_category().message(error);
}

std::string folderOf(const std::string &path)
{
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string cannotSave(const std::string &path, std::string_view step, int error)
{
    return "Cannot save '" + path + "' (" + std::string(step) + "): " + reasonOf(error);
}

} // namespace

#ifdef __linux__

std::optional<std::string> stage(const std::string &path, std::string_view bytes, Staged &staged)
{
    struct stat target {};
    const bool targetExists = ::stat(path.c_str(), &target) == 0;
    if (targetExists && S_ISDIR(target.st_mode))
        return "Cannot save '" + path + "': " + reasonOf(EISDIR);

    static std::atomic<unsigned> counter{0};
    const std::size_t slash = path.rfind('/');
    const std::string stem = folderOf(path) + "/." + path.substr(slash == std::string::npos ? 0 : slash + 1)
                             + ".cli-" + std::to_string(::getpid()) + "-";
    std::string temporary;
    int fd = -1;
    for (int attempt = 0; attempt < 100 && fd < 0; ++attempt) {
        temporary = stem + std::to_string(counter++);
        fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd < 0 && errno != EEXIST)
            break;
    }
    if (fd < 0)
        return cannotSave(path, "no temporary file in '" + folderOf(path) + "'", errno);

    const char *step = nullptr;
    int error = 0;
    if (targetExists && S_ISREG(target.st_mode) && ::fchmod(fd, target.st_mode & 07777) != 0) {
        step = "copying the permissions";
        error = errno;
    }
    for (std::string_view rest = bytes; !step && !rest.empty();) {
        const ssize_t written = ::write(fd, rest.data(), rest.size());
        if (written < 0 && errno != EINTR) {
            step = "writing";
            error = errno;
        } else if (written > 0) {
            rest.remove_prefix(static_cast<std::size_t>(written));
        }
    }
    struct stat info {};
    if (!step && ::fstat(fd, &info) != 0) {
        step = "writing";
        error = errno;
    }
    if (::close(fd) != 0 && !step) {
        step = "closing";
        error = errno;
    }
    if (step) {
        ::unlink(temporary.c_str());
        return cannotSave(path, step, error);
    }
    staged = {path, std::move(temporary), info.st_dev};
    return std::nullopt;
}

std::vector<std::optional<std::string>> commit(const std::vector<Staged> &batch, unsigned threads)
{
    // One syncfs per file system makes every staged file durable before any target is replaced:
    // a rename never publishes a file whose content could still be lost.
    std::map<unsigned long long, int> syncError;
    for (const Staged &staged : batch) {
        if (syncError.contains(staged.device))
            continue;
        const int folder = ::open(folderOf(staged.temporary).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        syncError[staged.device] = folder >= 0 && ::syncfs(folder) == 0 ? 0 : errno;
        if (folder >= 0)
            ::close(folder);
    }

    std::vector<std::optional<std::string>> failures(batch.size());
    Parallel::forEach(batch.size(), threads, [&](std::size_t i) {
        const Staged &staged = batch[i];
        if (const int error = syncError.at(staged.device)) {
            failures[i] = cannotSave(staged.path, "flushing", error);
        } else if (::rename(staged.temporary.c_str(), staged.path.c_str()) != 0) {
            failures[i] = cannotSave(staged.path, "replacing the file", errno);
        } else {
            return;
        }
        ::unlink(staged.temporary.c_str());
    });

    // The renames are durable once their folders are synced; a folder that refuses still holds
    // the complete new files.
    std::set<std::string> folders;
    for (std::size_t i = 0; i < batch.size(); ++i)
        if (!failures[i])
            folders.insert(folderOf(batch[i].path));
    for (const std::string &folder : folders) {
        const int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (fd >= 0) {
            ::fsync(fd);
            ::close(fd);
        }
    }
    return failures;
}

#else

// Elsewhere each file is saved on its own, atomically, when it is staged.
std::optional<std::string> stage(const std::string &path, std::string_view bytes, Staged &staged)
{
    staged = {path, {}, 0};
    return AtomicFile::write(path, bytes);
}

std::vector<std::optional<std::string>> commit(const std::vector<Staged> &batch, unsigned)
{
    return std::vector<std::optional<std::string>>(batch.size());
}

#endif

} // namespace BatchSave
