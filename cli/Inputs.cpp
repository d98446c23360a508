// SPDX-License-Identifier: MIT
#include "Inputs.h"

#include "CustomFSO.h"
#include "DataDirectorySetting.h"
#include "EditorDocument.h"
#include "EditorReading.h"
#include "GamePaths.h"
#include "GameReading.h"
#include "Output.h"
#include "PathText.h"
#include "ReadingSetting.h"
#include "ScriptWriter.h"
#include "TextPieces.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include <unistd.h>

using Output::failure;
using Output::location;
using Output::shownName;

namespace Inputs {

std::optional<std::string> readInput(const std::string &path, std::string &bytes, AtomicFile::Seen &seen, bool keep)
{
    if (path != "-")
        return AtomicFile::read(path, bytes, seen, keep);
    // Read from the descriptor itself: a stream turns a failed read (standard input redirected
    // from a folder, say) into an end of file, and the input would pass for an empty script.
    if (const auto reason = AtomicFile::readAll(STDIN_FILENO, bytes))
        return "cannot read the standard input: " + *reason;
    return std::nullopt;
}

namespace {

// Adds every .wepn file below the folder, in any letter case; symlinks to folders are not
// followed. A folder that cannot be listed is named and skipped, and the rest is still listed.
bool listFolder(const std::filesystem::path &folder, std::vector<std::string> &found)
{
    bool ok = true;
    std::error_code error;
    std::filesystem::directory_iterator it(folder, error), end;
    for (; !error && it != end; it.increment(error)) {
        std::error_code typeError;
        if (!it->is_symlink(typeError) && it->is_directory(typeError))
            ok = listFolder(it->path(), found) && ok;
        else if (TextPieces::toLower(it->path().extension().string()) == ".wepn")
            found.push_back(it->path().string());
    }
    if (error) {
        failure(AtomicFile::shown(folder.string()) + ": cannot list the folder: " + error.message());
        ok = false;
    }
    return ok;
}

} // namespace

bool expandFolders(const std::vector<std::string> &arguments, std::vector<std::string> &scripts)
{
    bool ok = true;
    for (const std::string &argument : arguments) {
        std::error_code error;
        if (argument == "-" || !std::filesystem::is_directory(argument, error)) {
            scripts.push_back(argument);
            continue;
        }
        std::vector<std::string> found;
        if (!listFolder(argument, found)) {
            ok = false;
        } else if (found.empty()) {
            failure("vantorel-cli: " + shownName(argument) + ": no .wepn file in this folder");
            ok = false;
        }
        std::sort(found.begin(), found.end());
        scripts.insert(scripts.end(), found.begin(), found.end());
    }
    return ok;
}

DataDirectory dataDirectory(const CommandLine &commandLine)
{
    if (commandLine.dataDir)
        return {*commandLine.dataDir, " The data directory was given with --data-dir."};
    const auto settings = DataDirectorySetting::userSettings();
    const std::string path = PathText::toBytes(DataDirectorySetting::load(*settings));
    const std::string store = PathText::toBytes(settings->fileName());
    if (DataDirectorySetting::isStored(*settings))
        return {path, " The data directory comes from the editor's stored setting (" + store
                          + "); give another with --data-dir DIR."};
    return {path, " The data directory is the default, as the editor has stored none (" + store
                      + "); give one with --data-dir DIR."};
}

void storedReading(CommandLine &commandLine)
{
    if (commandLine.readingGiven)
        return;
    const auto settings = DataDirectorySetting::userSettings();
    if (!ReadingSetting::load(*settings))
        return;
    commandLine.reading = CommandLine::Reading::Game;
    commandLine.readingOrigin = " (read as the game does, as the editor's stored setting in "
                                + PathText::toBytes(settings->fileName())
                                + " says; --read=editor reads the editor's dialect)";
}

bool loadFamilies(const DataDirectory &dataDir, FamilyList &families)
{
    const GamePaths::Paths paths = GamePaths::derive(dataDir.path);
    const CustomFSO fso;
    if (!fso.FolderExists(paths.strWFDir)) {
        failure("vantorel-cli: The folder '" + paths.strWFDir + "' does not exist." + dataDir.origin);
        return false;
    }
    if (!fso.FileExists(paths.strFLFile)) {
        failure("vantorel-cli: The file '" + paths.strFLFile + "' does not exist." + dataDir.origin);
        return false;
    }
    families = ReadFamilyListFile(paths.strFLFile);
    if (!families.ok()) {
        failure("vantorel-cli: " + families.error);
        return false;
    }
    return true;
}

std::optional<std::string> normalise(const std::string &path, const FamilyList &families, std::string &bytes,
                                     std::string &text, const CommandLine &commandLine, AtomicFile::Seen &seen,
                                     bool keep)
{
    const CommandLine::Reading reading = commandLine.reading;
    if (const auto error = readInput(path, bytes, seen, keep))
        return location(path, 0) + "error: " + *error;
    EditorDocument document;
    document.setFamilies(families.armourFamilies, families.attackFamilies);
    GameReading::GameScript script;
    const bool game = reading == CommandLine::Reading::Game;
    const ReadResult result = game ? GameReading::OpenGameScript(document, bytes, script) : OpenEditorScript(document, bytes);
    if (!result.completed())
        return location(path, result.line) + "error: " + result.reason + commandLine.readingOrigin;
    text = game ? GameReading::SaveGameScript(script, document).bytes : WeaponScriptText(document);
    return std::nullopt;
}

} // namespace Inputs
