// SPDX-License-Identifier: MIT
#pragma once

#include "CommandLine.h"
#include "FamilyList.h"

#include <string>
#include <vector>

// The commands of vantorel-cli, one file each. Each is given the scripts (folders already
// expanded) and the family list, prints its own output and failures, and gives the exit status.

// normalize: the normalised script of one file on standard output, or --in-place for many.
int runNormalize(const CommandLine &commandLine, const std::vector<std::string> &scripts, const FamilyList &families);
// check: what the editor cannot read, or a save would change, one finding per line.
int runCheck(const CommandLine &commandLine, const std::vector<std::string> &scripts, const FamilyList &families);

// The commands of named values always read scripts as the game does and keep their text.
// table: one CSV row per script with every named value.
int runTable(const CommandLine &commandLine, const std::vector<std::string> &scripts, const FamilyList &families);
// show: one "NAME = VALUE" line per value of one script.
int runShow(const CommandLine &commandLine, const std::vector<std::string> &scripts, const FamilyList &families);
// apply: the table's cells that differ written into its scripts.
int runApply(const CommandLine &commandLine, const FamilyList &families);
// set: the named values of the FILEs changed as the arguments say.
int runSet(const CommandLine &commandLine, const FamilyList &families);
// diff: the values two scripts, or two folders of scripts, read differently.
int runDiff(const CommandLine &commandLine, const FamilyList &families);
