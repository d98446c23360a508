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
