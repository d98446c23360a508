// SPDX-License-Identifier: MIT
// vantorel-cli: normalises and checks weapon scripts the way the editor opens and saves them.
#include "AppInfo.h"
#include "AtomicFile.h"
#include "CommandLine.h"
#include "CustomFSO.h"
#include "DataDirectorySetting.h"
#include "EditorDocument.h"
#include "FamilyList.h"
#include "GamePaths.h"
#include "GameReading.h"
#include "PathText.h"
#include "Progress.h"
#include "ScriptCheck.h"
#include "ScriptReader.h"
#include "ScriptWriter.h"
#include "TextPieces.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <future>
#include <iostream>
#include <iterator>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace {

constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;

void printLine(std::FILE *stream, const std::string &text)
{
    std::fwrite(text.data(), 1, text.size(), stream);
    std::fputc('\n', stream);
}

void failure(const std::string &message)
{
    std::fflush(stdout);
    printLine(stderr, message);
}

// "-" is standard input, and messages say so.
std::string shownName(const std::string &file)
{
    return file == "-" ? "(standard input)" : file;
}

std::string location(const std::string &file, int line)
{
    return shownName(file) + ':' + std::to_string(line) + ": ";
}

std::optional<std::string> readInput(const std::string &path, std::string &bytes)
{
    if (path != "-")
        return AtomicFile::read(path, bytes);
    std::cin.clear();
    bytes.assign(std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>());
    if (std::cin.bad())
        return std::string("cannot read the standard input");
    return std::nullopt;
}

// Folders are replaced by the .wepn files below them, in any letter case, sorted by path.
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
        std::filesystem::recursive_directory_iterator it(argument, error), end;
        for (; !error && it != end; it.increment(error)) {
            std::error_code typeError;
            if (it->is_regular_file(typeError)
                && TextPieces::toLower(it->path().extension().string()) == ".wepn")
                found.push_back(it->path().string());
        }
        if (error) {
            failure(argument + ": cannot list the folder: " + error.message());
            ok = false;
        } else if (found.empty()) {
            failure("vantorel-cli: " + argument + ": no .wepn file in this folder");
            ok = false;
        }
        std::sort(found.begin(), found.end());
        scripts.insert(scripts.end(), found.begin(), found.end());
    }
    return ok;
}

struct DataDirectory
{
    std::string path;
    // Where the path came from and how to give another, for a data directory that is missing.
    std::string origin;
};

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

// The same checks and the same reading as the editor's Open before it asks for a script.
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

// Open then Save As without a change, in a fresh document as after the editor's start. Gives
// the reason, in the FILE:LINE: form, when the script cannot be read or opened.
// Read as the game reads it, the script saves its own text, so the output is the input's bytes.
std::optional<std::string> normalise(const std::string &path, const FamilyList &families, std::string &bytes,
                                     std::string &text, CommandLine::Reading reading = CommandLine::Reading::Editor)
{
    if (const auto error = readInput(path, bytes))
        return location(path, 0) + "error: " + *error;
    EditorDocument document;
    document.setFamilies(families.armourFamilies, families.attackFamilies);
    GameReading::GameScript script;
    const bool game = reading == CommandLine::Reading::Game;
    const ReadResult result = game ? GameReading::OpenGameScript(document, bytes, script) : OpenWeaponScript(document, bytes);
    if (!result.completed())
        return location(path, result.line) + "error: " + result.reason;
    text = game ? GameReading::SaveGameScript(script, document).bytes : WeaponScriptText(document);
    return std::nullopt;
}

int normaliseToOutput(const std::string &path, const FamilyList &families, CommandLine::Reading reading)
{
    std::string bytes, text;
    if (const auto error = normalise(path, families, bytes, text, reading)) {
        failure(*error);
        return kExitFailure;
    }
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
        failure("vantorel-cli: cannot write the standard output");
        return kExitFailure;
    }
    return 0;
}

// Scripts are saved a batch at a time, with one disk sync per batch; the files a batch replaces
// are rewritten for the next one. A batch's commit, which mostly waits on the disk, runs while the
// next batch is read and normalised.
int normaliseInPlace(const std::vector<std::string> &scripts, const FamilyList &families, CommandLine::Reading reading)
{
    constexpr std::size_t kBatch = 256;
    AtomicFile::Batch saver;
    std::future<std::vector<std::optional<std::string>>> committing;
    std::vector<std::optional<std::string>> errors;
    std::vector<std::size_t> staged; // indexes into errors
    std::size_t base = 0;            // the script of errors[0]
    int status = 0;
    const auto report = [&] {
        if (committing.valid()) {
            const auto saveErrors = committing.get();
            for (std::size_t k = 0; k < staged.size(); ++k)
                if (saveErrors[k])
                    errors[staged[k]] = location(scripts[base + staged[k]], 0) + "error: " + *saveErrors[k];
        }
        for (const auto &error : errors) {
            if (error) {
                failure(*error);
                status = kExitFailure;
            }
        }
    };

    std::string bytes, text;
    Progress progress(scripts.size());
    for (std::size_t first = 0; first < scripts.size(); first += kBatch) {
        const std::size_t count = std::min(kBatch, scripts.size() - first);
        std::vector<std::optional<std::string>> batchErrors(count);
        std::vector<std::pair<std::size_t, std::string>> texts;
        for (std::size_t i = 0; i < count; ++i) {
            progress.step(first + i, scripts[first + i]);
            batchErrors[i] = normalise(scripts[first + i], families, bytes, text, reading);
            // A script already in normalised form keeps its file and its modification time.
            if (!batchErrors[i] && text != bytes)
                texts.emplace_back(i, std::move(text));
        }

        progress.clear();
        report();
        errors = std::move(batchErrors);
        base = first;
        staged.clear();
        for (const auto &[i, normalised] : texts) {
            const std::string &path = scripts[first + i];
            if (const auto error = saver.stage(path, normalised))
                errors[i] = location(path, 0) + "error: " + *error;
            else
                staged.push_back(i);
        }
        committing = std::async(std::launch::async, [&saver] { return saver.commit(); });
    }
    report();
    return status;
}

