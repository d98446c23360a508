// SPDX-License-Identifier: MIT
// vantorel-cli diff: every value the game reads differently in two scripts, or in the scripts of
// two folders matched by their path below the folder.
#include "Commands.h"
#include "Inputs.h"
#include "Output.h"
#include "Values.h"

#include <algorithm>
#include <filesystem>
#include <map>

using Output::failure;
using Output::location;

namespace {

constexpr int kTrouble = 2; // as diff(1): 0 the same, 1 different, 2 a script could not be read

// The values of OLD that NEW reads differently, as change lines at NEW's lines. False when either
// cannot be read.
bool compare(const std::string &oldPath, const std::string &newPath, const NamedValues::Families &families,
             std::string &out)
{
    std::string bytes;
    AtomicFile::Seen seen;
    ScriptValues::Opened was, now;
    const auto error = Values::openScript(oldPath, families, bytes, seen, was);
    const auto newError = Values::openScript(newPath, families, bytes, seen, now);
    if (error || newError) {
        for (const auto &e : {error, newError})
            if (e)
                failure(*e);
        return false;
    }
    for (const NamedValues::Column &column :
         NamedValues::columns(families, std::max(was.values.results.size(), now.values.results.size()))) {
        if (!NamedValues::sameCell(was.values, now.values, column))
            out += Values::changeLine(newPath, ScriptValues::lineOf(now, column), NamedValues::columnName(column, families),
                                      NamedValues::cellText(was.values, column), NamedValues::cellText(now.values, column))
                   + '\n';
    }
    return true;
}

std::map<std::string, std::string> scriptsBelow(const std::string &folder, bool &listed)
{
    std::vector<std::string> found;
    listed = Inputs::expandFolders({folder}, found) && listed;
    std::map<std::string, std::string> byRelative;
    for (const std::string &path : found)
        byRelative[std::filesystem::path(path).lexically_relative(folder).generic_string()] = path;
    return byRelative;
}

} // namespace

int runDiff(const CommandLine &commandLine, const FamilyList &familyList)
{
    const NamedValues::Families families = Values::familiesOf(familyList);
    const std::string &oldPath = commandLine.files[0], &newPath = commandLine.files[1];
    std::error_code error;
    const bool oldFolder = std::filesystem::is_directory(oldPath, error);
    const bool newFolder = std::filesystem::is_directory(newPath, error);
    if (oldFolder != newFolder) {
        failure("vantorel-cli: diff compares two scripts or two folders, but " + Output::shownName(oldFolder ? oldPath : newPath)
                + " is a folder and " + Output::shownName(oldFolder ? newPath : oldPath) + " is not (see vantorel-cli --help)");
        return Output::kExitUsage;
    }
    std::string out;
    bool readable = true;
    if (!oldFolder) {
        readable = compare(oldPath, newPath, families, out);
    } else {
        bool listed = true;
        const auto olds = scriptsBelow(oldPath, listed), news = scriptsBelow(newPath, listed);
        readable = listed;
        // In the order of the path below the folders, as diff -r lists them, whichever side has it.
        std::map<std::string, std::string> linesOf;
        for (const auto &[relative, path] : olds) {
            const auto match = news.find(relative);
            if (match == news.end())
                linesOf[relative] = location(path, 0) + "only in " + Output::shownName(oldPath) + '\n';
            else
                readable = compare(path, match->second, families, linesOf[relative]) && readable;
        }
        for (const auto &[relative, path] : news)
            if (!olds.count(relative))
                linesOf[relative] = location(path, 0) + "only in " + Output::shownName(newPath) + '\n';
        for (const auto &[relative, lines] : linesOf)
            out += lines;
    }
    std::fwrite(out.data(), 1, out.size(), stdout);
    if (std::fflush(stdout) != 0) {
        failure("vantorel-cli: cannot write the standard output");
        return kTrouble;
    }
    if (!readable)
        return kTrouble;
    return out.empty() ? 0 : 1;
}
