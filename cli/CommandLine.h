// SPDX-License-Identifier: MIT
#pragma once

#include "AtomicFile.h"

#include <optional>
#include <string>
#include <vector>

// The arguments of vantorel-cli, or why they make no sense.
struct CommandLine
{
    enum class Command { Help, Version, Normalize, Check, Table, Apply, Set, Diff, Show };

    Command command = Command::Help;
    bool inPlace = false;
    // check: any warning fails the run.
    bool strict = false;
    // No arguments at all: the usage goes to standard error, as a usage error.
    bool bare = false;
    // How scripts are read: in the editor's dialect (saved normalised) or as the game reads them
    // (saved in their own text). --read=editor or --read=game.
    enum class Reading { Editor, Game };
    Reading reading = Reading::Editor;
    // Whether --read was given; else the editor's stored setting decides.
    bool readingGiven = false;
    // Where a reading that was not given came from, for messages about scripts it cannot read;
    // empty when --read was given or the default holds.
    std::string readingOrigin;
    // normalize --in-place: also rewrite scripts whose save changes what the game reads.
    bool allowChanges = false;
    // --in-place: rewrite a script that has other hard links as well.
    bool splitHardLinks = false;
    // --in-place: how new files reach the disk. --sync=each, --sync=shared or --sync=auto.
    AtomicFile::SyncMethod sync = AtomicFile::SyncMethod::Auto;
    std::optional<std::string> dataDir;
    // table: -o FILE, the table's file instead of standard output.
    std::optional<std::string> output;
    // apply, set: print the changes, write nothing.
    bool dryRun = false;
    // apply: also rows whose script changed since the table was made.
    bool force = false;
    // set: --where 'NAME=VALUE', each of which a script must match.
    std::vector<std::string> where;
    // "-" stands for standard input (check and normalize to standard output).
    std::vector<std::string> files;
    // Set when the arguments are no valid command line; the program then exits with status 2.
    std::string usageError;
};

CommandLine ParseCommandLine(const std::vector<std::string> &arguments);

extern const char *const kUsage;
