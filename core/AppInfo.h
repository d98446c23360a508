// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

// The application's title and version, as captions and messages show them.
namespace AppInfo {

inline constexpr std::string_view kTitle = "Vantorel";
inline constexpr int kMajor = 1;
inline constexpr int kMinor = 4;
inline constexpr int kRevision = 3;

// "1.4.3".
inline std::string versionText()
{
    return std::to_string(kMajor) + '.' + std::to_string(kMinor) + '.' + std::to_string(kRevision);
}

// "Vantorel 1.4.3": the caption after start-up.
inline std::string startupCaption()
{
    return std::string(kTitle) + ' ' + versionText();
}

// "Vantorel v1.4 - Foo.wepn": the caption after Open and Save As.
inline std::string documentCaption(std::string_view fileName)
{
    return std::string(kTitle) + " v" + std::to_string(kMajor) + '.' + std::to_string(kMinor) + " - "
           + std::string(fileName);
}

} // namespace AppInfo
