// SPDX-License-Identifier: MIT
#pragma once

#include "FamilyList.h"
#include "ScriptReader.h"

#include <string>
#include <string_view>
#include <vector>

// One finding of `vantorel-cli check` about a script. Line 0 stands for the whole file.
struct Finding
{
    int line = 0;
    bool error = false;
    std::string message;
};

// What the editor cannot read in a script (errors) and what opening and saving it would silently
// change or drop (warnings), sorted by line. The script is opened as the editor opens it, with
// the given family list, in a fresh document.
std::vector<Finding> CheckWeaponScript(std::string_view bytes, const FamilyList &families);
