// SPDX-License-Identifier: MIT
#pragma once

#include "AtomicFile.h"
#include "CommandLine.h"
#include "FamilyList.h"

#include <optional>
#include <string>
#include <vector>

// What every command reads before and while it works: the scripts named on the command line, the
// game's data directory and its family list, and each script opened as the editor opens it.
namespace Inputs {

// The file's bytes; "-" is standard input.
std::optional<std::string> readInput(const std::string &path, std::string &bytes, AtomicFile::Seen &seen,
                                     bool keep = false);

// Folders are replaced by the .wepn files below them (in any letter case), sorted by path. A
// folder that cannot be listed, or that holds no script, is reported; the rest is still listed.
bool expandFolders(const std::vector<std::string> &arguments, std::vector<std::string> &scripts);

struct DataDirectory
{
    std::string path;
    // Where the path came from and how to give another, for a data directory that is missing.
    std::string origin;
};

DataDirectory dataDirectory(const CommandLine &commandLine);

// Without --read, the reading the editor's stored setting chooses, as the editor's Open reads.
void storedReading(CommandLine &commandLine);

// The same checks and the same reading as the editor's Open before it asks for a script.
bool loadFamilies(const DataDirectory &dataDir, FamilyList &families);

// Open then Save As without a change, in a fresh document as after the editor's start. Gives
// the reason, in the FILE:LINE: form, when the script cannot be read or opened.
// Read as the game reads it, the script saves its own text, so the output is the input's bytes.
std::optional<std::string> normalise(const std::string &path, const FamilyList &families, std::string &bytes,
                                     std::string &text, const CommandLine &commandLine, AtomicFile::Seen &seen,
                                     bool keep = false);

} // namespace Inputs
