// SPDX-License-Identifier: MIT
#include "Values.h"

#include "Output.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdint>
#include <thread>

#include <sys/resource.h>
#include <unistd.h>

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

std::atomic<int> stopSignal{0};

extern "C" void onChangesStopSignal(int number)
{
    stopSignal = number;
}

struct Outcome
{
    std::vector<std::string> changes;
    std::vector<std::string> errors;
};

// Threads take the scripts a slice at a time and write each slice as one batch, as the in-place
// normalisation does: most of a thread's time goes to waiting for the disk. The scripts read stay
// open until after their slice is written, and are closed on a thread of their own: closing the
// last handle of a replaced file frees its storage, which can take longer than the write.
constexpr int kThreads = 8;
constexpr std::size_t kSlice = 128;

} // namespace

int writeChanges(const std::vector<std::string> &paths, const std::vector<Edit> &edits,
                 const NamedValues::Families &families, bool dryRun)
{
    struct sigaction action {};
    action.sa_handler = onChangesStopSignal;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    ::sigaction(SIGINT, &action, nullptr);
    ::sigaction(SIGTERM, &action, nullptr);

    // Room for three slices of open scripts for each thread under the limit of open files.
    struct rlimit files {};
    ::getrlimit(RLIMIT_NOFILE, &files);
    if (files.rlim_cur < 4096 && files.rlim_max > files.rlim_cur) {
        files.rlim_cur = std::min<rlim_t>(files.rlim_max, 4096);
        ::setrlimit(RLIMIT_NOFILE, &files);
        ::getrlimit(RLIMIT_NOFILE, &files);
    }
    const std::size_t slice = std::clamp<std::size_t>(
        files.rlim_cur > 64 ? (files.rlim_cur - 32) / (3 * kThreads) : 1, 1, kSlice);

    std::vector<Outcome> outcomes(paths.size());
    std::atomic<std::size_t> next{0}, done{0};
    const auto work = [&] {
        AtomicFile::Batch batch(AtomicFile::SyncMethod::Auto);
        std::string bytes;
        std::vector<std::size_t> staged;
        std::vector<int> handles;
        std::thread closer;
        for (std::size_t first; stopSignal == 0 && (first = next.fetch_add(slice)) < paths.size();) {
            const std::size_t last = std::min(first + slice, paths.size());
            staged.clear();
            for (std::size_t i = first; i < last; ++i) {
                const std::string &path = paths[i];
                Outcome &outcome = outcomes[i];
                AtomicFile::Seen seen;
                ScriptValues::Opened opened;
                const auto error = openScript(path, families, bytes, seen, opened, true);
                if (seen.handle >= 0)
                    handles.push_back(seen.handle);
                if (error) {
                    outcome.errors.push_back(*error);
                    continue;
                }
                NamedValues::WeaponValues values = opened.values;
                outcome.errors = edits[i](path, bytes, opened, values);
                if (!outcome.errors.empty())
                    continue;
                const std::vector<NamedValues::Column> columns
                    = NamedValues::columns(families, std::max(values.results.size(), opened.values.results.size()));
                const auto changed = [&](const NamedValues::Column &column) {
                    return !NamedValues::sameCell(opened.values, values, column);
                };
                if (std::none_of(columns.begin(), columns.end(), changed))
                    continue;
                ScriptValues::Saved saved = ScriptValues::save(opened, values, families);
                for (const std::string &problem : saved.problems)
                    outcome.errors.push_back(location(path, 0)
                                             + "error: cannot write the changes into the script's own text: " + problem);
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
                    continue;
                // A rewrite gives the script a new file: its other hard links would keep the old one.
                if (seen.links > 1)
                    outcome.errors.push_back(location(path, 0) + "error: Cannot save " + AtomicFile::quoted(path)
                                             + ": it has " + std::to_string(seen.links)
                                             + " hard links, which a rewrite would split");
                else if (const auto error = batch.stage(path, seen, saved.bytes))
                    outcome.errors.push_back(location(path, 0) + "error: " + *error);
                else
                    staged.push_back(i);
            }
            const auto saveErrors = batch.commit();
            for (std::size_t k = 0; k < staged.size(); ++k)
                if (saveErrors[k])
                    outcomes[staged[k]].errors.push_back(location(paths[staged[k]], 0) + "error: " + *saveErrors[k]);
            done += last - first;
            if (closer.joinable())
                closer.join();
            closer = std::thread([old = std::move(handles)] {
                for (const int handle : old)
                    ::close(handle);
            });
            handles.clear();
        }
        if (closer.joinable())
            closer.join();
    };
    std::vector<std::thread> helpers;
    for (int k = 1; k < kThreads && static_cast<std::size_t>(k) * slice < paths.size(); ++k)
        helpers.emplace_back(work);
    work();
    for (std::thread &helper : helpers)
        helper.join();

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
    if (const int number = stopSignal) {
        failure(std::string("vantorel-cli: stopped by ") + (number == SIGINT ? "SIGINT" : "SIGTERM") + " after "
                + std::to_string(done) + " of " + std::to_string(paths.size())
                + " scripts; the others were not looked at");
        ::signal(number, SIG_DFL);
        ::raise(number);
    }
    return status;
}

} // namespace Values
