// SPDX-License-Identifier: MIT
#include "CommandLine.h"

#include <algorithm>

// Every column starts at the same place, and no line is wider than 80 characters.
const char *const kUsage =
    "Usage:\n"
    "  vantorel-cli normalize [--data-dir DIR] FILE\n"
    "  vantorel-cli normalize --in-place [--allow-changes] [--split-hard-links]\n"
    "                         [--sync=HOW] [--data-dir DIR] FILE...\n"
    "  vantorel-cli check [--strict] [--data-dir DIR] FILE...\n"
    "  vantorel-cli table [-o FILE] [--data-dir DIR] FILE...\n"
    "  vantorel-cli apply [--dry-run] [--force] [--data-dir DIR] TABLE.csv\n"
    "  vantorel-cli set [--dry-run] [--where 'NAME=VALUE']... [--data-dir DIR]\n"
    "                   FILE... 'NAME=VALUE' | 'NAME*=F' | 'NAME+=N'...\n"
    "  vantorel-cli diff [--data-dir DIR] OLD NEW\n"
    "  vantorel-cli show [--data-dir DIR] FILE\n"
    "  vantorel-cli --help | --version\n"
    "\n"
    "Commands:\n"
    "  normalize             write the normalised script of FILE to standard output\n"
    "  normalize --in-place  rewrite each FILE in normalised form\n"
    "  check                 report what the editor cannot read or a save would change;\n"
    "                        change nothing\n"
    "  table                 a CSV table of every value of the scripts, one row each\n"
    "  apply                 write the cells of a table that differ into its scripts\n"
    "  set                   change named values of scripts: = sets, *= multiplies,\n"
    "                        += adds\n"
    "  diff                  every value the game reads differently in two scripts or\n"
    "                        two folders of scripts (exit 1 when they differ)\n"
    "  show                  one NAME = VALUE line per value of a script\n"
    "\n"
    "Options:\n"
    "  --data-dir DIR        the game's data directory; else the editor's stored\n"
    "                        setting, else its default\n"
    "  --in-place            normalize: rewrite the FILEs instead of printing\n"
    "  --allow-changes       --in-place: also rewrite scripts whose save changes what\n"
    "                        the game reads (left as they are and reported without)\n"
    "  --split-hard-links    --in-place: also rewrite a script with other hard links\n"
    "                        (they keep the old text)\n"
    "  --sync=HOW            --in-place: how new files reach the disk before they\n"
    "                        replace the scripts: each (one by one), shared (one\n"
    "                        sync of the file system for many, which also writes\n"
    "                        other programs' data) or auto (shared while other\n"
    "                        programs have little unwritten data; the default)\n"
    "  --strict              check: fail (exit 1) on any warning\n"
    "  -o FILE               table: write the table to FILE, not standard output\n"
    "  --dry-run             apply, set: print the changes, write nothing\n"
    "  --force               apply: also change scripts edited since the table was\n"
    "                        made\n"
    "  --where 'NAME=VALUE'  set: only scripts whose value NAME is VALUE\n"
    "  --read=game           read each script as the game does and keep its text:\n"
    "                        normalize writes the input's own bytes, check reports\n"
    "                        only what a save in that mode would change\n"
    "  --read=editor         read the editor's dialect, save the normalised form\n"
    "                        (the default, unless the editor's stored setting reads\n"
    "                        scripts as the game does)\n"
    "  -h, --help            show this help\n"
    "  --version             show the version\n"
    "\n"
    "table, apply, set, diff and show always read scripts as the game does and\n"
    "keep their text. NAMEs are the window's labels without the colon (\"Firing\n"
    "Range\"), \"Penetration: FAMILY\", \"Accuracy: FAMILY\", \"Always Causes Damage:\n"
    "FAMILY\" and \"Result N Condition\" (Effect, Target, Minimum Effect, Maximum\n"
    "Effect, Spawned FX).\n"
    "A FILE may be a folder: every .wepn file below it, sorted by path; a folder\n"
    "without one is an error. A FILE \"-\" is standard input (check, normalize).\n"
    "Normalised means the bytes the editor writes when the script is opened and\n"
    "saved unchanged. On a terminal, check ends with a summary line on standard\n"
    "error, and a run that lasts longer than a second shows its progress there.\n"
    "\n"
    "Exit status: 0 every file read (warnings allowed, unless --strict), 1 a file\n"
    "could not be read or written (or a warning with --strict), 2 usage error.\n";

