// SPDX-License-Identifier: MIT
#include "AtomicFile.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <system_error>

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/utsname.h>
#include <unistd.h>
#if defined(__linux__) && !defined(RENAME_NOREPLACE)
#include <sys/syscall.h>
#endif

namespace AtomicFile {

void (*stepHook)(std::string_view step) = nullptr;
const char *unwrittenFigures = "/proc/meminfo";

namespace {

// A new file gets a name only when it is complete and synced, just before it replaces its target,
// and it is locked while it has that name. A file with such a name that nobody holds locked was
// left by a process killed between the two steps: a later save in the folder removes it.
constexpr std::string_view kTemporaryPrefix = ".vantorel-";
constexpr std::string_view kTemporarySuffix = ".tmp";

void step(std::string_view name)
{
    if (stepHook)
        stepHook(name);
}

std::string systemReason(int error) { return std::system_category().message(error); }

std::string cannotSave(const std::string &path, std::string_view what, int error)
{
    return "Cannot save " + quoted(path) + " (" + std::string(what) + "): " + systemReason(error);
}

std::string folderOf(const std::string &path)
{
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

// Short whatever the target's name, so that it stays within the 255 bytes a name may have.
std::string temporaryName(const std::string &folder)
{
    static const long long pid = ::getpid();
    static std::atomic<unsigned long long> counter{0};
    return folder + '/' + std::string(kTemporaryPrefix) + std::to_string(pid) + '-'
           + std::to_string(counter++) + std::string(kTemporarySuffix);
}

// The process's umask, read without setting it (another thread may be creating a file meanwhile),
// or nothing where the system does not show it.
std::optional<mode_t> processUmask()
{
    static const std::optional<mode_t> mask = []() -> std::optional<mode_t> {
        std::string status;
        if (AtomicFile::read("/proc/self/status", status))
            return std::nullopt;
        const std::size_t at = status.find("\nUmask:\t");
        if (at == std::string::npos)
            return std::nullopt;
        return static_cast<mode_t>(std::strtoul(status.c_str() + at + 8, nullptr, 8));
    }();
    return mask;
}

void remember(const struct stat &info, const std::string &target, Seen &seen)
{
    seen.exists = true;
    seen.target = target;
    seen.device = info.st_dev;
    seen.inode = info.st_ino;
    seen.links = info.st_nlink;
    seen.size = info.st_size;
    seen.modifiedSeconds = info.st_mtim.tv_sec;
    seen.modifiedNanoseconds = info.st_mtim.tv_nsec;
    seen.changedSeconds = info.st_ctim.tv_sec;
    seen.changedNanoseconds = info.st_ctim.tv_nsec;
    seen.mode = info.st_mode;
    seen.owner = info.st_uid;
    seen.group = info.st_gid;
}

// Whether the path still names the file that was read, unchanged: the same file system and
// inode, the same size and the same modification and change times.
bool unchanged(const Seen &seen)
{
    struct stat now {};
    if (::lstat(seen.target.c_str(), &now) != 0)
        return !seen.exists && errno == ENOENT;
    return seen.exists && now.st_dev == seen.device && now.st_ino == seen.inode && now.st_size == seen.size
           && now.st_mtim.tv_sec == seen.modifiedSeconds && now.st_mtim.tv_nsec == seen.modifiedNanoseconds
           && now.st_ctim.tv_sec == seen.changedSeconds && now.st_ctim.tv_nsec == seen.changedNanoseconds;
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

// Gives 0 or the error.
int renameFile(const std::string &from, const std::string &to, bool noReplace)
{
#if defined(__linux__)
    if (noReplace) {
#if defined(RENAME_NOREPLACE)
        const int result = ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE);
#else
        const long result = ::syscall(SYS_renameat2, AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), 1u);
#endif
        if (result == 0 || (errno != EINVAL && errno != ENOSYS))
            return result == 0 ? 0 : errno;
    }
#endif
    return ::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

// A file without a name in the folder, or -1 with errno set where the system cannot make one.
int createUnnamed(const std::string &folder, mode_t mode)
{
#ifdef O_TMPFILE
    return ::open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, mode);
#else
    (void)folder, (void)mode;
    errno = EOPNOTSUPP;
    return -1;
#endif
}

// A new file with a temporary name, locked, or -1 with errno set. Until it is locked, another
// process may take it for a stale one and remove it: then it is made again under another name.
int createNamed(const std::string &folder, mode_t mode, std::string &temporary)
{
    for (int attempt = 0; attempt < 100; ++attempt) {
        temporary = temporaryName(folder);
        const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
        if (fd < 0 && errno != EEXIST)
            return -1;
        struct stat held {}, named {};
        if (fd >= 0 && ::flock(fd, LOCK_EX) == 0 && ::fstat(fd, &held) == 0
            && ::lstat(temporary.c_str(), &named) == 0 && held.st_ino == named.st_ino && held.st_dev == named.st_dev)
            return fd;
        if (fd >= 0)
            ::close(fd);
    }
    errno = EEXIST;
    return -1;
}

bool noUnnamedFiles(int error) { return error == EOPNOTSUPP || error == EISDIR || error == EINVAL; }

// Gives the unnamed file a temporary name beside its target. Gives 0 or the error.
int linkUnnamed(int fd, const std::string &folder, std::string &temporary)
{
    // Only a privileged process may link a file by its descriptor; others go through /proc, which
    // costs a path lookup.
    static std::atomic<bool> byDescriptor{true};
    const std::string byProc = "/proc/self/fd/" + std::to_string(fd);
    for (int attempt = 0; attempt < 100; ++attempt) {
        temporary = temporaryName(folder);
        if (byDescriptor && ::linkat(fd, "", AT_FDCWD, temporary.c_str(), AT_EMPTY_PATH) == 0)
            return 0;
        if (byDescriptor && errno == ENOENT)
            byDescriptor = false;
        if (!byDescriptor && ::linkat(AT_FDCWD, byProc.c_str(), AT_FDCWD, temporary.c_str(), AT_SYMLINK_FOLLOW) == 0)
            return 0;
        if (errno != EEXIST)
            return errno;
    }
    return EEXIST;
}

void removeStaleTemporaries(const std::string &folder)
{
    DIR *listing = ::opendir(folder.c_str());
    if (!listing)
        return;
    const int folderFd = ::dirfd(listing);
    while (const dirent *entry = ::readdir(listing)) {
        const std::string_view name = entry->d_name;
        if (!name.starts_with(kTemporaryPrefix) || !name.ends_with(kTemporarySuffix))
            continue;
        const int fd = ::openat(folderFd, entry->d_name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
        if (fd < 0)
            continue;
        struct stat held {}, named {};
        if (::fstat(fd, &held) == 0 && S_ISREG(held.st_mode) && ::flock(fd, LOCK_EX | LOCK_NB) == 0
            && ::fstatat(folderFd, entry->d_name, &named, AT_SYMLINK_NOFOLLOW) == 0 && named.st_ino == held.st_ino
            && named.st_dev == held.st_dev)
            ::unlinkat(folderFd, entry->d_name, 0);
        ::close(fd);
    }
    ::closedir(listing);
}

// Syncs a folder so that the replacements in it are durable. Gives 0 or the error; a file system
// that cannot sync folders counts as synced.
int syncFolder(const std::string &folder)
{
    step("sync folder");
    const int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return errno;
    const int error = ::fsync(fd) == 0 || errno == EINVAL || errno == EROFS ? 0 : errno;
    ::close(fd);
    return error;
}

// Bytes that batches have written and not yet synced: unwritten data of this process's own, not
// of other programs.
std::atomic<std::size_t> pendingBytes{0};

constexpr std::size_t kPageSize = 4096;

// Whether other programs leave so little unwritten that a sync of the whole file system costs less
// than syncing each file on its own. The system's figure counts every disk, so this errs on the
// side of syncing each file.
bool littleElseUnwritten()
{
    constexpr std::size_t kOthersLimit = std::size_t{4} << 20;
    std::string meminfo;
    if (AtomicFile::read(unwrittenFigures, meminfo))
        return false;
    const std::size_t at = meminfo.find("\nDirty:");
    if (at == std::string::npos)
        return false;
    const std::size_t dirty = std::strtoull(meminfo.c_str() + at + 7, nullptr, 10) * 1024;
    return dirty <= kOthersLimit + pendingBytes;
}

// Linux reports a failed write-back through syncfs only since 5.8; before, it reported success.
bool syncfsReportsErrors()
{
    static const bool reports = [] {
        struct utsname system {};
        if (::uname(&system) != 0 || std::string_view(system.sysname) != "Linux")
            return false;
        char *end = nullptr;
        const unsigned long major = std::strtoul(system.release, &end, 10);
        const unsigned long minor = *end == '.' ? std::strtoul(end + 1, nullptr, 10) : 0;
        return major > 5 || (major == 5 && minor >= 8);
    }();
    return reports;
}

bool syncsWholeFileSystem(long type)
{
    constexpr long kExt = 0xEF53, kXfs = 0x58465342, kBtrfs = 0x9123683E;
    return type == kExt || type == kXfs || type == kBtrfs;
}

} // namespace

// The syncs of one whole file system, each shared by every batch that waits when it starts: a
// batch waits for a sync that starts after its files are written. A write-back error reported by
// a sync fails every batch written before that sync finished, as the error may be theirs.
struct FileSystemSync
{
    std::mutex mutex;
    std::condition_variable finishedOne;
    int fd = -1; // open since before any batch wrote to the file system, so its syncs see every error
    bool running = false;
    unsigned long long started = 0, finished = 0;
    std::vector<int> errors; // of each finished sync, 0 when it succeeded

