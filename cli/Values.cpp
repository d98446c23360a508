// SPDX-License-Identifier: MIT
#include "Values.h"

#include "InPlace.h"
#include "Output.h"

#include <algorithm>
#include <cstdint>

using Output::failure;
using Output::location;

namespace Values {

NamedValues::Families familiesOf(const FamilyList &families)
{
    return {families.armourFamilies, families.attackFamilies};
}

std::string fingerprint(std::string_view bytes)
{
    std::uint64_t hash = 14695981039346656037ull;
    for (const char c : bytes) {
        hash ^= static_cast<unsigned char>(c);
        hash *= 1099511628211ull;
    }
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text = "fnv1a64:";
    for (int shift = 60; shift >= 0; shift -= 4)
        text += kDigits[(hash >> shift) & 0xF];
    return text;
}

std::string toUtf8(std::string_view latin1)
{
    std::string text;
    text.reserve(latin1.size());
    for (const char c : latin1) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            text += c;
        } else {
            text += static_cast<char>(0xC0 | (byte >> 6));
            text += static_cast<char>(0x80 | (byte & 0x3F));
        }
    }
    return text;
}

std::optional<std::string> fromUtf8(std::string_view utf8)
{
    std::string text;
    text.reserve(utf8.size());
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        const auto byte = static_cast<unsigned char>(utf8[i]);
        if (byte < 0x80) {
            text += utf8[i];
            continue;
        }
        if ((byte != 0xC2 && byte != 0xC3) || i + 1 == utf8.size()
            || (static_cast<unsigned char>(utf8[i + 1]) & 0xC0) != 0x80)
            return std::nullopt;
        text += static_cast<char>(((byte & 0x03) << 6) | (static_cast<unsigned char>(utf8[++i]) & 0x3F));
    }
    return text;
}

std::optional<std::string> openScript(const std::string &path, const NamedValues::Families &families,
                                      std::string &bytes, AtomicFile::Seen &seen, ScriptValues::Opened &opened,
                                      bool keep)
{
    if (const auto error = AtomicFile::read(path, bytes, seen, keep))
        return location(path, 0) + "error: " + *error;
    const ReadResult result = ScriptValues::open(bytes, families, opened);
    if (!result.completed())
        return location(path, result.line) + "error: " + result.reason;
    return std::nullopt;
}

std::string shownValue(const std::string &cell)
{
    return cell.empty() ? "(none)" : cell;
}

std::string changeLine(const std::string &path, int line, const std::string &name, const std::string &was,
                       const std::string &now)
{
    return location(path, line) + name + ' ' + shownValue(was) + " -> " + shownValue(now);
}

namespace {

struct Outcome
{
    std::vector<std::string> changes;
    std::vector<std::string> errors;
};

} // namespace

int writeChanges(const std::vector<std::string> &paths, const std::vector<Edit> &edits,
                 const NamedValues::Families &families, bool dryRun)
{
    std::vector<Outcome> outcomes(paths.size());
    const auto prepare = [&](std::size_t i, AtomicFile::Seen &seen) -> std::optional<std::string> {
        const std::string &path = paths[i];
        Outcome &outcome = outcomes[i];
        std::string bytes;
        ScriptValues::Opened opened;
        if (const auto error = openScript(path, families, bytes, seen, opened, true)) {
            outcome.errors.push_back(*error);
            return std::nullopt;
        }
        NamedValues::WeaponValues values = opened.values;
        outcome.errors = edits[i](path, bytes, opened, values);
        if (!outcome.errors.empty())
            return std::nullopt;
        const std::vector<NamedValues::Column> columns
            = NamedValues::columns(families, std::max(values.results.size(), opened.values.results.size()));
        const auto changed = [&](const NamedValues::Column &column) {
            return !NamedValues::sameCell(opened.values, values, column);
        };
        if (std::none_of(columns.begin(), columns.end(), changed))
            return std::nullopt;
        ScriptValues::Saved saved = ScriptValues::save(opened, values, families);
        for (const std::string &problem : saved.problems)
            outcome.errors.push_back(location(path, 0) + "error: cannot write the changes into the script's own text: "
                                     + problem);
        for (const NamedValues::Column &column : saved.problems.empty() ? columns : std::vector<NamedValues::Column>{}) {
            if (!changed(column))
                continue;
            const std::string now = NamedValues::cellText(values, column);
            // A value that is there after the change is shown where it stands then.
            const int line = now.empty() || !saved.reread ? ScriptValues::lineOf(opened, column)
                                                          : ScriptValues::lineOf(*saved.reread, column);
            outcome.changes.push_back(changeLine(path, line, NamedValues::columnName(column, families),
                                                 NamedValues::cellText(opened.values, column), now));
        }
        if (!outcome.errors.empty() || dryRun || saved.bytes == bytes)
            return std::nullopt;
        if (auto refused = InPlace::refusedForHardLinks(path, seen)) {
            outcome.errors.push_back(std::move(*refused));
            return std::nullopt;
        }
        return std::move(saved.bytes);
    };
    const std::size_t done = InPlace::run(paths, AtomicFile::SyncMethod::Auto, false, prepare,
                                          [&](std::size_t i, std::string error) {
                                              outcomes[i].errors.push_back(std::move(error));
                                          });

    int status = 0;
    std::string out;
    for (const Outcome &outcome : outcomes) {
        for (const std::string &line : outcome.errors.empty() ? outcome.changes : std::vector<std::string>{})
            out += line + '\n';
        if (!outcome.errors.empty()) {
            std::fwrite(out.data(), 1, out.size(), stdout);
            out.clear();
            for (const std::string &error : outcome.errors)
                failure(error);
            status = Output::kExitFailure;
        }
    }
    std::fwrite(out.data(), 1, out.size(), stdout);
    if (std::fflush(stdout) != 0) {
        failure("vantorel-cli: cannot write the standard output");
        status = Output::kExitFailure;
    }
    InPlace::endIfStopped(done, paths.size());
    return status;
}

} // namespace Values
