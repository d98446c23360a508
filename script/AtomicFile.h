// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

// Whole-file reading and writing. A write goes to a temporary file beside the target, is flushed
// and synced, then replaces the target in one step; on any failure the temporary file is removed,
// the target stays exactly as it was, and the reason names the path and the system's message.
namespace AtomicFile {

std::optional<std::string> write(const std::string &path, std::string_view bytes);

// The file's bytes, or the reason it cannot be read.
std::optional<std::string> read(const std::string &path, std::string &bytes);

} // namespace AtomicFile