CommandLine ParseCommandLine(const std::vector<std::string> &arguments)
{
    CommandLine line;
    const auto fail = [&](std::string reason) {
        line.usageError = std::move(reason);
        return line;
    };
    if (arguments.empty()) {
        line.bare = true;
        return fail("no command given");
    }

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
    else if (first == "table")
        line.command = CommandLine::Command::Table;
    else if (first == "apply")
        line.command = CommandLine::Command::Apply;
    else if (first == "set")
        line.command = CommandLine::Command::Set;
    else if (first == "diff")
        line.command = CommandLine::Command::Diff;
    else if (first == "show")
        line.command = CommandLine::Command::Show;
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
        } else if (argument == "--strict" && line.command == CommandLine::Command::Check) {
            line.strict = true;
        } else if ((argument == "--dry-run" && (line.command == CommandLine::Command::Apply
                                                 || line.command == CommandLine::Command::Set))) {
            line.dryRun = true;
        } else if (argument == "--force" && line.command == CommandLine::Command::Apply) {
            line.force = true;
        } else if (argument == "-o" && line.command == CommandLine::Command::Table) {
            if (i + 1 == arguments.size())
                return fail("-o needs a file");
            line.output = arguments[++i];
        } else if (argument == "--where" && line.command == CommandLine::Command::Set) {
            if (i + 1 == arguments.size() || arguments[i + 1].find('=') == std::string::npos)
                return fail("--where needs 'NAME=VALUE'");
            line.where.push_back(arguments[++i]);
        } else if (argument == "--read=editor" || argument == "--read=game") {
            line.reading = argument == "--read=game" ? CommandLine::Reading::Game : CommandLine::Reading::Editor;
            line.readingGiven = true;
        } else if (argument == "--allow-changes" && line.command == CommandLine::Command::Normalize) {
            line.allowChanges = true;
        } else if (argument == "--split-hard-links" && line.command == CommandLine::Command::Normalize) {
            line.splitHardLinks = true;
        } else if (argument.starts_with("--sync=") && line.command == CommandLine::Command::Normalize) {
            const std::string_view how = std::string_view(argument).substr(7);
            if (how == "each")
                line.sync = AtomicFile::SyncMethod::EachFile;
            else if (how == "shared")
                line.sync = AtomicFile::SyncMethod::Shared;
            else if (how == "auto")
                line.sync = AtomicFile::SyncMethod::Auto;
            else
                return fail("--sync is each, shared or auto, not '" + std::string(how) + "'");
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
    // Commands that take a fixed number of files say so, also when none is given.
    const auto count = line.files.size();
    if (line.command == CommandLine::Command::Apply && count != 1)
        return fail("apply needs one TABLE.csv");
    if (line.command == CommandLine::Command::Diff && count != 2)
        return fail("diff needs OLD and NEW");
    if (line.command == CommandLine::Command::Show && count != 1)
        return fail("show needs one FILE");
    if (count == 0)
        return fail(first + " needs at least one FILE");
    const auto stdinCount = std::count(line.files.begin(), line.files.end(), "-");
    if (stdinCount > 0 && (line.inPlace || line.command == CommandLine::Command::Table
                           || line.command == CommandLine::Command::Set || line.command == CommandLine::Command::Diff))
        return fail(line.inPlace ? "--in-place cannot rewrite standard input ('-')"
                                 : first + " cannot read standard input ('-')");
    if (stdinCount > 1)
        return fail("standard input ('-') can be read only once");
    return line;
}
