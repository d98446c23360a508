// SPDX-License-Identifier: MIT
#include "CommandLine.h"

const char *const kUsage =
    "Usage:\n"
    "  vantorel-cli normalize [--data-dir DIR] FILE             the normalised script of FILE to standard output\n"
    "  vantorel-cli normalize --in-place [--data-dir DIR] FILE...  rewrite each FILE in normalised form\n"
    "  vantorel-cli check [--data-dir DIR] FILE...               report what the editor cannot read or a save\n"
    "                                                           would change; change nothing\n"
    "  vantorel-cli --help | --version\n"
    "\n"
    "--split-hard-links lets --in-place rewrite a script that has other hard links; they keep the old text.\n"
    "A FILE may be a folder: every .wepn file below it, sorted by path. The data directory is DIR,\n"
    "else the editor's stored setting, else its default; its Scripts/familylist.lua gives the families.\n"
    "Normalised means the bytes the editor writes when the script is opened and saved unchanged.\n"
    "Exit status: 0 every file read (warnings allowed), 1 a file could not be read or written,\n"
    "2 usage error.\n";

CommandLine ParseCommandLine(const std::vector<std::string> &arguments)
{
    CommandLine line;
    const auto fail = [&](std::string reason) {
        line.usageError = std::move(reason);
        return line;
    };
    if (arguments.empty())
        return fail("no command given");

    const std::string &first = arguments[0];
    if (first == "--help" || first == "-h")
        return line;
    if (first == "--version") {
        line.command = CommandLine::Command::Version;
        return line;
    }
    if (first == "normalize")
        line.command = CommandLine::Command::Normalize;
    else if (first == "check")
        line.command = CommandLine::Command::Check;
    else
        return fail("unknown command '" + first + "'");

    bool optionsEnded = false;
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        const std::string &argument = arguments[i];
        if (optionsEnded || argument == "-" || !argument.starts_with("-")) {
            line.files.push_back(argument);
        } else if (argument == "--") {
            optionsEnded = true;
        } else if (argument == "--help" || argument == "-h") {
            line = CommandLine{};
            return line;
        } else if (argument == "--in-place" && line.command == CommandLine::Command::Normalize) {
            line.inPlace = true;
        } else if (argument == "--split-hard-links" && line.command == CommandLine::Command::Normalize) {
            line.splitHardLinks = true;
        } else if (argument == "--data-dir") {
            if (i + 1 == arguments.size())
                return fail("--data-dir needs a directory");
            line.dataDir = arguments[++i];
        } else if (argument.starts_with("--data-dir=")) {
            line.dataDir = argument.substr(std::string_view("--data-dir=").size());
        } else {
            return fail("unknown option '" + argument + "' for " + first);
        }
    }
    if (line.dataDir && line.dataDir->empty())
        return fail("--data-dir needs a directory");
    if (line.files.empty())
        return fail(first + " needs at least one FILE");
    return line;
}
