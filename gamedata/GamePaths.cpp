// SPDX-License-Identifier: MIT
#include "GamePaths.h"

#include "CustomFSO.h"

namespace GamePaths {

Paths derive(std::string_view dataDir)
{
    const std::string dir(dataDir);
    const std::string sep(kPathSeparator);
    return Paths{dir, dir + sep + "Scripts" + sep + "Weaponfire", dir + sep + "Weapon",
                 dir + sep + "Scripts" + sep + "familylist.lua"};
}

} // namespace GamePaths
