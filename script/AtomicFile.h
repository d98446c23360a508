// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Whole-file reading and writing. A write goes to a temporary file beside the target, is flushed
// and synced, then replaces the target in one step; on any failure the temporary file is removed,
// the target stays exactly as it was, and the reason names the path and the system's message.
namespace AtomicFile {

std::optional<std::string> write(const std::string &path, std::string_view bytes);

// The file's bytes, or the reason it cannot be read.
std::optional<std::string> read(const std::string &path, std::string &bytes);

// Replaces many files, each atomically, with one disk sync per file system and commit. The old
// files that a commit swaps out are kept as spares and rewritten for later targets: on some file
// systems creating and freeing an inode costs many times more than rewriting one. Spares and
// uncommitted temporary files are removed when the batch is destroyed. Not thread-safe.
class Batch
{
public:
    Batch() = default;
    Batch(const Batch &) = delete;
    Batch &operator=(const Batch &) = delete;
    ~Batch();

    // Writes the bytes to a temporary file beside path, with path's permissions. Gives the reason
    // when that fails; nothing is left behind then.
    std::optional<std::string> stage(const std::string &path, std::string_view bytes);

    // Makes the staged files durable, then replaces each target. Gives each staged file's failure,
    // or nothing, in the order they were staged; a failed file's target is unchanged.
    std::vector<std::optional<std::string>> commit();

private:
    struct Staged
    {
        std::string path;
        std::string temporary;
        unsigned long long device = 0;
        bool regular = false; // the target is a regular file, to be exchanged
    };

    int takeSpare(unsigned long long device, const std::string &path, std::string &temporary);

    std::vector<Staged> staged_;
    std::map<unsigned long long, std::vector<std::string>> spares_; // by file system
};

} // namespace AtomicFile
