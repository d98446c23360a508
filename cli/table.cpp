// SPDX-License-Identifier: MIT
// vantorel-cli table: one CSV row per script with every named value, for a spreadsheet.
#include "Commands.h"
#include "Csv.h"
#include "Output.h"
#include "Values.h"

#include <algorithm>
#include <atomic>
#include <thread>
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
    // Scripts are opened on both cores; the rows keep the order of the paths.
    std::vector<std::optional<Row>> opened(paths.size());
    std::vector<std::optional<std::string>> errors(paths.size());
    std::atomic<std::size_t> next{0};
    const auto work = [&] {
        std::string bytes;
        for (std::size_t i; (i = next++) < paths.size();) {
            AtomicFile::Seen seen;
            ScriptValues::Opened script;
            if ((errors[i] = Values::openScript(paths[i], families, bytes, seen, script)))
                continue;
            opened[i] = Row{paths[i], Values::fingerprint(bytes), std::move(script.values)};
        }
    };
    std::thread helper(work);
    work();
    helper.join();

    int status = 0;
    std::size_t results = 0;
    std::vector<Row> rows;
    for (std::size_t i = 0; i < paths.size(); ++i) {
        if (errors[i]) {
            failure(*errors[i]);
            status = kExitFailure;
        } else {
            results = std::max(results, opened[i]->values.results.size());
            rows.push_back(std::move(*opened[i]));
        }
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
