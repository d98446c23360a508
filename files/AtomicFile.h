// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

// Whole-file reading and writing. A write creates a new file beside the target (unnamed where the
// system allows it), writes and syncs it, checks that the target is still the file that was there
// before, then replaces the target in one step and syncs the folder. On any failure nothing of the
// new file remains, the target stays exactly as it was, and the reason names the path and the
// system's message. The target's owner, group and mode are kept; a symlink's target is replaced,
// never the link. Nothing is ever written into an existing file.
namespace AtomicFile {

// No script comes near this size: a larger file is refused rather than read.
constexpr std::size_t kReadLimit = std::size_t{64} << 20;

// The path in single quotes. A control character, a backslash or a quote in it is written as an
// escape (\n, \t, \\, \', \xHH), so that a message about it stays on one line.
std::string quoted(std::string_view path);
// The path as it is when it holds no control character, else quoted.
std::string shown(std::string_view path);

// What a read saw of a file: a later replacement goes ahead only while this still holds.
struct Seen
{
    bool exists = false;
    std::string target; // the path to replace: the file itself, or what a symlink names
    unsigned long long device = 0, inode = 0, links = 0;
    long long size = 0, modifiedSeconds = 0, modifiedNanoseconds = 0, changedSeconds = 0, changedNanoseconds = 0;
    unsigned mode = 0, owner = 0, group = 0;
    int handle = -1; // the file, still open, when the read was asked to keep it
};

// The file's bytes, or the reason it cannot be read: it is not a regular file (a FIFO, a device,
// a folder) or it is larger than kReadLimit.
std::optional<std::string> read(const std::string &path, std::string &bytes);
// With `keep`, the file stays open in seen.handle for the caller to close (-1 after a failure):
// closing the last handle of a replaced file frees it, which may take long, and need not happen
// on the thread that replaces files.
std::optional<std::string> read(const std::string &path, std::string &bytes, Seen &seen, bool keep = false);
// Everything a descriptor gives up to its end (a file, standard input), where sizeHint is the
// likely size; the reason when a read fails or it gives more than kReadLimit bytes.
std::optional<std::string> readAll(int fd, std::string &bytes, std::size_t sizeHint = 0);

// Saves the bytes as the file at path, created when missing.
std::optional<std::string> write(const std::string &path, std::string_view bytes);

// Called with the name of each step a save takes ("create", "write", "owner", "sync", "check",
// "link", "replace", "sync folder"), when set. For tests that must see the order of the steps.
extern void (*stepHook)(std::string_view step);
// Where SyncMethod::Auto reads how much data the system has not written yet ("/proc/meminfo"), so
// that tests can give it a figure of their own.
extern const char *unwrittenFigures;

// How a batch makes its new files durable before they replace their targets.
enum class SyncMethod {
    // Each new file on its own (fdatasync): every file costs the disk a write of its inode and a
    // flush of its cache.
    EachFile,
    // One sync of the whole file system (syncfs), shared by every batch on it that waits at the
    // time: far cheaper per file, but it also writes whatever other programs have not written yet.
    // Used only where the system reports write errors through it (Linux 5.8 and later, on ext2,
    // ext3, ext4, XFS and Btrfs); elsewhere each file is synced on its own.
    Shared,
    // Shared while other programs have little unwritten data (under 4 MiB), else each file.
    Auto,
};

struct FileSystemSync; // one for each file system that batches sync as a whole

// Replaces many files that were read before, each atomically. Each new file is synced before it
// replaces its target, and the folders are synced before commit() returns. One Batch per thread.
class Batch
{
public:
    explicit Batch(SyncMethod method = SyncMethod::EachFile)
        : method_(method)
    {}
    Batch(const Batch &) = delete;
    Batch &operator=(const Batch &) = delete;
    ~Batch();

    // Writes the bytes to a new file for the file read as `seen` under `path`. Gives the reason
    // when that fails; nothing is left behind then.
    std::optional<std::string> stage(const std::string &path, const Seen &seen, std::string_view bytes);

    // Replaces each staged file's target, unless the target changed since it was read. Gives each
    // staged file's failure, or nothing, in the order they were staged; a failed file's target is
    // unchanged.
    std::vector<std::optional<std::string>> commit();

private:
    struct Staged
    {
        std::string path;
        Seen seen;
        int fd = -1;
        std::string temporary; // set when the system gave no unnamed file
        FileSystemSync *shared = nullptr; // the sync of its whole file system, where one is usable
        unsigned long long syncsBefore = 0; // of those syncs, the ones finished before it was written
        std::size_t pending = 0; // the bytes it adds to the data not yet written
    };

    static std::vector<int> syncEachFile(const std::vector<Staged> &batch);

    SyncMethod method_;
    std::vector<Staged> staged_;
    std::set<std::string> cleaned_; // folders whose stale temporary files are gone
};

} // namespace AtomicFile
