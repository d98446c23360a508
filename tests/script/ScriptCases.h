// SPDX-License-Identifier: MIT
// Files under tests/data, and scripts with what is said of them kept in such a file: a "script: "
// line, where \n and \r stand for line end bytes, then a "message: " line.
#pragma once

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

inline std::string dataFile(const std::string &relative)
{
    std::ifstream in(VANTOREL_SOURCE_DIR "/tests/data/" + relative, std::ios::binary);
    EXPECT_TRUE(in) << "cannot read tests/data/" << relative;
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

inline std::vector<std::pair<std::string, std::string>> scriptCases(const std::string &relative)
{
    std::ifstream in(VANTOREL_SOURCE_DIR "/tests/data/" + relative);
    EXPECT_TRUE(in) << "cannot read tests/data/" << relative;
    std::vector<std::pair<std::string, std::string>> cases;
    for (std::string line; std::getline(in, line);) {
        if (line.starts_with("script:"))
            cases.emplace_back();
        for (std::size_t i = 8; line.starts_with("script:") && i < line.size(); ++i)
            cases.back().first += line.compare(i, 2, "\\n") == 0 ? (++i, '\n') : line.compare(i, 2, "\\r") == 0 ? (++i, '\r') : line[i];
        if (line.starts_with("message:") && !cases.empty())
            cases.back().second = line.size() > 9 ? line.substr(9) : std::string();
    }
    return cases;
}
