// SPDX-License-Identifier: MIT
#include "AtomicFile.h"

#include "NumberText.h"

#include <atomic>
#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace AtomicFile {

namespace {

std::string systemReason(int error) { return std::system_category().message(error); }

std::string folderOf(const std::string &path)
{
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string fileNameOf(const std::string &path)
{
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

// O_EXCL with a name of our own rather than mkstemp: mkstemp creates the file 0600, while a new
// script should get the usual 0666 less the umask.
int createTemporary(const std::string &path, std::string &temporary)
{
    static std::atomic<unsigned> counter{0};
    const std::string stem = folderOf(path) + "/." + fileNameOf(path) + ".save-" + NumberText::intText(::getpid()) + "-";
    for (int attempt = 0; attempt < 100; ++attempt) {
        temporary = stem + NumberText::intText(counter++);
        const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd >= 0 || errno != EEXIST)
            return fd;
    }
    return -1;
}

bool writeAll(int fd, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = ::write(fd, bytes.data(), bytes.size());
        if (written < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

} // namespace

std::optional<std::string> write(const std::string &path, std::string_view bytes)
{
    const std::string failure = "Cannot save '" + path + "'";
    struct stat target {};
    const bool targetExists = ::stat(path.c_str(), &target) == 0;
    if (targetExists && S_ISDIR(target.st_mode))
        return failure + ": " + systemReason(EISDIR);

    std::string temporary;
    const int fd = createTemporary(path, temporary);
    if (fd < 0)
        return failure + " (no temporary file in '" + folderOf(path) + "'): " + systemReason(errno);

    const char *step = nullptr;
    if (targetExists && S_ISREG(target.st_mode) && ::fchmod(fd, target.st_mode & 07777) != 0)
        step = "copying the permissions";
    else if (!writeAll(fd, bytes))
        step = "writing";
    else if (::fsync(fd) != 0)
        step = "flushing";
    int error = errno;
    if (::close(fd) != 0 && !step) {
        step = "closing";
        error = errno;
    }
    if (!step && ::rename(temporary.c_str(), path.c_str()) != 0) {
        step = "replacing the file";
        error = errno;
    }
    if (step) {
        ::unlink(temporary.c_str());
        return failure + " (" + step + "): " + systemReason(error);
    }

    // The rename is durable only once the folder is synced; a folder that cannot be synced (some
    // file systems refuse) still holds the complete new file.
    const int folder = ::open(folderOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder >= 0) {
        ::fsync(folder);
        ::close(folder);
    }
    return std::nullopt;
}

std::optional<std::string> read(const std::string &path, std::string &bytes)
{
    const std::string failure = "Cannot read '" + path + "': ";
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return failure + systemReason(errno);

    bytes.clear();
    struct stat info {};
    if (::fstat(fd, &info) == 0 && S_ISREG(info.st_mode))
        bytes.reserve(static_cast<std::size_t>(info.st_size));
    char buffer[65536];
    for (;;) {
        const ssize_t count = ::read(fd, buffer, sizeof buffer);
        if (count == 0)
            break;
        if (count < 0) {
            if (errno == EINTR)
                continue;
            const int error = errno;
            ::close(fd);
            bytes.clear();
            return failure + systemReason(error);
        }
        bytes.append(buffer, static_cast<std::size_t>(count));
    }
    ::close(fd);
    return std::nullopt;
}

} // namespace AtomicFile
