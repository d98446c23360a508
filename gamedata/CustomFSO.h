// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

// The platform's path separator; the data directory's suffixes and GetFileName's default
// delimiter use it.
#ifdef _WIN32
inline constexpr std::string_view kPathSeparator = "\\";
#else
inline constexpr std::string_view kPathSeparator = "/";
#endif

// Small file-system questions the editor asks: does a file or folder exist, what is a path's
// file name. The existence tests never throw: any failure of the look-up gives false.
class CustomFSO
{
public:
    // The piece of Path after its last Delimiter (the path separator when empty); empty when
    // Path holds no Delimiter or ends in one.
    std::string GetFileName(std::string_view Path, std::string_view Delimiter = {}) const;
    // An existing ordinary file that is not hidden (on Linux: its name does not begin with ".").
    bool FileExists(const std::string &Path) const;
    // An existing directory, with or without a trailing separator.
    bool FolderExists(const std::string &Path) const;
};
