// SPDX-License-Identifier: MIT
#pragma once

#include "AtomicFile.h"
#include "FamilyList.h"
#include "NamedValues.h"
#include "ScriptValues.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// What the commands that work with named values share: the family list's columns, scripts
// opened as the game reads them, the fingerprint of a script's bytes, the table's text encoding,
// the line that reports a change, and the run that writes changed values into many scripts.
namespace Values {

NamedValues::Families familiesOf(const FamilyList &families);

// A hash of the bytes (64-bit FNV-1a) with a prefix that keeps a spreadsheet from taking it
// for a number: "fnv1a64:" and 16 hex digits.
std::string fingerprint(std::string_view bytes);

// Scripts hold bytes that the window shows as Latin-1; the table is UTF-8.
std::string toUtf8(std::string_view latin1);
// Nothing when the text is no UTF-8 or holds a character beyond Latin-1.
std::optional<std::string> fromUtf8(std::string_view utf8);

// Reads and opens a script; gives the "PATH:LINE: error: ..." line when it cannot. With keep,
// the file stays open in seen.handle (-1 after a failed read), as AtomicFile::read keeps it.
std::optional<std::string> openScript(const std::string &path, const NamedValues::Families &families,
                                      std::string &bytes, AtomicFile::Seen &seen, ScriptValues::Opened &opened,
                                      bool keep = false);

// A value as a change line shows it: "(none)" for no value.
std::string shownValue(const std::string &cell);
// "PATH:LINE: NAME OLD -> NEW"
std::string changeLine(const std::string &path, int line, const std::string &name, const std::string &was,
                       const std::string &now);

// One script's edit: given its path, bytes and values as opened, changes the values and finishes them
// (NamedValues::finish), or gives the lines that say why the script must not be written.
using Edit = std::function<std::vector<std::string>(const std::string &path, const std::string &bytes, const ScriptValues::Opened &opened,
                                                    NamedValues::WeaponValues &values)>;

// Opens each script, edits it, and writes those whose values changed with the safe in-place
// rewrite, one change line each on standard output, in the scripts' order. Nothing is written
// for a script with any problem, or with dryRun. Gives the exit status.
int writeChanges(const std::vector<std::string> &paths, const std::vector<Edit> &edits,
                 const NamedValues::Families &families, bool dryRun);

} // namespace Values
