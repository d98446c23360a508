// SPDX-License-Identifier: MIT
#pragma once

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

// What the editor cannot read in a script (errors); what a save would change in what the game reads,
// found by running the script and its saved form as the game does; and what the editor does not
// recognise or drops (warnings). Sorted by line. The script is opened as the editor opens it, in a
// fresh document with the given families. Findings of one kind stop after a few, with a count of
// the rest, so that a hostile script cannot flood the output.
std::vector<Finding> CheckWeaponScript(std::string_view bytes, const std::vector<std::string> &armourFamilies,
                                       const std::vector<std::string> &attackFamilies);
