// SPDX-License-Identifier: MIT
#include "ScriptRoundTrip.h"
#include "SyntaxRoundTrip.h"

#include "AtomicFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

namespace {

std::vector<std::filesystem::path> corpusFiles()
{
    std::vector<std::filesystem::path> files;
    for (const char *folder : {"fuzz/corpus", "fuzz/regressions"}) {
        const std::filesystem::path path = std::filesystem::path(VANTOREL_SOURCE_DIR) / folder;
        if (!std::filesystem::is_directory(path))
            continue;
        for (const auto &entry : std::filesystem::directory_iterator(path)) {
            if (entry.is_regular_file() && entry.path().filename().string()[0] != '.')
                files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

class ScriptCorpusTest : public testing::TestWithParam<std::filesystem::path>
{};

} // namespace

TEST_P(ScriptCorpusTest, WrittenScriptsOpenAndWriteTheSameBytes)
{
    std::string bytes;
    ASSERT_EQ(AtomicFile::read(GetParam().string(), bytes), std::nullopt);
    const std::optional<std::string> problem = checkScriptRoundTrip(bytes);
    EXPECT_FALSE(problem.has_value()) << *problem;
    const std::optional<std::string> kept = checkSyntaxRoundTrip(bytes);
    EXPECT_FALSE(kept.has_value()) << *kept;
}

INSTANTIATE_TEST_SUITE_P(Saved, ScriptCorpusTest, testing::ValuesIn(corpusFiles()));
