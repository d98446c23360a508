// SPDX-License-Identifier: MIT
#include "AtomicFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

std::string contentOf(const fs::path &path)
{
    std::string bytes;
    EXPECT_EQ(AtomicFile::read(path.string(), bytes), std::nullopt);
    return bytes;
}

std::vector<std::string> namesIn(const fs::path &folder)
{
    std::vector<std::string> names;
    for (const auto &entry : fs::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

class AtomicFileTest : public testing::Test
{
protected:
    void SetUp() override
    {
        folder = fs::temp_directory_path()
                 / ("vantorel-" + std::to_string(::getpid()) + "-"
                    + testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(folder);
        fs::create_directories(folder);
        target = folder / "Weapon.wepn";
        ASSERT_EQ(AtomicFile::write(target.string(), "old\r\n"), std::nullopt);
    }
    void TearDown() override
    {
        // Undo chattr and mount even when an assertion ended the test early.
        for (const std::string &command : cleanup)
            EXPECT_EQ(std::system(command.c_str()), 0) << command;
        fs::remove_all(folder);
    }

    // A save that must fail: the reason names the path and the system's message, the folder
    // holds exactly what it held before, and the target is untouched.
    void expectFailedSave(const fs::path &path, std::string_view bytes, const std::string &reason)
    {
        const std::vector<std::string> before = namesIn(folder);
        const std::optional<std::string> problem = AtomicFile::write(path.string(), bytes);
        ASSERT_TRUE(problem.has_value());
        EXPECT_EQ(problem->rfind("Cannot save '" + path.string() + "'", 0), 0u) << *problem;
        EXPECT_NE(problem->find(reason), std::string::npos) << *problem;
        EXPECT_EQ(namesIn(folder), before);
        EXPECT_EQ(contentOf(target), "old\r\n");
    }

    fs::path folder;
    fs::path target;
    std::vector<std::string> cleanup;
};

} // namespace

TEST_F(AtomicFileTest, ReplacesTheWholeFileAndKeepsItsPermissions)
{
    ASSERT_EQ(::chmod(target.c_str(), 0640), 0);
    ASSERT_EQ(AtomicFile::write(target.string(), std::string("new\0bytes", 9)), std::nullopt);
    EXPECT_EQ(contentOf(target), std::string("new\0bytes", 9));
    struct stat info {};
    ASSERT_EQ(::stat(target.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0640u);
    EXPECT_EQ(namesIn(folder), std::vector<std::string>{"Weapon.wepn"});

    ASSERT_EQ(AtomicFile::write(target.string(), ""), std::nullopt);
    EXPECT_EQ(contentOf(target), "");
}

TEST_F(AtomicFileTest, TargetThatIsAFolder)
{
    fs::create_directory(folder / "Folder.wepn");
    expectFailedSave(folder / "Folder.wepn", "x", "Is a directory");
}

TEST_F(AtomicFileTest, ParentFolderMissing)
{
    expectFailedSave(folder / "missing" / "Weapon.wepn", "x", "No such file or directory");
}

TEST_F(AtomicFileTest, ParentThatIsAFile)
{
    expectFailedSave(target / "Weapon.wepn", "x", "Not a directory");
}

TEST_F(AtomicFileTest, ImmutableTarget)
{
    if (std::system(("chattr +i '" + target.string() + "' 2>/dev/null").c_str()) != 0)
        GTEST_SKIP() << "chattr +i is not supported here";
    cleanup.push_back("chattr -i '" + target.string() + "'");
    expectFailedSave(target, "new", "Operation not permitted");
}

TEST_F(AtomicFileTest, FullDisk)
{
    const fs::path disk = folder / "disk";
    fs::create_directory(disk);
    if (::geteuid() != 0
        || std::system(("mount -t tmpfs -o size=64k tmpfs '" + disk.string() + "' 2>/dev/null").c_str()) != 0)
        GTEST_SKIP() << "a tiny tmpfs needs root and a working mount";
    cleanup.push_back("umount '" + disk.string() + "'");
    const fs::path full = disk / "Weapon.wepn";
    ASSERT_EQ(AtomicFile::write(full.string(), "old\r\n"), std::nullopt);

    const std::optional<std::string> problem = AtomicFile::write(full.string(), std::string(1 << 20, 'x'));
    ASSERT_TRUE(problem.has_value());
    EXPECT_NE(problem->find("No space left on device"), std::string::npos) << *problem;
    EXPECT_EQ(contentOf(full), "old\r\n");
    EXPECT_EQ(namesIn(disk), std::vector<std::string>{"Weapon.wepn"});
}

TEST_F(AtomicFileTest, BatchesRecycleOnlyFilesThatNoOtherPathShows)
{
    // Replaced files are rewritten for later targets: each target must get its own bytes, cut to
    // length, with its own permissions and a new owner, and a hard link elsewhere never changes.
    std::vector<fs::path> files;
    for (std::size_t i = 0; i < 12; ++i) {
        files.push_back(folder / (std::to_string(i) + ".wepn"));
        ASSERT_EQ(AtomicFile::write(files[i].string(), "old"), std::nullopt);
        ASSERT_EQ(::chmod(files[i].c_str(), i % 2 ? 0600 : 0644), 0);
    }
    fs::create_hard_link(files[0], folder / "Linked.wepn");
    if (::geteuid() == 0) {
        ASSERT_EQ(::chown(files[1].c_str(), 4321, 4321), 0);
    }
    const auto bytes = [](std::size_t round, std::size_t i) {
        std::string text = std::to_string(round) + "/" + std::to_string(i);
        return text.append(i * 7 % 12 * round * 500, 'x');
    };
    {
        AtomicFile::Batch batch;
        for (std::size_t round = 1; round <= 3; ++round) {
            for (std::size_t i = 0; i < files.size(); ++i) {
                ASSERT_EQ(batch.stage(files[i].string(), bytes(round, i)), std::nullopt);
            }
            for (const auto &failure : batch.commit())
                EXPECT_EQ(failure, std::nullopt);
            for (std::size_t i = 0; i < files.size(); ++i) {
                EXPECT_EQ(contentOf(files[i]), bytes(round, i)) << files[i];
                struct stat info {};
                ASSERT_EQ(::stat(files[i].c_str(), &info), 0);
                EXPECT_EQ(info.st_mode & 07777, i % 2 ? 0600u : 0644u) << files[i];
                EXPECT_EQ(info.st_uid, ::geteuid()) << files[i];
            }
            EXPECT_EQ(contentOf(folder / "Linked.wepn"), "old");
        }
    }
    EXPECT_EQ(namesIn(folder).size(), 14u); // the files, Linked.wepn and Weapon.wepn: no spares
}
