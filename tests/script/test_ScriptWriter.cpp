// SPDX-License-Identifier: MIT
#include "AtomicFile.h"
#include "ScriptReader.h"
#include "ScriptWriter.h"
#include "TempDir.h"

#include <gtest/gtest.h>

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

} // namespace

TEST(ScriptWriterTest, ExampleIsWrittenByteForByteAndReadBackWithEveryValue)
{
    TempDir dir;
    const std::string path = dir.path() + "/Example.wepn";
    const EditorDocument written = exampleDocument();
    ASSERT_EQ(WriteWeaponScript(written, path), std::nullopt);
    EXPECT_EQ(fileBytes(path), fileBytes(kDataDir + "example.wepn"));

    EditorDocument read;
    read.setFamilies({"Alpha", "Beta"}, {"Alpha", "Beta"});
    const ReadResult result = OpenWeaponScript(read, fileBytes(path));
    ASSERT_TRUE(result.completed()) << result.message();
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

// A hand-edited script in the editor's dialect and the normalised script the editor saves for it;
// the corpus replay shows that the saved script then stays the same.
TEST(ScriptWriterTest, HandEditedScriptIsNormalised)
{
    EditorDocument document;
    document.setFamilies({"Fighter", "Frigate"}, {"Fighter", "Frigate", "Mine"});
    ASSERT_TRUE(OpenWeaponScript(document, fileBytes(kDataDir + "dialect.wepn")).completed());
    EXPECT_EQ(WeaponScriptText(document), fileBytes(kDataDir + "dialect.expected.wepn"));
}

// Without results no AddWeaponResult block, and empty family lists still close their statements
// so that the leftover lines after them are read back as leftovers.
TEST(ScriptWriterTest, NoResultsEmptyFamilyListsAndLeftoversAreReadBack)
{
    EditorDocument document = exampleDocument();
    document.setNoResults();
    document.bHasMiscValues = true;
    document.lstArmorFamilies.clear();
    document.lstAccuracy.clear();
    document.iDefaultAccuracy = -3;
    document.strScriptLines = {"", "  kept line", "", "print(1)"};
    const std::string text = WeaponScriptText(document);
    EXPECT_EQ(text.substr(text.find("\r\n\r\n") + 4), "setAngles(NewWeaponType,10,-90,90,-5,60)\r\n\r\n"
                                                       "setMiscValues(NewWeaponType,3,0)\r\n\r\n"
                                                       "setPenetration(NewWeaponType,5,1,\r\n)\r\n\r\n"
                                                       "setAccuracy(NewWeaponType,-3,\r\n)\r\n\r\n"
                                                       "  kept line\r\nprint(1)\r\n");

    EditorDocument read;
    read.setFamilies({}, {});
    ASSERT_TRUE(OpenWeaponScript(read, text).completed());
    EXPECT_EQ(WeaponScriptText(read), text);
}
