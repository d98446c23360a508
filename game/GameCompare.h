// SPDX-License-Identifier: MIT
#pragma once

#include "GameView.h"

#include <string>
#include <string_view>
#include <vector>

// One thing the game reads differently in a saved script than in the script it was opened from.
struct GameChange
{
    int line = 0;      // line of the opened script the change is about; 0 for the whole file
    std::string kind;  // what repeats of the same sort share, such as "changes setAngles"
    std::string message;
};

// Compares what the game reads from two scripts: a changed value ("a save changes ..."), a call that
// is gone ("a save drops ...") and a call that is new ("a save adds ..."). Statement order, number
// text ("0.50" against "0.5"), blanks and line ends change nothing the game reads and are no change.
// Numbers are equal when they agree to the 15 significant digits that the editor writes. A family
// absent from a table reads as that statement's default. Sorted by line.
std::vector<GameChange> CompareGameViews(const GameView::Run &opened, const GameView::Run &saved);

// Runs both scripts and compares them; a script that the game cannot run is itself a change.
std::vector<GameChange> SaveChanges(std::string_view opened, std::string_view saved);
