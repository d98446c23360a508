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
#include "PathText.h"
#include "ScriptCheck.h"
#include "ScriptReader.h"
#include "ScriptWriter.h"
#include "TextPieces.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <filesystem>
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

std::string location(const std::string &file, int line)
{
    return AtomicFile::shown(file) + ':' + std::to_string(line) + ": ";
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
        if (!std::filesystem::is_directory(argument, error)) {
            scripts.push_back(argument);
            continue;
        }
        std::vector<std::string> found;
        ok = listFolder(argument, found) && ok;
        std::sort(found.begin(), found.end());
        scripts.insert(scripts.end(), found.begin(), found.end());
    }
    return ok;
}

std::string dataDirectory(const CommandLine &commandLine)
{
    if (commandLine.dataDir)
        return *commandLine.dataDir;
    const auto settings = DataDirectorySetting::userSettings();
    return PathText::toBytes(DataDirectorySetting::load(*settings));
}

// The same checks and the same reading as the editor's Open before it asks for a script.
bool loadFamilies(const std::string &dataDir, FamilyList &families)
{
    const GamePaths::Paths paths = GamePaths::derive(dataDir);
    const CustomFSO fso;
    if (!fso.FolderExists(paths.strWFDir)) {
        failure("vantorel-cli: The folder '" + paths.strWFDir + "' does not exist.");
        return false;
    }
    if (!fso.FileExists(paths.strFLFile)) {
        failure("vantorel-cli: The file '" + paths.strFLFile + "' does not exist.");
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
std::optional<std::string> normalise(const std::string &path, const FamilyList &families, std::string &bytes,
                                     std::string &text, AtomicFile::Seen &seen, bool keep = false)
{
    if (const auto error = AtomicFile::read(path, bytes, seen, keep))
        return location(path, 0) + "error: " + *error;
    EditorDocument document;
    document.setFamilies(families.armourFamilies, families.attackFamilies);
    const ReadResult result = OpenWeaponScript(document, bytes);
    if (!result.completed())
        return location(path, result.line) + "error: " + result.reason;
    text = WeaponScriptText(document);
    return std::nullopt;
}

int normaliseToOutput(const std::string &path, const FamilyList &families)
{
    std::string bytes, text;
    AtomicFile::Seen seen;
    if (const auto error = normalise(path, families, bytes, text, seen)) {
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
int normaliseInPlace(const std::vector<std::string> &scripts, const FamilyList &families, bool splitHardLinks)
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
    const auto work = [&] {
        AtomicFile::Batch batch;
        std::string bytes, text;
        AtomicFile::Seen seen;
        std::vector<std::size_t> staged;
        std::vector<int> handles;
        std::thread closer;
        for (std::size_t first; stopSignal == 0 && (first = next.fetch_add(slice)) < scripts.size();) {
            const std::size_t last = std::min(first + slice, scripts.size());
            staged.clear();
            for (std::size_t i = first; i < last; ++i) {
                const std::string &path = scripts[i];
                if ((errors[i] = normalise(path, families, bytes, text, seen, true)))
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
        helpers.emplace_back(work);
    work();
    for (std::thread &helper : helpers)
        helper.join();

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

int check(const std::vector<std::string> &scripts, const FamilyList &families)
{
    int status = 0;
    std::string bytes, report;
    for (const std::string &path : scripts) {
        if (const auto error = AtomicFile::read(path, bytes)) {
            failure(location(path, 0) + "error: " + *error);
            status = kExitFailure;
            continue;
        }
        bool readable = true;
        report.clear();
        for (const Finding &finding : CheckWeaponScript(bytes, families)) {
            readable = readable && !finding.error;
            report += location(path, finding.line) + (finding.error ? "error: " : "warning: ") + finding.message + '\n';
        }
        std::fwrite(report.data(), 1, report.size(), stdout);
        if (!readable) {
            failure("vantorel-cli: " + AtomicFile::shown(path) + ": the editor cannot open this script");
            status = kExitFailure;
        }
    }
    if (std::fflush(stdout) != 0) {
        failure("vantorel-cli: cannot write the standard output");
        status = kExitFailure;
    }
    return status;
}

} // namespace

int main(int argc, char **argv)
{
    // A file size limit then fails the write with a message instead of ending the program.
    ::signal(SIGXFSZ, SIG_IGN);
    const CommandLine commandLine = ParseCommandLine(std::vector<std::string>(argv + 1, argv + argc));
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
        status = normaliseToOutput(scripts.front(), families);
    else if (commandLine.inPlace)
        status = normaliseInPlace(scripts, families, commandLine.splitHardLinks);
    else
        status = check(scripts, families);
    return listed ? status : kExitFailure;
}
