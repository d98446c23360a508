// SPDX-License-Identifier: MIT
#include "CustomFSO.h"

#include "GamePaths.h"
#include "TempDir.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

TEST(CustomFSOTest, GetFileName)
{
    const CustomFSO fso;
    struct Row
    {
        std::string_view path, delimiter, expected;
    };
    const Row rows[] = {
        {"/data/Weapon/Foo/Foo.wepn", "", "Foo.wepn"},
        {"Foo.wepn", "", ""},
        {"", "", ""},
        {"/data/Weapon/", "", ""},
        {"C:\\Data\\Weapon\\Foo.wepn", "\\", "Foo.wepn"},
        {"C:\\Data\\Weapon\\Foo.wepn", "", ""},
        {"a::b::c", "::", "c"},
    };
    for (const Row &row : rows)
        EXPECT_EQ(fso.GetFileName(row.path, row.delimiter), row.expected) << row.path << " / " << row.delimiter;
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
    const GamePaths::Paths paths = GamePaths::derive(root + "/Data");
    const CustomFSO fso;

    struct Row
    {
        std::string path;
        bool file, folder;
    };
    const Row rows[] = {
        {file, true, false},
        {paths.strFLFile, true, false},
        {hidden, false, false},
        {inHiddenFolder, true, false},
        {fifo, false, false},
        {root + "/Data", false, true},
        {root + "/Data/", false, true},
        {root + "/Data/.git", false, true},
        {GamePaths::derive(root + "/Data/").strFLFile, true, false},
        {paths.strWFDir, false, false},
        {file + "/nul", false, false},
        {std::string(file) + '\0' + "junk", false, false},
        {"", false, false},
        {std::string(5000, 'x'), false, false},
    };
    for (const Row &row : rows) {
        EXPECT_EQ(fso.FileExists(row.path), row.file) << row.path;
        EXPECT_EQ(fso.FolderExists(row.path), row.folder) << row.path;
    }
}
