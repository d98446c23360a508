// SPDX-License-Identifier: MIT
#include "CustomFSO.h"

#include "GamePaths.h"
#include "TempDir.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

TEST(CustomFSOTest, GetFileNameIsTheTextAfterTheLastDelimiter)
{
    const CustomFSO fso;
    EXPECT_EQ(fso.GetFileName("/data/Weapon/Foo/Foo.wepn", ""), "Foo.wepn");
    EXPECT_EQ(fso.GetFileName("Foo.wepn", ""), "");
    EXPECT_EQ(fso.GetFileName("/data/Weapon/", ""), "");
    EXPECT_EQ(fso.GetFileName("C:\\Data\\Weapon\\Foo.wepn", "\\"), "Foo.wepn");
    EXPECT_EQ(fso.GetFileName("C:\\Data\\Weapon\\Foo.wepn", ""), "");
    EXPECT_EQ(fso.GetFileName("a::b::c", "::"), "c");
}

TEST(CustomFSOTest, ExistenceOfFilesAndFolders)
{
    TempDir dir;
    const std::string root = dir.path();
    const std::string file = dir.write("Data/Scripts/familylist.lua", "x");
    const std::string hidden = dir.write("Data/.familylist.lua", "x");
    const std::string inHiddenFolder = dir.write("Data/.git/config", "x");
    const std::string fifo = root + "/fifo";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    const CustomFSO fso;

    struct Row
    {
        std::string path;
        bool file, folder;
    };
    const Row rows[] = {
        {file, true, false},
        {hidden, false, false},
        {inHiddenFolder, true, false},
        {fifo, false, false},
        {root + "/Data", false, true},
        {root + "/Data/", false, true},
        {root + "/Data/.git", false, true},
        {GamePaths::derive(root + "/Data/").strFLFile, true, false},
        {root + "/Data/Scripts/Weaponfire", false, false},
        {file + "/nul", false, false},
        {std::string(file) + '\0' + "junk", false, false},
        {std::string(5000, 'x'), false, false},
    };
    for (const Row &row : rows) {
        EXPECT_EQ(fso.FileExists(row.path), row.file) << row.path;
        EXPECT_EQ(fso.FolderExists(row.path), row.folder) << row.path;
    }
}
