// SPDX-License-Identifier: MIT
#pragma once

#include "AtomicFile.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

// The safe in-place rewrite of many scripts, for every command that writes them. Threads take the
// scripts a slice at a time and save each slice as one batch (AtomicFile::Batch). On SIGINT or
// SIGTERM no new slice is started and the slices in hand are finished; endIfStopped() then ends
// the process by the same signal, after one line.
namespace InPlace {

// What to write for script i: its new bytes, or nothing when it stays as it is (the reason, if any,
// is the caller's to keep). `seen` is fresh for each script; a read with keep leaves the file open
// in it, and the run closes it once its slice is written. Called on the run's threads, each script
// on one.
using Prepare = std::function<std::optional<std::string>(std::size_t i, AtomicFile::Seen &seen)>;
// Script i could not be written: the reason, "PATH:0: error: ...".
using Failed = std::function<void(std::size_t i, std::string error)>;

// Gives how many scripts were looked at: all of them, unless a signal stopped the run.
std::size_t run(const std::vector<std::string> &paths, AtomicFile::SyncMethod sync, bool showProgress,
                const Prepare &prepare, const Failed &failed);

// The refusal of a script with other hard links, which a rewrite would leave with the old bytes
// ("PATH:0: error: ..." ending in `hint`), or nothing when it has no others.
std::optional<std::string> refusedForHardLinks(const std::string &path, const AtomicFile::Seen &seen,
                                               const std::string &hint = {});

// After the run's own output: a run that a signal stopped ends here, by that signal.
void endIfStopped(std::size_t done, std::size_t total);

} // namespace InPlace