    ~FileSystemSync()
    {
        if (fd >= 0)
            ::close(fd);
    }

    // Gives 0, or the error of a sync that starts after the call or of any sync that finished
    // after the first `syncsBefore`.
    int syncAfter(unsigned long long syncsBefore)
    {
        std::unique_lock lock(mutex);
        const unsigned long long wanted = started + 1;
        while (finished < wanted) {
            if (running) {
                finishedOne.wait(lock);
                continue;
            }
            running = true;
            const unsigned long long number = ++started;
            lock.unlock();
            const int error = ::syncfs(fd) == 0 ? 0 : errno;
            lock.lock();
            errors.push_back(error);
            finished = number;
            running = false;
            finishedOne.notify_all();
        }
        for (unsigned long long k = syncsBefore; k < wanted; ++k)
            if (errors[k] != 0)
                return errors[k];
        return 0;
    }
};

namespace {

// The sync of the whole file system the folder is on, or nothing where syncfs cannot stand in for
// syncing each file. Made once for each file system and kept for the process's lifetime.
FileSystemSync *fileSystemSync(unsigned long long device, const std::string &folder)
{
    static std::mutex mutex;
    static std::map<unsigned long long, std::unique_ptr<FileSystemSync>> syncs;
    std::lock_guard lock(mutex);
    const auto [at, added] = syncs.try_emplace(device);
    if (!added || !syncfsReportsErrors())
        return at->second.get();
    const int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    struct statfs system {};
    struct stat info {};
    if (fd >= 0 && ::fstatfs(fd, &system) == 0 && syncsWholeFileSystem(static_cast<long>(system.f_type))
        && ::fstat(fd, &info) == 0 && info.st_dev == device) {
        at->second = std::make_unique<FileSystemSync>();
        at->second->fd = fd;
    } else if (fd >= 0) {
        ::close(fd);
    }
    return at->second.get();
}

} // namespace

std::string quoted(std::string_view path)
{
    static constexpr char kHex[] = "0123456789abcdef";
    std::string text = "'";
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\'' || c == '\\')
            text += {'\\', c};
        else if (c == '\n')
            text += "\\n";
        else if (c == '\t')
            text += "\\t";
        else if (c == '\r')
            text += "\\r";
        else if (byte < 0x20 || byte == 0x7f)
            text += {'\\', 'x', kHex[byte >> 4], kHex[byte & 15]};
        else
            text += c;
    }
    return text + "'";
}

