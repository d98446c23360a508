// SPDX-License-Identifier: MIT
#include "InPlace.h"

#include "Output.h"
#include "Progress.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <thread>

#include <sys/resource.h>
#include <unistd.h>

namespace InPlace {

namespace {

std::atomic<int> stopSignal{0};
static_assert(std::atomic<int>::is_always_lock_free);

extern "C" void onStopSignal(int number)
{
    stopSignal = number;
}

// A thread spends most of its time waiting for the disk (creating, syncing and freeing files), so
// more threads than the two cores keep both cores busy: eight were as fast as sixteen here, four
// much slower.
constexpr int kThreads = 8;

} // namespace

std::size_t run(const std::vector<std::string> &paths, AtomicFile::SyncMethod sync, bool showProgress,
                const Prepare &prepare, const Failed &failed)
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
    std::atomic<std::size_t> next{0}, done{0};
    Progress progress(paths.size());
    // Only the first thread draws the progress line.
    const auto work = [&](bool drawsProgress) {
        AtomicFile::Batch batch(sync);
        std::vector<std::size_t> staged;
        std::vector<int> handles;
        std::thread closer;
        for (std::size_t first; stopSignal == 0 && (first = next.fetch_add(slice)) < paths.size();) {
            const std::size_t last = std::min(first + slice, paths.size());
            if (drawsProgress && showProgress)
                progress.step(done, paths[first]);
            staged.clear();
            for (std::size_t i = first; i < last; ++i) {
                AtomicFile::Seen seen;
                const std::optional<std::string> bytes = prepare(i, seen);
                if (seen.handle >= 0)
                    handles.push_back(seen.handle);
                if (!bytes)
                    continue;
                if (const auto error = batch.stage(paths[i], seen, *bytes))
                    failed(i, Output::location(paths[i], 0) + "error: " + *error);
                else
                    staged.push_back(i);
            }
            const auto saveErrors = batch.commit();
            for (std::size_t k = 0; k < staged.size(); ++k)
                if (saveErrors[k])
                    failed(staged[k], Output::location(paths[staged[k]], 0) + "error: " + *saveErrors[k]);
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
    for (int k = 1; k < kThreads && static_cast<std::size_t>(k) * slice < paths.size(); ++k)
        helpers.emplace_back(work, false);
    work(true);
    for (std::thread &helper : helpers)
        helper.join();
    progress.clear();
    return done;
}

std::optional<std::string> refusedForHardLinks(const std::string &path, const AtomicFile::Seen &seen,
                                               const std::string &hint)
{
    if (seen.links <= 1)
        return std::nullopt;
    return Output::location(path, 0) + "error: Cannot save " + AtomicFile::quoted(path) + ": it has "
           + std::to_string(seen.links) + " hard links, which a rewrite would split" + hint;
}

void endIfStopped(std::size_t done, std::size_t total)
{
    const int number = stopSignal;
    if (number == 0)
        return;
    Output::failure(std::string("vantorel-cli: stopped by ") + (number == SIGINT ? "SIGINT" : "SIGTERM") + " after "
                    + std::to_string(done) + " of " + std::to_string(total) + " scripts; the others were not looked at");
    ::signal(number, SIG_DFL);
    ::raise(number);
}

} // namespace InPlace
