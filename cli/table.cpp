// SPDX-License-Identifier: MIT
// vantorel-cli table: one CSV row per script with every named value, for a spreadsheet.
#include "Commands.h"
#include "Csv.h"
#include "Output.h"
#include "Values.h"

#include <algorithm>
#include <cstdio>

using Output::failure;
using Output::kExitFailure;

int runTable(const CommandLine &commandLine, const std::vector<std::string> &scripts, const FamilyList &familyList)
{
    const NamedValues::Families families = Values::familiesOf(familyList);
    std::vector<std::string> paths = scripts;
    std::sort(paths.begin(), paths.end());
    paths.erase(std::unique(paths.begin(), paths.end()), paths.end());

    struct Row
    {
        std::string path;
        std::string fingerprint;
        NamedValues::WeaponValues values;
    };
    std::vector<Row> rows;
    int status = 0;
    std::size_t results = 0;
    std::string bytes;
    for (const std::string &path : paths) {
        AtomicFile::Seen seen;
        ScriptValues::Opened opened;
        if (const auto error = Values::openScript(path, families, bytes, seen, opened)) {
            failure(*error);
            status = kExitFailure;
            continue;
        }
        results = std::max(results, opened.values.results.size());
        rows.push_back({path, Values::fingerprint(bytes), std::move(opened.values)});
    }

    const std::vector<NamedValues::Column> columns = NamedValues::columns(families, results);
    std::vector<std::string> fields{"Path"};
    for (const NamedValues::Column &column : columns)
        fields.push_back(Values::toUtf8(NamedValues::columnName(column, families)));
    fields.push_back("Script Fingerprint");
    std::string csv;
    Csv::appendRecord(csv, fields);
    for (const Row &row : rows) {
        fields.assign(1, row.path);
        for (const NamedValues::Column &column : columns)
            fields.push_back(Values::toUtf8(NamedValues::cellText(row.values, column)));
        fields.push_back(row.fingerprint);
        Csv::appendRecord(csv, fields);
    }

    if (commandLine.output) {
        if (const auto error = AtomicFile::write(*commandLine.output, csv)) {
            failure("vantorel-cli: " + *error);
            return kExitFailure;
        }
    } else if (std::fwrite(csv.data(), 1, csv.size(), stdout) != csv.size() || std::fflush(stdout) != 0) {
        failure("vantorel-cli: cannot write the standard output");
        return kExitFailure;
    }
    return status;
}
