// SPDX-License-Identifier: MIT
// vantorel-cli show: one "NAME = VALUE" line per value of a script, in the table's order, for a
// version control system's text conversion of scripts.
#include "Commands.h"
#include "Inputs.h"
#include "Output.h"
#include "Values.h"

#include <cstdio>

using Output::failure;
using Output::kExitFailure;
using Output::location;

int runShow(const CommandLine &, const std::vector<std::string> &scripts, const FamilyList &familyList)
{
    if (scripts.size() != 1) {
        failure("vantorel-cli: show prints one script, but the FILE names " + std::to_string(scripts.size())
                + " (see vantorel-cli --help)");
        return Output::kExitUsage;
    }
    const std::string &path = scripts.front();
    const NamedValues::Families families = Values::familiesOf(familyList);
    std::string bytes;
    AtomicFile::Seen seen;
    if (const auto error = Inputs::readInput(path, bytes, seen)) {
        failure(location(path, 0) + "error: " + *error);
        return kExitFailure;
    }
    ScriptValues::Opened opened;
    const ReadResult result = ScriptValues::open(bytes, families, opened);
    if (!result.completed()) {
        failure(location(path, result.line) + "error: " + result.reason);
        return kExitFailure;
    }
    std::string out;
    for (const NamedValues::Column &column : NamedValues::columns(families, opened.values.results.size())) {
        const std::string cell = NamedValues::cellText(opened.values, column);
        if (!cell.empty())
            out += NamedValues::columnName(column, families) + " = " + cell + '\n';
    }
    if (std::fwrite(out.data(), 1, out.size(), stdout) != out.size() || std::fflush(stdout) != 0) {
        failure("vantorel-cli: cannot write the standard output");
        return kExitFailure;
    }
    return 0;
}