// In the game's reading a save writes the script's own text; anything else it would change is a
// finding on the whole file.
std::vector<Finding> checkAsGame(std::string_view bytes, const FamilyList &families)
{
    EditorDocument document;
    document.setFamilies(families.armourFamilies, families.attackFamilies);
    GameReading::GameScript script;
    const ReadResult result = GameReading::OpenGameScript(document, bytes, script);
    if (!result.completed())
        return {Finding{result.line, true, result.reason}};
    if (GameReading::SaveGameScript(script, document).bytes != bytes)
        return {Finding{0, false, "a save in the game's reading changes the file"}};
    return {};
}

int check(const std::vector<std::string> &scripts, const FamilyList &families, bool strict, CommandLine::Reading reading)
{
    int status = 0;
    std::size_t errors = 0, warnings = 0;
    std::string bytes, report;
    Progress progress(scripts.size());
    for (std::size_t i = 0; i < scripts.size(); ++i) {
        const std::string &path = scripts[i];
        progress.step(i, shownName(path));
        if (const auto error = readInput(path, bytes)) {
            progress.clear();
            failure(location(path, 0) + "error: " + *error);
            status = kExitFailure;
            ++errors;
            continue;
        }
        bool readable = true;
        report.clear();
        const bool game = reading == CommandLine::Reading::Game;
        for (const Finding &finding : game ? checkAsGame(bytes, families)
                                           : CheckWeaponScript(bytes, families.armourFamilies, families.attackFamilies)) {
            readable = readable && !finding.error;
            ++(finding.error ? errors : warnings);
            report += location(path, finding.line) + (finding.error ? "error: " : "warning: ") + finding.message + '\n';
        }
        if (!report.empty())
            progress.clear();
        std::fwrite(report.data(), 1, report.size(), stdout);
        if (!readable) {
            failure("vantorel-cli: " + shownName(path) + ": the editor cannot open this script");
            status = kExitFailure;
        }
    }
    progress.clear();
    if (std::fflush(stdout) != 0) {
        failure("vantorel-cli: cannot write the standard output");
        status = kExitFailure;
    }
    if (progress.terminal())
        failure("checked " + std::to_string(scripts.size()) + " files: " + std::to_string(errors) + " errors, "
                + std::to_string(warnings) + " warnings");
    return strict && warnings > 0 ? kExitFailure : status;
}

} // namespace

int main(int argc, char **argv)
{
    const CommandLine commandLine = ParseCommandLine(std::vector<std::string>(argv + 1, argv + argc));
    if (commandLine.bare) {
        std::fputs(kUsage, stderr);
        return kExitUsage;
    }
    if (!commandLine.usageError.empty()) {
        failure("vantorel-cli: " + commandLine.usageError + " (see vantorel-cli --help)");
        return kExitUsage;
    }
    switch (commandLine.command) {
    case CommandLine::Command::Help:
        std::fputs(kUsage, stdout);
        return 0;
    case CommandLine::Command::Version:
        printLine(stdout, "vantorel-cli " + AppInfo::versionText());
        return 0;
    case CommandLine::Command::Normalize:
    case CommandLine::Command::Check:
        break;
    }

    std::vector<std::string> scripts;
    const bool listed = expandFolders(commandLine.files, scripts);
    if (scripts.empty())
        return kExitFailure; // every FILE was a folder without scripts, each reported
    const bool toOutput = commandLine.command == CommandLine::Command::Normalize && !commandLine.inPlace;
    if (toOutput && scripts.size() != 1) {
        failure("vantorel-cli: normalize without --in-place writes one script to standard output, but the FILEs name "
                + std::to_string(scripts.size()) + " (see vantorel-cli --help)");
        return kExitUsage;
    }

    FamilyList families;
    if (!loadFamilies(dataDirectory(commandLine), families))
        return kExitFailure;

    int status = 0;
    if (toOutput)
        status = normaliseToOutput(scripts.front(), families, commandLine.reading);
    else if (commandLine.inPlace)
        status = normaliseInPlace(scripts, families, commandLine.reading);
    else
        status = check(scripts, families, commandLine.strict, commandLine.reading);
    return listed ? status : kExitFailure;
}
