// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

// The arguments of vantorel-cli, or why they make no sense.
struct CommandLine
{
    enum class Command { Help, Version, Normalize, Check };

    Command command = Command::Help;
    bool inPlace = false;
    bool splitHardLinks = false; // with --in-place: rewrite a script that has other hard links
    std::optional<std::string> dataDir;
    std::vector<std::string> files;
    // Set when the arguments are no valid command line; the program then exits with status 2.
    std::string usageError;
};

CommandLine ParseCommandLine(const std::vector<std::string> &arguments);

extern const char *const kUsage;
