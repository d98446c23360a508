// SPDX-License-Identifier: MIT
// vantorel-cli set: named values of many scripts changed from the command line, as a table
// would change them.
#include "Commands.h"
#include "Inputs.h"
#include "NumberText.h"
#include "Output.h"
#include "Values.h"

#include <filesystem>

using NamedValues::Column;
using NamedValues::Operation;
using Output::failure;
using Output::kExitUsage;
using Output::location;

namespace {

struct Change
{
    Column column;
    std::string name;
    Operation operation = Operation::Set;
    std::string value;
};

// "NAME=VALUE", "NAME*=F" or "NAME+=N"; gives the reason when the name is unknown.
std::optional<std::string> readChange(const std::string &argument, const NamedValues::Families &families, Change &change)
{
    const std::size_t equals = argument.find('=');
    std::string name = argument.substr(0, equals);
    if (name.ends_with('*') || name.ends_with('+')) {
        change.operation = name.back() == '*' ? Operation::Multiply : Operation::Add;
        name.pop_back();
    }
    const std::optional<std::string> bytes = Values::fromUtf8(name);
    const std::optional<Column> column = bytes ? NamedValues::parseColumn(*bytes, families) : std::nullopt;
    if (!column)
        return "'" + argument + "': no value is named '" + name + "'";
    change.column = *column;
    change.name = *bytes;
    const std::optional<std::string> value = Values::fromUtf8(std::string_view(argument).substr(equals + 1));
    if (!value)
        return "'" + argument + "': the value is no UTF-8 or holds a character beyond Latin-1, which a script cannot hold";
    change.value = *value;
    return std::nullopt;
}

bool matches(const NamedValues::WeaponValues &values, const Change &condition)
{
    const std::string held = NamedValues::cellText(values, condition.column);
    if (held == condition.value)
        return true;
    const auto a = NumberText::readReal(held), b = NumberText::readReal(condition.value);
    return a && b && NumberText::realText(*a) == NumberText::realText(*b);
}

} // namespace

int runSet(const CommandLine &commandLine, const FamilyList &familyList)
{
    const NamedValues::Families families = Values::familiesOf(familyList);
    std::vector<std::string> files;
    std::vector<Change> changes, conditions;
    const auto usage = [](const std::string &reason) {
        failure("vantorel-cli: " + reason + " (see vantorel-cli --help)");
        return kExitUsage;
    };
    for (const std::string &argument : commandLine.files) {
        std::error_code error;
        if (argument.find('=') == std::string::npos || std::filesystem::exists(argument, error)) {
            files.push_back(argument);
            continue;
        }
        Change change;
        if (const auto reason = readChange(argument, families, change))
            return usage(*reason);
        if (change.operation != Operation::Set && NamedValues::holdsText(change.column))
            return usage("'" + argument + "': " + change.name + " holds a text, which cannot be computed with");
        changes.push_back(std::move(change));
    }
    for (const std::string &argument : commandLine.where) {
        Change condition;
        if (const auto reason = readChange(argument, families, condition))
            return usage("--where " + *reason);
        if (condition.operation != Operation::Set)
            return usage("--where '" + argument + "': a condition is NAME=VALUE");
        conditions.push_back(std::move(condition));
    }
    if (files.empty())
        return usage("set needs at least one FILE");
    if (changes.empty())
        return usage("set needs at least one change, 'NAME=VALUE', 'NAME*=F' or 'NAME+=N'");

    std::vector<std::string> scripts;
    const bool listed = Inputs::expandFolders(files, scripts);
    const Values::Edit edit = [&](const std::string &path, const std::string &, const ScriptValues::Opened &opened,
                                  NamedValues::WeaponValues &values) {
        std::vector<std::string> errors;
        for (const Change &condition : conditions)
            if (!matches(values, condition))
                return errors;
        for (const Change &change : changes)
            if (const auto error = NamedValues::changeCell(values, change.column, change.operation, change.value))
                errors.push_back(location(path, ScriptValues::lineOf(opened, change.column))
                                 + "error: " + change.name + ": " + *error);
        for (const NamedValues::Problem &problem : NamedValues::finish(values))
            errors.push_back(location(path, ScriptValues::lineOf(opened, problem.column))
                             + "error: " + NamedValues::columnName(problem.column, families) + ": " + problem.message);
        return errors;
    };
    const int status = Values::writeChanges(scripts, std::vector<Values::Edit>(scripts.size(), edit), families,
                                            commandLine.dryRun);
    return listed ? status : Output::kExitFailure;
}
