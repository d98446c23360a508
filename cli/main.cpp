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
#include <atomic>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include <sys/resource.h>
#include <unistd.h>

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

// "-" is standard input, and messages say so. Other names are quoted when they hold a control
// character, so that each message stays one line.
std::string shownName(const std::string &file)
{
    return file == "-" ? "(standard input)" : AtomicFile::shown(file);
}

std::string location(const std::string &file, int line)
{
    return shownName(file) + ':' + std::to_string(line) + ": ";
}

std::optional<std::string> readInput(const std::string &path, std::string &bytes, AtomicFile::Seen &seen,
                                     bool keep = false)
{
    if (path != "-")
        return AtomicFile::read(path, bytes, seen, keep);
    std::cin.clear();
    bytes.assign(std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>());
    if (std::cin.bad())
        return std::string("cannot read the standard input");
    return std::nullopt;
}

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

// Folders are replaced by the .wepn files below them, sorted by path.
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
                                     std::string &text, CommandLine::Reading reading, AtomicFile::Seen &seen,
                                     bool keep = false)
{
    if (const auto error = readInput(path, bytes, seen, keep))
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
    AtomicFile::Seen seen;
    if (const auto error = normalise(path, families, bytes, text, reading, seen)) {
        failure(*error);
        return kExitFailure;
    }
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
        failure("vantorel-cli: cannot write the standard output");
        return kExitFailure;
    }
    return 0;
}

std::atomic<int> stopSignal{0};
static_assert(std::atomic<int>::is_always_lock_free);

extern "C" void onStopSignal(int number) { stopSignal = number; }

// Threads take the scripts a slice at a time; each saves its slice as one batch. A thread spends
// most of its time waiting for the disk (creating, syncing and freeing files), so more threads
// than the two cores keep both cores busy: eight were as fast as sixteen here, four much slower.
constexpr int kThreads = 8;

// On SIGINT or SIGTERM no new slice is started, the slices in hand are finished, and the run ends
// with a message, by the same signal.
int normaliseInPlace(const std::vector<std::string> &scripts, const FamilyList &families, CommandLine::Reading reading,
                     bool splitHardLinks, AtomicFile::SyncMethod sync)
{
    struct sigaction action {};
    action.sa_handler = onStopSignal;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    ::sigaction(SIGINT, &action, nullptr);
    ::sigaction(SIGTERM, &action, nullptr);

    // A slice's new files stay open until they replace their scripts, and its old files until
    // they are closed on a thread of their own after the next slice: room for three slices for
    // each thread under the limit of open files, raised when the system allows it.
    struct rlimit files {};
    ::getrlimit(RLIMIT_NOFILE, &files);
    if (files.rlim_cur < 4096 && files.rlim_max > files.rlim_cur) {
        files.rlim_cur = std::min<rlim_t>(files.rlim_max, 4096);
        ::setrlimit(RLIMIT_NOFILE, &files);
        ::getrlimit(RLIMIT_NOFILE, &files);
    }
    const std::size_t slice = std::clamp<std::size_t>(
        files.rlim_cur > 64 ? (files.rlim_cur - 32) / (3 * kThreads) : 1, 1, 128);
    std::vector<std::optional<std::string>> errors(scripts.size());
    std::atomic<std::size_t> next{0}, done{0};
    Progress progress(scripts.size());
    // Only the first thread draws the progress line.
    const auto work = [&](bool drawsProgress) {
        AtomicFile::Batch batch(sync);
        std::string bytes, text;
        AtomicFile::Seen seen;
        std::vector<std::size_t> staged;
        std::vector<int> handles;
        std::thread closer;
        for (std::size_t first; stopSignal == 0 && (first = next.fetch_add(slice)) < scripts.size();) {
            const std::size_t last = std::min(first + slice, scripts.size());
            if (drawsProgress)
                progress.step(done, scripts[first]);
            staged.clear();
            for (std::size_t i = first; i < last; ++i) {
                const std::string &path = scripts[i];
                if ((errors[i] = normalise(path, families, bytes, text, reading, seen, true)))
                    continue;
                handles.push_back(seen.handle);
                // A script already in normalised form keeps its file and its modification time.
                if (text == bytes)
                    continue;
                if (seen.links > 1 && !splitHardLinks)
                    errors[i] = location(path, 0) + "error: Cannot save " + AtomicFile::quoted(path) + ": it has "
                                + std::to_string(seen.links)
                                + " hard links, which a rewrite would split (--split-hard-links allows it)";
                else if (const auto error = batch.stage(path, seen, text))
                    errors[i] = location(path, 0) + "error: " + *error;
                else
                    staged.push_back(i);
            }
            const auto saveErrors = batch.commit();
            for (std::size_t k = 0; k < staged.size(); ++k)
                if (saveErrors[k])
                    errors[staged[k]] = location(scripts[staged[k]], 0) + "error: " + *saveErrors[k];
            done += last - first;
            // Freeing a replaced file's storage (closing its last handle) can take longer than
            // writing the new file: it happens meanwhile, on a thread of its own.
            if (closer.joinable())
                closer.join();
            closer = std::thread([old = std::move(handles)] {
                for (const int handle : old)
                    ::close(handle);
            });
            handles.clear();
        }
        if (closer.joinable())
            closer.join();
    };
    std::vector<std::thread> helpers;
    for (int k = 1; k < kThreads; ++k)
        helpers.emplace_back(work, false);
    work(true);
    for (std::thread &helper : helpers)
        helper.join();
    progress.clear();

    int status = 0;
    for (const auto &error : errors) {
        if (error) {
            failure(*error);
            status = kExitFailure;
        }
    }
    if (const int number = stopSignal) {
        failure(std::string("vantorel-cli: stopped by ") + (number == SIGINT ? "SIGINT" : "SIGTERM") + " after "
                + std::to_string(done) + " of " + std::to_string(scripts.size())
                + " scripts; the others were not looked at");
        ::signal(number, SIG_DFL);
        ::raise(number);
    }
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
        AtomicFile::Seen seen;
        if (const auto error = readInput(path, bytes, seen)) {
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
    // A file size limit then fails the write with a message instead of ending the program.
    ::signal(SIGXFSZ, SIG_IGN);
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
        status = normaliseInPlace(scripts, families, commandLine.reading, commandLine.splitHardLinks,
                                  commandLine.sync);
    else
        status = check(scripts, families, commandLine.strict, commandLine.reading);
    return listed ? status : kExitFailure;
}
