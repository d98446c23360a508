// SPDX-License-Identifier: MIT
#pragma once

#include "EditorDocument.h"

#include <optional>
#include <ostream>
#include <string>

// The normalised script of a document: its statements in one fixed order, CR LF line ends, the
// lines the reader did not understand at the end.
void WriteWeaponScript(const EditorDocument &document, std::ostream &out);
std::string WeaponScriptText(const EditorDocument &document);

// Saves the script atomically; gives the reason (with the system's message) when it fails, and
// then the file at the path is exactly as it was.
std::optional<std::string> WriteWeaponScript(const EditorDocument &document, const std::string &path);
