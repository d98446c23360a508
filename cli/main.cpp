// SPDX-License-Identifier: MIT
// vantorel-cli: normalises and checks weapon scripts the way the editor opens and saves them.
#include "AppInfo.h"
#include "CommandLine.h"
#include "Commands.h"
#include "FamilyList.h"
#include "Inputs.h"
#include "Output.h"

#include <csignal>
#include <cstdio>
#include <string>
#include <vector>

using Output::failure;
using Output::kExitFailure;
using Output::kExitUsage;
using Output::printLine;

int main(int argc, char **argv)
{
    CommandLine commandLine = ParseCommandLine(std::vector<std::string>(argv + 1, argv + argc));
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
    // The usage and the version are output like any other: a write that fails is a failure.
    const auto written = [] {
        if (std::fflush(stdout) == 0 && !std::ferror(stdout))
            return 0;
        failure("vantorel-cli: cannot write the standard output");
        return kExitFailure;
    };
    switch (commandLine.command) {
    case CommandLine::Command::Help:
        std::fputs(kUsage, stdout);
        return written();
    case CommandLine::Command::Version:
        printLine(stdout, "vantorel-cli " + AppInfo::versionText());
        return written();
    case CommandLine::Command::Apply:
    case CommandLine::Command::Set:
    case CommandLine::Command::Diff: {
        // Their arguments are no plain list of scripts: each command reads its own.
        FamilyList families;
        if (!Inputs::loadFamilies(Inputs::dataDirectory(commandLine), families))
            return kExitFailure;
        if (commandLine.command == CommandLine::Command::Apply)
            return runApply(commandLine, families);
        return commandLine.command == CommandLine::Command::Set ? runSet(commandLine, families)
                                                                : runDiff(commandLine, families);
    }
    default:
        break;
    }

    std::vector<std::string> scripts;
    const bool listed = Inputs::expandFolders(commandLine.files, scripts);
    if (scripts.empty())
        return kExitFailure; // every FILE was a folder without scripts, each reported
    const bool toOutput = commandLine.command == CommandLine::Command::Normalize && !commandLine.inPlace;
    if (toOutput && scripts.size() != 1) {
        failure("vantorel-cli: normalize without --in-place writes one script to standard output, but the FILEs name "
                + std::to_string(scripts.size()) + " (see vantorel-cli --help)");
        return kExitUsage;
    }

    Inputs::storedReading(commandLine);
    FamilyList families;
    if (!Inputs::loadFamilies(Inputs::dataDirectory(commandLine), families))
        return kExitFailure;

    int status = 0;
    switch (commandLine.command) {
    case CommandLine::Command::Normalize:
        status = runNormalize(commandLine, scripts, families);
        break;
    case CommandLine::Command::Check:
        status = runCheck(commandLine, scripts, families);
        break;
    case CommandLine::Command::Table:
        status = runTable(commandLine, scripts, families);
        break;
    case CommandLine::Command::Show:
        status = runShow(commandLine, scripts, families);
        break;
    default:
        break;
    }
    return listed ? status : kExitFailure;
}
