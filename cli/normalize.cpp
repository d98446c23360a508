// SPDX-License-Identifier: MIT
// vantorel-cli normalize: the normalised script of one file on standard output, or many files
// rewritten in place.
#include "AtomicFile.h"
#include "Commands.h"
#include "GameCompare.h"
#include "Inputs.h"
#include "Output.h"
#include "Progress.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <sys/resource.h>
#include <unistd.h>

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

std::atomic<int> stopSignal{0};
static_assert(std::atomic<int>::is_always_lock_free);

extern "C" void onStopSignal(int number) { stopSignal = number; }

// Threads take the scripts a slice at a time; each saves its slice as one batch. A thread spends
// most of its time waiting for the disk (creating, syncing and freeing files), so more threads
// than the two cores keep both cores busy: eight were as fast as sixteen here, four much slower.
constexpr int kThreads = 8;

// On SIGINT or SIGTERM no new slice is started, the slices in hand are finished, and the run ends
// with a message, by the same signal.
int normaliseInPlace(const std::vector<std::string> &scripts, const FamilyList &families, const CommandLine &commandLine)
{
    struct sigaction action {};
    action.sa_handler = onStopSignal;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    ::sigaction(SIGINT, &action, nullptr);
    ::sigaction(SIGTERM, &action, nullptr);

    // A slice's new files stay open until they replace their scripts, and its old files until
    // they are closed on a thread of their own after the next slice: room for three slices for
    // each thread under the limit of open files, raised when the system allows it.
    struct rlimit files {};
    ::getrlimit(RLIMIT_NOFILE, &files);
    if (files.rlim_cur < 4096 && files.rlim_max > files.rlim_cur) {
        files.rlim_cur = std::min<rlim_t>(files.rlim_max, 4096);
        ::setrlimit(RLIMIT_NOFILE, &files);
        ::getrlimit(RLIMIT_NOFILE, &files);
    }
    const std::size_t slice = std::clamp<std::size_t>(
        files.rlim_cur > 64 ? (files.rlim_cur - 32) / (3 * kThreads) : 1, 1, 128);
    std::vector<std::optional<std::string>> errors(scripts.size());
    std::atomic<std::size_t> next{0}, done{0};
    Progress progress(scripts.size());
    // Only the first thread draws the progress line.
    const auto work = [&](bool drawsProgress) {
        AtomicFile::Batch batch(commandLine.sync);
        std::string bytes, text;
        AtomicFile::Seen seen;
        std::vector<std::size_t> staged;
        std::vector<int> handles;
        std::thread closer;
        for (std::size_t first; stopSignal == 0 && (first = next.fetch_add(slice)) < scripts.size();) {
            const std::size_t last = std::min(first + slice, scripts.size());
            if (drawsProgress)
                progress.step(done, scripts[first]);
            staged.clear();
            for (std::size_t i = first; i < last; ++i) {
                const std::string &path = scripts[i];
                if ((errors[i] = normalise(path, families, bytes, text, commandLine, seen, true)))
                    continue;
                handles.push_back(seen.handle);
                // A script already in normalised form keeps its file and its modification time.
                if (text == bytes)
                    continue;
                if (!commandLine.allowChanges) {
                    if (const std::vector<GameChange> changes = SaveChanges(bytes, text); !changes.empty()) {
                        errors[i] = location(path, changes.front().line) + "error: left as it is: "
                                    + changes.front().message + " (--allow-changes rewrites it all the same)";
                        continue;
                    }
                }
                if (seen.links > 1 && !commandLine.splitHardLinks)
                    errors[i] = location(path, 0) + "error: Cannot save " + AtomicFile::quoted(path) + ": it has "
                                + std::to_string(seen.links)
                                + " hard links, which a rewrite would split (--split-hard-links allows it)";
                else if (const auto error = batch.stage(path, seen, text))
                    errors[i] = location(path, 0) + "error: " + *error;
                else
                    staged.push_back(i);
            }
            const auto saveErrors = batch.commit();
            for (std::size_t k = 0; k < staged.size(); ++k)
                if (saveErrors[k])
                    errors[staged[k]] = location(scripts[staged[k]], 0) + "error: " + *saveErrors[k];
            done += last - first;
            // Freeing a replaced file's storage (closing its last handle) can take longer than
            // writing the new file: it happens meanwhile, on a thread of its own.
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
    for (int k = 1; k < kThreads; ++k)
        helpers.emplace_back(work, false);
    work(true);
    for (std::thread &helper : helpers)
        helper.join();
    progress.clear();

    int status = 0;
    for (const auto &error : errors) {
        if (error) {
            failure(*error);
            status = kExitFailure;
        }
    }
    if (const int number = stopSignal) {
        failure(std::string("vantorel-cli: stopped by ") + (number == SIGINT ? "SIGINT" : "SIGTERM") + " after "
                + std::to_string(done) + " of " + std::to_string(scripts.size())
                + " scripts; the others were not looked at");
        ::signal(number, SIG_DFL);
        ::raise(number);
    }
    return status;
}

} // namespace

int runNormalize(const CommandLine &commandLine, const std::vector<std::string> &scripts, const FamilyList &families)
{
    if (commandLine.inPlace)
        return normaliseInPlace(scripts, families, commandLine);
    return normaliseToOutput(scripts.front(), families, commandLine);
}
