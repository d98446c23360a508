// SPDX-License-Identifier: MIT
#include "AtomicFile.h"
#include "ScriptReader.h"
#include "ScriptWriter.h"

#include <gtest/gtest.h>

#include <filesystem>

#include <unistd.h>

namespace fs = std::filesystem;

namespace {

const std::string kDataDir = std::string(VANTOREL_SOURCE_DIR) + "/tests/script/data/";

std::string fileBytes(const std::string &path)
{
    std::string bytes;
    EXPECT_EQ(AtomicFile::read(path, bytes), std::nullopt);
    return bytes;
}

// The document that the editor holds for the example script: what the window shows and saves.
EditorDocument exampleDocument()
{
    EditorDocument document;
    document.Weapon.GrabValues("StartWeaponConfig(Foo,\"AnimatedTurret\",\"Bullet\",\"FX_Shot\",\"Normal\",2500,1700,"
                               "0,0,0,0,0,1,1,0.5,0,0,0,0,80,80,0.1,\"\",0,0,0)");
    document.Weapon.InitializeWeaponValues();
    document.setNoResults();
    document.addResult({"Hit", "DamageHealth", "Target", 40, 40, ""});
    document.addResult({"Miss", "SpawnWeaponFire", "Target", 0, 0, "FX_Spawn"});
    document.fFiringArc = 10;
    document.fLeftRotation = -90;
    document.fRightRotation = 90;
    document.fDownRotation = -5;
    document.fUpRotation = 60;
    document.fBarrelRecoil = 3; // not written: the script had no setMiscValues
    document.iFieldPenetration = 5;
    document.fDefaultPenetration = 1;
    document.iDefaultAccuracy = 1;
    document.lstArmorFamilies = {"Alpha - 1.5", "Beta - 0.5"};
    document.lstAccuracy = {"Alpha - 0.7 - 0", "Beta - 0.2 - 1"};
    EXPECT_EQ(document.fillFamilyTables(), std::nullopt);
    return document;
}

class ScriptFilesTest : public testing::Test
{
protected:
    void SetUp() override
    {
        folder = fs::temp_directory_path()
                 / ("vantorel-" + std::to_string(::getpid()) + "-"
                    + testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(folder);
        fs::create_directories(folder);
    }
    void TearDown() override { fs::remove_all(folder); }

    // Opens as the editor does: family entries from the family list first.
    static ReadResult open(EditorDocument &document, const std::string &bytes)
    {
        document.setFamilies({"Alpha", "Beta"}, {"Alpha", "Beta"});
        return OpenWeaponScript(document, bytes);
    }

    fs::path folder;
};

} // namespace

TEST(ScriptWriterTest, ExampleDocumentIsWrittenByteForByte)
{
    EXPECT_EQ(WeaponScriptText(exampleDocument()), fileBytes(kDataDir + "example.wepn"));
}

TEST(ScriptWriterTest, OptionalRowsEmptyLinesAndLeftovers)
{
    EditorDocument document;
    document.Weapon.InitializeWeaponValues();
    document.setNoResults();
    document.bHasMiscValues = true;
    document.fBarrelRecoil = 0.5;
    document.fSlaveFireDelay = 2;
    document.lstArmorFamilies = {"Alpha - 0.00001"};
    document.lstAccuracy = {"Alpha - 1 - 0", "Beta - 0.25 - -1"};
    document.iDefaultAccuracy = -3;
    ASSERT_EQ(document.fillFamilyTables(), std::nullopt);
    document.strScriptLines = {"", "  kept line", "", "print(\"x\")"};

    EXPECT_EQ(WeaponScriptText(document),
              "StartWeaponConfig(NewWeaponType,\"\",\"\",\"\",\"\",0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,\"\",0,0,0)\r\n\r\n"
              "setAngles(NewWeaponType,0,0,0,0,0)\r\n\r\n"
              "setMiscValues(NewWeaponType,0.5,2)\r\n\r\n"
              "setPenetration(NewWeaponType,0,0,\r\n{Alpha=1E-05,})\r\n\r\n"
              "setAccuracy(NewWeaponType,-3,\r\n{Alpha=1,},\r\n{Beta=0.25, damage=1,})\r\n"
              "  kept line\r\nprint(\"x\")\r\n");
}

TEST_F(ScriptFilesTest, ExampleFileReadWriteReadGivesEveryValueAndTheSameBytes)
{
    const std::string path = (folder / "Example.wepn").string();
    const EditorDocument written = exampleDocument();
    ASSERT_EQ(WriteWeaponScript(written, path), std::nullopt);

    EditorDocument read;
    const ReadResult result = open(read, fileBytes(path));
    ASSERT_TRUE(result.completed()) << result.message;
    EXPECT_EQ(read.Weapon.SWCString(), written.Weapon.SWCString());
    EXPECT_EQ(read.WeaponResults, written.WeaponResults);
    EXPECT_EQ(read.lstWeaponResults, written.lstWeaponResults);
    EXPECT_EQ((std::vector<double>{read.fFiringArc, read.fLeftRotation, read.fRightRotation, read.fDownRotation,
                                   read.fUpRotation, read.fDefaultPenetration}),
              (std::vector<double>{10, -90, 90, -5, 60, 1}));
    EXPECT_FALSE(read.bHasMiscValues);
    EXPECT_EQ(read.iFieldPenetration, 5);
    EXPECT_EQ(read.iDefaultAccuracy, 1);
    EXPECT_EQ(read.FamilyPenetrations, written.FamilyPenetrations);
    EXPECT_EQ(read.FamilyAccuracies, written.FamilyAccuracies);
    EXPECT_EQ(read.lstAccuracy, written.lstAccuracy);

    ASSERT_EQ(WriteWeaponScript(read, path), std::nullopt);
    EXPECT_EQ(fileBytes(path), fileBytes(kDataDir + "example.wepn"));
}

// A hand-edited script in the editor's dialect, and the normalised script the editor saves for it.
TEST_F(ScriptFilesTest, HandEditedScriptIsNormalisedAndThenStable)
{
    EditorDocument document;
    document.setFamilies({"Fighter", "Frigate"}, {"Fighter", "Frigate", "Mine"});
    ASSERT_TRUE(OpenWeaponScript(document, fileBytes(kDataDir + "dialect.wepn")).completed());
    const std::string path = (folder / "dialect.wepn").string();
    ASSERT_EQ(WriteWeaponScript(document, path), std::nullopt);
    EXPECT_EQ(fileBytes(path), fileBytes(kDataDir + "dialect.expected.wepn"));

    EditorDocument again;
    again.setFamilies({"Fighter", "Frigate"}, {"Fighter", "Frigate", "Mine"});
    ASSERT_TRUE(OpenWeaponScript(again, fileBytes(path)).completed());
    EXPECT_EQ(WeaponScriptText(again), fileBytes(path));
}

TEST_F(ScriptFilesTest, EmptyFamilyListsCloseTheirStatementsSoTheNextOneIsRead)
{
    EditorDocument document = exampleDocument();
    document.lstArmorFamilies.clear();
    document.lstAccuracy.clear();
    document.iDefaultAccuracy = 3;
    document.strScriptLines = {"print(1)"};
    const std::string text = WeaponScriptText(document);
    EXPECT_NE(text.find("setPenetration(NewWeaponType,5,1,\r\n)\r\n\r\nsetAccuracy(NewWeaponType,3,\r\n)\r\n\r\nprint(1)\r\n"),
              std::string::npos);

    EditorDocument read;
    read.setFamilies({}, {});
    ASSERT_TRUE(OpenWeaponScript(read, text).completed());
    EXPECT_EQ(read.iDefaultAccuracy, 3);
    EXPECT_EQ(read.strScriptLines.back(), "print(1)");
    EXPECT_EQ(WeaponScriptText(read), text);
}
