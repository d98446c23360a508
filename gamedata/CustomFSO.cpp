// SPDX-License-Identifier: MIT
#include "CustomFSO.h"

#include <filesystem>
#include <system_error>

#ifdef _WIN32
#include <windows.h>
#endif

namespace {

// A path with a NUL byte would be cut short by the system call and name another file.
bool usablePath(const std::string &path)
{
    return !path.empty() && path.find('\0') == std::string::npos;
}

bool hiddenOrSystem(const std::string &path)
{
#ifdef _WIN32
    const DWORD attributes = GetFileAttributesA(path.c_str());
    return attributes == INVALID_FILE_ATTRIBUTES
           || (attributes & (FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM)) != 0;
#else
    const std::size_t slash = path.rfind('/');
    const std::size_t nameStart = slash == std::string::npos ? 0 : slash + 1;
    return nameStart < path.size() && path[nameStart] == '.';
#endif
}

} // namespace

std::string CustomFSO::GetFileName(std::string_view Path, std::string_view Delimiter) const
{
    if (Delimiter.empty())
        Delimiter = kPathSeparator;
    const std::size_t at = Path.rfind(Delimiter);
    if (at == std::string_view::npos)
        return {};
    return std::string(Path.substr(at + Delimiter.size()));
}

bool CustomFSO::FileExists(const std::string &Path) const
{
    if (!usablePath(Path))
        return false;
    std::error_code error;
    const bool regular = std::filesystem::is_regular_file(std::filesystem::path(Path), error);
    return !error && regular && !hiddenOrSystem(Path);
}

bool CustomFSO::FolderExists(const std::string &Path) const
{
    if (!usablePath(Path))
        return false;
    std::error_code error;
    const bool directory = std::filesystem::is_directory(std::filesystem::path(Path), error);
    return !error && directory;
}
