// SPDX-License-Identifier: MIT
// vantorel-cli normalize: the normalised script of one file on standard output, or many files
// rewritten in place.
#include "AtomicFile.h"
#include "Commands.h"
#include "GameCompare.h"
#include "InPlace.h"
#include "Inputs.h"
#include "Output.h"

#include <cstdio>
#include <optional>
#include <string>
#include <vector>

using Inputs::normalise;
using Output::failure;
using Output::kExitFailure;
using Output::location;

namespace {

int normaliseToOutput(const std::string &path, const FamilyList &families, const CommandLine &commandLine)
{
    std::string bytes, text;
    AtomicFile::Seen seen;
    if (const auto error = normalise(path, families, bytes, text, commandLine, seen)) {
        failure(*error);
        return kExitFailure;
    }
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
        failure("vantorel-cli: cannot write the standard output");
        return kExitFailure;
    }
    return 0;
}

// A script already in normalised form keeps its file and its modification time; one whose save
// would change what the game reads stays as it is unless the user allows it.
int normaliseInPlace(const std::vector<std::string> &scripts, const FamilyList &families, const CommandLine &commandLine)
{
    std::vector<std::optional<std::string>> errors(scripts.size());
    const auto prepare = [&](std::size_t i, AtomicFile::Seen &seen) -> std::optional<std::string> {
        const std::string &path = scripts[i];
        std::string bytes, text;
        if ((errors[i] = normalise(path, families, bytes, text, commandLine, seen, true)) || text == bytes)
            return std::nullopt;
        if (!commandLine.allowChanges) {
            if (const std::vector<GameChange> changes = SaveChanges(bytes, text); !changes.empty()) {
                errors[i] = location(path, changes.front().line) + "error: left as it is: " + changes.front().message
                            + " (--allow-changes rewrites it all the same)";
                return std::nullopt;
            }
        }
        if (!commandLine.splitHardLinks
            && (errors[i] = InPlace::refusedForHardLinks(path, seen, " (--split-hard-links allows it)")))
            return std::nullopt;
        return text;
    };
    const std::size_t done = InPlace::run(scripts, commandLine.sync, true, prepare,
                                          [&](std::size_t i, std::string error) { errors[i] = std::move(error); });
    int status = 0;
    for (const auto &error : errors) {
        if (error) {
            failure(*error);
            status = kExitFailure;
        }
    }
    InPlace::endIfStopped(done, scripts.size());
    return status;
}

} // namespace

int runNormalize(const CommandLine &commandLine, const std::vector<std::string> &scripts, const FamilyList &families)
{
    if (commandLine.inPlace)
        return normaliseInPlace(scripts, families, commandLine);
    return normaliseToOutput(scripts.front(), families, commandLine);
}
