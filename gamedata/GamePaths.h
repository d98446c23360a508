// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

// The data directory setting's names and default, and the paths the editor derives from it by
// plain concatenation: a data directory ending in a separator gives a doubled one.
namespace GamePaths {

inline constexpr std::string_view kSettingApplication = "Tarnwick";
inline constexpr std::string_view kSettingSection = "Directories";
inline constexpr std::string_view kSettingKey = "Decompiled_Data";
inline constexpr std::string_view kDefaultDataDir = "C:\\Program Files\\Quellbrook\\Korvath\\Data";

struct Paths
{
    std::string strDataDir;
    std::string strWFDir;   // data directory + "/Scripts/Weaponfire"
    std::string strWEPNDir; // data directory + "/Weapon"
    std::string strFLFile;  // data directory + "/Scripts/familylist.lua"
};

Paths derive(std::string_view dataDir);

} // namespace GamePaths
