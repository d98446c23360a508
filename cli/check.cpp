// SPDX-License-Identifier: MIT
// vantorel-cli check: what the editor cannot read in each script, and what a save would change in
// what the game reads, one finding per line; nothing is written.
#include "AtomicFile.h"
#include "Commands.h"
#include "EditorDocument.h"
#include "GameReading.h"
#include "Inputs.h"
#include "Output.h"
#include "Progress.h"
#include "ScriptCheck.h"

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

using Output::failure;
using Output::kExitFailure;
using Output::location;
using Output::shownName;

namespace {

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

} // namespace

int runCheck(const CommandLine &commandLine, const std::vector<std::string> &scripts, const FamilyList &families)
{
    const bool strict = commandLine.strict;
    const CommandLine::Reading reading = commandLine.reading;
    int status = 0;
    std::size_t errors = 0, warnings = 0;
    std::string bytes, report;
    Progress progress(scripts.size());
    for (std::size_t i = 0; i < scripts.size(); ++i) {
        const std::string &path = scripts[i];
        progress.step(i, shownName(path));
        AtomicFile::Seen seen;
        if (const auto error = Inputs::readInput(path, bytes, seen)) {
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
            report += location(path, finding.line) + (finding.error ? "error: " : "warning: ") + finding.message
                      + (finding.error ? commandLine.readingOrigin : std::string()) + '\n';
        }
        if (!report.empty())
            progress.clear();
        std::fwrite(report.data(), 1, report.size(), stdout);
        // A script the editor cannot read is its error finding: reported once, on standard output.
        if (!readable)
            status = kExitFailure;
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

