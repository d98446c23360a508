// SPDX-License-Identifier: MIT
// vantorel-cli apply: the cells of a table that differ from what its scripts read now, written
// into the scripts in place.
#include "Commands.h"
#include "Csv.h"
#include "Inputs.h"
#include "Output.h"
#include "Values.h"

#include <map>
#include <memory>

using NamedValues::Column;
using Output::failure;
using Output::kExitFailure;
using Output::location;

namespace {

constexpr std::string_view kNotLatin1 = "the text is no UTF-8 (save the table as UTF-8) or holds a character beyond "
                                        "Latin-1, which a script cannot hold";

struct Header
{
    std::size_t path = 0;
    std::optional<std::size_t> fingerprint;
    std::vector<std::pair<std::size_t, Column>> columns; // the table's column, the value it holds
};

// "column F (Firing Range)"
std::string columnText(std::size_t index, const std::string &name)
{
    return "column " + Csv::columnLetters(index) + " (" + name + ")";
}

std::optional<std::string> readHeader(const std::vector<std::string> &fields, const NamedValues::Families &families,
                                      Header &header)
{
    std::optional<std::size_t> path;
    std::vector<Column> seen;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const std::string &name = fields[i];
        if (name == "Path" || name == "Script Fingerprint") {
            if ((name == "Path" ? path : header.fingerprint).has_value())
                return columnText(i, name) + ": the column appears twice";
            (name == "Path" ? path : header.fingerprint) = i;
            continue;
        }
        const std::optional<std::string> bytes = Values::fromUtf8(name);
        const std::optional<Column> column = bytes ? NamedValues::parseColumn(*bytes, families) : std::nullopt;
        if (!column)
            return columnText(i, name) + ": no value has this name";
        if (std::find(seen.begin(), seen.end(), *column) != seen.end())
            return columnText(i, name) + ": the column appears twice";
        seen.push_back(*column);
        header.columns.emplace_back(i, *column);
    }
    if (!path)
        return std::string("the table has no column Path");
    header.path = *path;
    return std::nullopt;
}

} // namespace

int runApply(const CommandLine &commandLine, const FamilyList &familyList)
{
    const std::string &table = commandLine.files.front();
    const NamedValues::Families families = Values::familiesOf(familyList);
    std::string text;
    AtomicFile::Seen tableSeen;
    if (const auto error = Inputs::readInput(table, text, tableSeen)) {
        failure(location(table, 0) + "error: " + *error);
        return kExitFailure;
    }
    const Csv::Table csv = Csv::parse(text);
    if (!csv.error.empty()) {
        failure(location(table, csv.errorLine) + "error: " + csv.error + "; nothing was written");
        return kExitFailure;
    }
    if (csv.records.empty()) {
        failure(location(table, 0) + "error: the table is empty");
        return kExitFailure;
    }
    Header header;
    if (const auto error = readHeader(csv.records.front().fields, families, header)) {
        failure(location(table, csv.records.front().line) + "error: " + *error + "; nothing was written");
        return kExitFailure;
    }

    int status = 0;
    std::map<std::string, int> rowsOfPath;
    for (std::size_t r = 1; r < csv.records.size(); ++r)
        if (header.path < csv.records[r].fields.size())
            ++rowsOfPath[csv.records[r].fields[header.path]];
    std::vector<std::string> paths;
    std::vector<Values::Edit> edits;
    for (std::size_t r = 1; r < csv.records.size(); ++r) {
        const Csv::Record &record = csv.records[r];
        const std::string where = location(table, record.line) + "error: ";
        const std::string path = header.path < record.fields.size() ? record.fields[header.path] : std::string();
        if (path.empty()) {
            failure(where + "the row has no Path");
            status = kExitFailure;
            continue;
        }
        if (record.fields.size() > csv.records.front().fields.size()) {
            failure(where + "the row has more cells than the table has columns; " + Output::shownName(path)
                    + " was not changed");
            status = kExitFailure;
            continue;
        }
        if (rowsOfPath[path] > 1) {
            failure(where + Output::shownName(path) + " has more than one row; it was not changed");
            status = kExitFailure;
            continue;
        }
        paths.push_back(path);
        // The table outlives the run, so each edit refers to its row rather than copying it.
        edits.push_back([&, &record = record, where](const std::string &path, const std::string &bytes,
                                                     const ScriptValues::Opened &, NamedValues::WeaponValues &values) {
            std::vector<std::string> errors;
            const auto cell = [&](std::size_t i) { return i < record.fields.size() ? &record.fields[i] : nullptr; };
            if (const std::string *print = header.fingerprint ? cell(*header.fingerprint) : nullptr;
                print && !commandLine.force && *print != Values::fingerprint(bytes)) {
                errors.push_back(where + Output::shownName(path)
                                 + " changed since the table was made, and the table would undo that; "
                                   "apply --force writes the table's values anyway");
                return errors;
            }
            for (const auto &[index, column] : header.columns) {
                const std::string *given = cell(index);
                if (!given)
                    continue;
                const std::string name = csv.records.front().fields[index];
                const std::optional<std::string> bytesGiven = Values::fromUtf8(*given);
                std::optional<std::string> error = std::string(kNotLatin1);
                if (bytesGiven)
                    error = NamedValues::setCell(values, column, *bytesGiven);
                if (error)
                    errors.push_back(where + columnText(index, name) + ": " + *error);
            }
            for (const NamedValues::Problem &problem : NamedValues::finish(values)) {
                std::string column = NamedValues::columnName(problem.column, families);
                for (const auto &[index, given] : header.columns)
                    if (given == problem.column)
                        column = columnText(index, column);
                errors.push_back(where + column + ": " + problem.message);
            }
            return errors;
        });
    }
    const int written = Values::writeChanges(paths, edits, families, commandLine.dryRun);
    return status != 0 ? status : written;
}