std::string shown(std::string_view path)
{
    for (const char c : path)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f)
            return quoted(path);
    return std::string(path);
}

std::optional<std::string> read(const std::string &path, std::string &bytes)
{
    Seen seen;
    return read(path, bytes, seen);
}

std::optional<std::string> read(const std::string &path, std::string &bytes, Seen &seen, bool keep)
{
    seen.handle = -1;
    const auto failure = [&](std::string reason) {
        bytes.clear();
        return "Cannot read " + quoted(path) + ": " + reason;
    };
    // Without O_NONBLOCK, opening a FIFO waits for a writer.
    constexpr int kFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    std::string target = path;
    int fd = ::open(path.c_str(), kFlags);
    if (fd < 0 && errno == ELOOP) {
        // A symlink: its target is the file that is read and replaced.
        if (char *real = ::realpath(path.c_str(), nullptr)) {
            target = real;
            std::free(real);
            fd = ::open(target.c_str(), kFlags);
        }
    }
    if (fd < 0)
        return failure(systemReason(errno));

    struct stat info {};
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode) || static_cast<std::size_t>(info.st_size) > kReadLimit) {
        const int error = errno;
        ::close(fd);
        if (S_ISDIR(info.st_mode))
            return failure(systemReason(EISDIR));
        if (!S_ISREG(info.st_mode))
            return failure(info.st_mode ? "not a regular file" : systemReason(error));
        return failure("larger than 64 MiB, which no script is");
    }
    remember(info, target, seen);

    if (std::optional<std::string> reason = readAll(fd, bytes, static_cast<std::size_t>(info.st_size))) {
        ::close(fd);
        return failure(*reason);
    }
    if (keep)
        seen.handle = fd;
    else
        ::close(fd);
    return std::nullopt;
}

