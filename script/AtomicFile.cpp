// SPDX-License-Identifier: MIT
#include "AtomicFile.h"

#include "NumberText.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#if defined(__linux__) && !defined(RENAME_EXCHANGE)
#include <sys/syscall.h>
#endif

namespace AtomicFile {

namespace {

std::string systemReason(int error) { return std::system_category().message(error); }

std::string cannotSave(const std::string &path, std::string_view step, int error)
{
    return "Cannot save '" + path + "' (" + std::string(step) + "): " + systemReason(error);
}

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

std::string temporaryName(const std::string &path)
{
    static std::atomic<unsigned> counter{0};
    return folderOf(path) + "/." + fileNameOf(path) + ".save-" + NumberText::intText(::getpid()) + "-"
           + NumberText::intText(counter++);
}

// The kernel's renameat2 flags, for a C library without the wrapper.
constexpr unsigned kNoReplace = 1u << 0;
constexpr unsigned kExchange = 1u << 1;

// Gives 0 or the error; EINVAL where the flags are not supported.
int renameWith(const std::string &from, const std::string &to, unsigned flags)
{
#if defined(__linux__) && defined(RENAME_EXCHANGE)
    const int result = ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), flags);
#elif defined(__linux__) && defined(SYS_renameat2)
    const long result = ::syscall(SYS_renameat2, AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), flags);
#else
    (void)from, (void)to, (void)flags;
    errno = EINVAL;
    const int result = -1;
#endif
    return result == 0 ? 0 : errno;
}

bool unsupported(int error) { return error == EINVAL || error == ENOSYS; }

// O_EXCL with a name of our own rather than mkstemp: mkstemp creates the file 0600, while a new
// script should get the usual 0666 less the umask.
int createTemporary(const std::string &path, std::string &temporary)
{
    for (int attempt = 0; attempt < 100; ++attempt) {
        temporary = temporaryName(path);
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

// Syncs the folder so that the renames in it are durable. A folder that cannot be synced (some
// file systems refuse) still holds the complete new files.
bool syncFolder(const std::string &folder)
{
    const int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return false;
    const bool synced = ::fsync(fd) == 0;
    ::close(fd);
    return synced;
}

// Flushes one file, or with `all` the whole file system it is on. Gives 0 or the error.
int syncFile(const std::string &file, bool all)
{
    const int fd = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return errno;
#ifdef __linux__
    const int result = all ? ::syncfs(fd) : ::fsync(fd);
#else
    const int result = ::fsync(fd);
#endif
    const int error = result == 0 ? 0 : errno;
    ::close(fd);
    return error;
}

} // namespace

std::optional<std::string> write(const std::string &path, std::string_view bytes)
{
    Batch batch;
    if (std::optional<std::string> problem = batch.stage(path, bytes))
        return problem;
    return batch.commit().front();
}

Batch::~Batch()
{
    for (const Staged &staged : staged_)
        ::unlink(staged.temporary.c_str());
    for (const auto &[device, spares] : spares_)
        for (const std::string &spare : spares)
            ::unlink(spare.c_str());
}

// A spare of the file system, moved to a fresh name beside path and open for writing; or -1 when
// there is none.
int Batch::takeSpare(unsigned long long device, const std::string &path, std::string &temporary)
{
    const auto found = spares_.find(device);
    if (found == spares_.end())
        return -1;
    std::vector<std::string> &spares = found->second;
    while (!spares.empty()) {
        const std::string spare = std::move(spares.back());
        spares.pop_back();
        // Only a regular file that no other path links to may be rewritten (a replaced target's
        // other hard links still show it), and only one owned as a new file of ours would be.
        const int fd = ::open(spare.c_str(), O_WRONLY | O_NOFOLLOW | O_CLOEXEC);
        struct stat info {};
        if (fd < 0 || ::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode) || info.st_nlink != 1
            || info.st_uid != ::geteuid() || info.st_gid != ::getegid()) {
            if (fd >= 0)
                ::close(fd);
            ::unlink(spare.c_str());
            continue;
        }
        int error = EEXIST;
        for (int attempt = 0; attempt < 100 && error == EEXIST; ++attempt) {
            temporary = temporaryName(path);
            error = renameWith(spare, temporary, kNoReplace);
        }
        if (error) {
            // Another mount of the same file system, say: the spare stays for other folders.
            ::close(fd);
            spares.push_back(spare);
            return -1;
        }
        return fd;
    }
    return -1;
}

