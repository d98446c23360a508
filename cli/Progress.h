// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdio>
#include <string>

#include <unistd.h>

// A progress line on standard error for runs that last longer than a second, shown only when
// standard error is a terminal; it is redrawn in place and removed before other output.
class Progress
{
public:
    explicit Progress(std::size_t total)
        : m_total(total)
        , m_terminal(isatty(STDERR_FILENO) == 1)
    {}
    ~Progress() { clear(); }

    // About to work on file number `index` (from 0).
    void step(std::size_t index, const std::string &name)
    {
        using namespace std::chrono;
        const auto now = steady_clock::now();
        if (!m_terminal || now - m_start < seconds(1) || now - m_shown < milliseconds(100))
            return;
        m_shown = now;
        std::fprintf(stderr, "\r\033[K[%zu/%zu] %s", index + 1, m_total, name.c_str());
        std::fflush(stderr);
        m_visible = true;
    }

    void clear()
    {
        if (!m_visible)
            return;
        std::fputs("\r\033[K", stderr);
        std::fflush(stderr);
        m_visible = false;
    }

    bool terminal() const { return m_terminal; }

private:
    std::size_t m_total;
    bool m_terminal;
    bool m_visible = false;
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point m_shown{};
};
