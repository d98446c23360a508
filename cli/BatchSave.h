// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Replaces many files atomically with one disk sync per batch instead of two per file. Each new
// content is staged in a temporary file beside its target; commit syncs the file systems of the
// batch once and only then replaces each target by a rename. A failure at any step removes that
// file's temporary file and leaves its target exactly as it was.
namespace BatchSave {

struct Staged
{
    std::string path;
    std::string temporary;
    unsigned long long device = 0; // the file system, synced once per batch
};

// Writes the bytes to a new temporary file beside path, with path's permissions. Gives the reason
// when that fails; nothing is left behind then. Safe to call from several threads.
std::optional<std::string> stage(const std::string &path, std::string_view bytes, Staged &staged);

// Makes the staged files durable, then moves each over its target, renaming on several threads
// (renames mostly wait on the file system's journal, and concurrent ones share its commits).
// Gives each file's failure, or nothing, in the order of the batch.
std::vector<std::optional<std::string>> commit(const std::vector<Staged> &batch, unsigned threads);

} // namespace BatchSave