std::optional<std::string> readAll(int fd, std::string &bytes, std::size_t sizeHint)
{
    // The size is a hint: a file may grow while it is read, and some report none.
    std::size_t length = 0;
    bytes.resize(sizeHint + 1);
    for (;;) {
        if (length == bytes.size()) {
            if (length > kReadLimit)
                return std::string("larger than 64 MiB, which no script is");
            bytes.resize(std::min(std::max<std::size_t>(2 * length, 4096), kReadLimit + 1));
        }
        const ssize_t count = ::read(fd, bytes.data() + length, bytes.size() - length);
        if (count == 0)
            break;
        if (count < 0) {
            if (errno == EINTR)
                continue;
            return systemReason(errno);
        }
        length += static_cast<std::size_t>(count);
        // A regular file that gives less than was asked for is at its end. Should it grow, a
        // replacement notices the new size and leaves it alone.
        if (length < bytes.size() && length == sizeHint)
            break;
    }
    bytes.resize(length);
    return std::nullopt;
}

std::optional<std::string> write(const std::string &path, std::string_view bytes)
{
    Seen seen;
    seen.target = path;
    struct stat info {};
    if (::lstat(path.c_str(), &info) == 0) {
        if (S_ISLNK(info.st_mode)) {
            char *real = ::realpath(path.c_str(), nullptr);
            if (!real || ::stat(real, &info) != 0) {
                const int error = errno;
                std::free(real);
                return cannotSave(path, "following the link", error);
            }
            seen.target = real;
            std::free(real);
        }
        if (S_ISDIR(info.st_mode))
            return "Cannot save " + quoted(path) + ": " + systemReason(EISDIR);
        if (!S_ISREG(info.st_mode))
            return "Cannot save " + quoted(path) + ": not a regular file";
        remember(info, seen.target, seen);
    } else if (errno != ENOENT) {
        return cannotSave(path, "looking at the file", errno);
    }
    Batch batch;
    if (std::optional<std::string> problem = batch.stage(path, seen, bytes))
        return problem;
    return batch.commit().front();
}

Batch::~Batch()
{
    for (const Staged &staged : staged_) {
        if (!staged.temporary.empty())
            ::unlink(staged.temporary.c_str());
        ::close(staged.fd);
        pendingBytes -= staged.pending;
    }
}

