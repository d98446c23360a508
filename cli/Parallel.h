// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <thread>
#include <vector>

namespace Parallel {

// Calls work(i) for every i below count on up to `threads` threads; work must not throw.
template <typename Work>
void forEach(std::size_t count, unsigned threads, Work &&work)
{
    std::atomic<std::size_t> next{0};
    const auto run = [&] {
        for (std::size_t i = next++; i < count; i = next++)
            work(i);
    };
    std::vector<std::thread> pool;
    const std::size_t helpers = std::min<std::size_t>(threads, count) - std::min<std::size_t>(1, count);
    for (std::size_t t = 0; t < helpers; ++t)
        pool.emplace_back(run);
    run();
    for (std::thread &thread : pool)
        thread.join();
}

} // namespace Parallel
