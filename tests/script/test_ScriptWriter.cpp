// SPDX-License-Identifier: MIT
// Every NAME.wepn under tests/data/script is opened as the editor opens it, with NAME.familylist.lua
// or else familylist.lua, and written: the bytes must be those of NAME.expected.wepn, which must
// in turn open and write as itself.
#include "FamilyList.h"
#include "ScriptReader.h"
#include "ScriptWriter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

namespace {

const fs::path kData = fs::path(VANTOREL_SOURCE_DIR) / "tests/data/script";

std::string bytesOf(const fs::path &path)
{
    std::ifstream in(path, std::ios::binary);
    EXPECT_TRUE(in) << path;
    std::ostringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

std::vector<std::string> caseNames()
{
    std::vector<std::string> names;
    for (const fs::directory_entry &entry : fs::directory_iterator(kData)) {
        const std::string name = entry.path().filename().string();
        if (name.ends_with(".wepn") && !name.ends_with(".expected.wepn"))
            names.push_back(name.substr(0, name.size() - 5));
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string openAndWrite(const std::string &name, const std::string &bytes)
{
    const fs::path own = kData / (name + ".familylist.lua");
    const FamilyList families = ReadFamilyListFile((fs::exists(own) ? own : kData / "familylist.lua").string());
    EXPECT_TRUE(families.ok()) << families.error;
    EditorDocument document;
    document.setFamilies(families.armourFamilies, families.attackFamilies);
    const ReadResult result = OpenWeaponScript(document, bytes);
    EXPECT_TRUE(result.completed()) << result.message();
    return WeaponScriptText(document);
}

class ScriptFilesTest : public testing::TestWithParam<std::string>
{};

} // namespace

TEST_P(ScriptFilesTest, OpensAndWritesTheExpectedBytes)
{
    const std::string expected = bytesOf(kData / (GetParam() + ".expected.wepn"));
    EXPECT_EQ(openAndWrite(GetParam(), bytesOf(kData / (GetParam() + ".wepn"))), expected);
    EXPECT_EQ(openAndWrite(GetParam(), expected), expected);
}

INSTANTIATE_TEST_SUITE_P(Data, ScriptFilesTest, testing::ValuesIn(caseNames()),
                         [](const testing::TestParamInfo<std::string> &info) { return info.param; });