std::optional<std::string> Batch::stage(const std::string &path, const Seen &seen, std::string_view bytes)
{
    const std::string folder = folderOf(seen.target);
    if (cleaned_.insert(folder).second)
        removeStaleTemporaries(folder);

    // A new script gets the usual permissions of a new file; a replacement those of its target.
    const mode_t mode = seen.exists ? static_cast<mode_t>(seen.mode & 07777) : 0666;
    Staged staged{path, seen, -1, {}};
    if (method_ != SyncMethod::EachFile && seen.exists && (staged.shared = fileSystemSync(seen.device, folder))) {
        std::lock_guard lock(staged.shared->mutex);
        staged.syncsBefore = staged.shared->finished;
    }
    step("create");
    staged.fd = createUnnamed(folder, mode);
    if (staged.fd < 0 && noUnnamedFiles(errno))
        staged.fd = createNamed(folder, mode, staged.temporary);
    if (staged.fd < 0)
        return cannotSave(path, "no new file in " + quoted(folder), errno);

    const char *failed = nullptr;
    step("write");
    if (!writeAll(staged.fd, bytes))
        failed = "writing";
    // The owner first: changing it clears the set-user-ID and set-group-ID bits.
    else if (seen.exists && (step("owner"), ::fchown(staged.fd, seen.owner, seen.group) != 0))
        failed = "keeping the owner and group";
    else if (seen.exists && (!processUmask() || (mode & *processUmask()) != 0 || (mode & 07000) != 0)
             && ::fchmod(staged.fd, mode) != 0)
        failed = "keeping the permissions";
    if (failed) {
        const int error = errno;
        if (!staged.temporary.empty())
            ::unlink(staged.temporary.c_str());
        ::close(staged.fd);
        return cannotSave(path, failed, error);
    }
    staged.pending = (bytes.size() + kPageSize - 1) / kPageSize * kPageSize;
    pendingBytes += staged.pending;
    staged_.push_back(std::move(staged));
    return std::nullopt;
}

std::vector<int> Batch::syncEachFile(const std::vector<Staged> &batch)
{
    std::vector<int> errors(batch.size());
    for (std::size_t i = 0; i < batch.size(); ++i) {
        step("sync");
        errors[i] = ::fdatasync(batch[i].fd) == 0 ? 0 : errno;
    }
    return errors;
}

std::vector<std::optional<std::string>> Batch::commit()
{
    const std::vector<Staged> batch = std::move(staged_);
    staged_.clear();
    std::vector<std::optional<std::string>> failures(batch.size());
    std::map<std::string, std::vector<std::size_t>> folders; // the files replaced in each

    // Each new file is durable before any name shows it. The writes of the whole batch are started
    // first, so that the disk takes them together. Syncing each file then writes its inode and
    // flushes the disk's cache, once for every file; a sync of the whole file system does both
    // once for all waiting batches, but also waits for other programs' unwritten data on it.
    for (const Staged &staged : batch)
        ::sync_file_range(staged.fd, 0, 0, SYNC_FILE_RANGE_WRITE);
    const auto sameSync = [&](const Staged &staged) { return staged.shared == batch.front().shared; };
    const bool shared = !batch.empty() && batch.front().shared && std::all_of(batch.begin(), batch.end(), sameSync)
                        && (method_ == SyncMethod::Shared || littleElseUnwritten());
    std::vector<int> syncErrors;
    if (shared) {
        step("sync");
        // The first file staged was written first: no sync finished before it that had not
        // finished before the others.
        syncErrors.assign(batch.size(), batch.front().shared->syncAfter(batch.front().syncsBefore));
    } else {
        syncErrors = syncEachFile(batch);
    }
    for (const Staged &staged : batch)
        pendingBytes -= staged.pending;
    for (std::size_t i = 0; i < batch.size(); ++i) {
        const Staged &staged = batch[i];
        const std::string folder = folderOf(staged.seen.target);
        std::string temporary = staged.temporary;
        const char *failed = nullptr;
        int error = 0;
        if (syncErrors[i] != 0) {
            failed = "syncing";
            error = syncErrors[i];
        } else if (step("check"), !unchanged(staged.seen)) {
            failures[i] = "Cannot save " + quoted(staged.path) + ": it changed after it was read, so it was left as it is";
        } else if (temporary.empty() && (step("link"), ::flock(staged.fd, LOCK_EX) != 0
                                         || (error = linkUnnamed(staged.fd, folder, temporary)) != 0)) {
            failed = "naming the new file";
            error = error ? error : errno;
        } else if (step("replace"), (error = renameFile(temporary, staged.seen.target, !staged.seen.exists)) != 0) {
            failed = "replacing the file";
        } else {
            folders[folder].push_back(i);
            temporary.clear();
        }
        if (failed)
            failures[i] = cannotSave(staged.path, failed, error);
        if (!temporary.empty())
            ::unlink(temporary.c_str());
        ::close(staged.fd);
    }
    for (const auto &[folder, replaced] : folders)
        if (const int error = syncFolder(folder))
            for (const std::size_t i : replaced)
                failures[i] = cannotSave(batch[i].path, "syncing the folder", error);
    return failures;
}

} // namespace AtomicFile