std::optional<std::string> Batch::stage(const std::string &path, std::string_view bytes)
{
    struct stat target {};
    const bool targetExists = ::stat(path.c_str(), &target) == 0;
    if (targetExists && S_ISDIR(target.st_mode))
        return "Cannot save '" + path + "': " + systemReason(EISDIR);
    const bool regular = targetExists && S_ISREG(target.st_mode);

    std::string temporary;
    int fd = regular ? takeSpare(target.st_dev, path, temporary) : -1;
    if (fd < 0)
        fd = createTemporary(path, temporary);
    if (fd < 0)
        return cannotSave(path, "no temporary file in '" + folderOf(path) + "'", errno);

    const char *step = nullptr;
    struct stat info {};
    if (regular && ::fchmod(fd, target.st_mode & 07777) != 0)
        step = "copying the permissions";
    else if (!writeAll(fd, bytes))
        step = "writing";
    else if (::fstat(fd, &info) != 0)
        step = "writing";
    // A spare is overwritten and then cut to length rather than emptied first: emptying frees its
    // blocks, and freeing them is what costs here.
    else if (static_cast<unsigned long long>(info.st_size) > bytes.size()
             && ::ftruncate(fd, static_cast<off_t>(bytes.size())) != 0)
        step = "writing";
    int error = errno;
    if (::close(fd) != 0 && !step) {
        step = "closing";
        error = errno;
    }
    if (step) {
        ::unlink(temporary.c_str());
        return cannotSave(path, step, error);
    }
    staged_.push_back({path, std::move(temporary), info.st_dev, regular});
    return std::nullopt;
}

std::vector<std::optional<std::string>> Batch::commit()
{
    const std::vector<Staged> batch = std::move(staged_);
    staged_.clear();

    // Every staged file is durable before any target is replaced, so that no replacement
    // publishes content that could still be lost: one syncfs per file system, or an fsync of the
    // file when it is the only one there.
    std::map<unsigned long long, int> onDevice, syncError;
    for (const Staged &staged : batch)
        ++onDevice[staged.device];
    for (const Staged &staged : batch)
        if (!syncError.contains(staged.device))
            syncError[staged.device] = syncFile(staged.temporary, onDevice[staged.device] > 1);

    std::vector<std::optional<std::string>> failures(batch.size());
    std::map<std::string, bool> folders; // synced
    std::vector<const Staged *> swapped;
    for (std::size_t i = 0; i < batch.size(); ++i) {
        const Staged &staged = batch[i];
        const char *step = "flushing";
        int error = syncError.at(staged.device);
        if (!error) {
            // The exchange leaves the old file under the temporary name, to be a spare.
            step = "replacing the file";
            error = staged.regular ? renameWith(staged.temporary, staged.path, kExchange) : EINVAL;
            if (!error)
                swapped.push_back(&staged);
            else if (unsupported(error) || error == ENOENT)
                error = ::rename(staged.temporary.c_str(), staged.path.c_str()) == 0 ? 0 : errno;
        }
        if (error) {
            ::unlink(staged.temporary.c_str());
            failures[i] = cannotSave(staged.path, step, error);
        } else {
            folders[folderOf(staged.path)] = false;
        }
    }
    for (auto &[folder, synced] : folders)
        synced = syncFolder(folder);
    // A spare is overwritten in place, so its exchange must be durable first: until then, after a
    // crash, the target could still name the spare's inode.
    for (const Staged *staged : swapped) {
        if (folders.at(folderOf(staged->path)))
            spares_[staged->device].push_back(staged->temporary);
        else
            ::unlink(staged->temporary.c_str());
    }
    return failures;
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
