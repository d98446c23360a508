// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

// The armour families (section "armourfamily" to "unitcapsfamily") and attack families
// ("attackfamily" to "dockfamily") of the game's familylist.lua, in file order.
struct FamilyList
{
    std::vector<std::string> armourFamilies;
    std::vector<std::string> attackFamilies;
    // Empty when the file was read completely. Otherwise what is wrong, naming the file, the
    // line and what is missing; the families found before the fault are kept above.
    std::string error;

    bool ok() const { return error.empty(); }
};

// fileName only names the file in messages.
FamilyList ReadFamilyList(std::string_view bytes, std::string_view fileName);
FamilyList ReadFamilyListFile(const std::string &path);
