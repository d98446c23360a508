// SPDX-License-Identifier: MIT
// Walks tests/data/check: each NAME.wepn is checked against the families below, and its findings,
// one "LINE: warning|error: message" a line, must be exactly those of NAME.findings.
#include "AtomicFile.h"
#include "ScriptCheck.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

namespace {

const std::filesystem::path kFolder = std::filesystem::path(VANTOREL_SOURCE_DIR) / "tests/data/check";

std::vector<std::string> scripts()
{
    std::vector<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(kFolder)) {
        if (entry.path().extension() == ".wepn")
            names.push_back(entry.path().stem().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

class ScriptCheckFiles : public testing::TestWithParam<std::string> {};

TEST_P(ScriptCheckFiles, FindsExactlyWhatTheFileLists)
{
    std::string script, expected;
    ASSERT_FALSE(AtomicFile::read((kFolder / (GetParam() + ".wepn")).string(), script));
    ASSERT_FALSE(AtomicFile::read((kFolder / (GetParam() + ".findings")).string(), expected));
    std::string found;
    for (const Finding &finding :
         CheckWeaponScript(script, {"Unarmoured", "LightArmour", "HeavyArmour"}, {"Fighter", "Frigate", "Capital"}))
        found += std::to_string(finding.line) + (finding.error ? ": error: " : ": warning: ") + finding.message + '\n';
    EXPECT_EQ(found, expected);
}

INSTANTIATE_TEST_SUITE_P(Data, ScriptCheckFiles, testing::ValuesIn(scripts()),
                         [](const testing::TestParamInfo<std::string> &info) {
                             std::string name = info.param;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

} // namespace
