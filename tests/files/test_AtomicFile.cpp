// SPDX-License-Identifier: MIT
#include "AtomicFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <fcntl.h>
#include <sys/file.h>
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
    // A new file gets what any program's new file gets: 0666 less the umask.
    const mode_t mask = ::umask(027);
    struct stat info {};
    ASSERT_EQ(AtomicFile::write((folder / "New.wepn").string(), "new"), std::nullopt);
    ::umask(mask);
    ASSERT_EQ(::stat((folder / "New.wepn").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0640u);
    fs::remove(folder / "New.wepn");

    ASSERT_EQ(::chmod(target.c_str(), 0640), 0);
    ASSERT_EQ(AtomicFile::write(target.string(), std::string("new\0bytes", 9)), std::nullopt);
    EXPECT_EQ(contentOf(target), std::string("new\0bytes", 9));
    ASSERT_EQ(::stat(target.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0640u);
    EXPECT_EQ(namesIn(folder), std::vector<std::string>{"Weapon.wepn"});

    ASSERT_EQ(AtomicFile::write(target.string(), ""), std::nullopt);
    EXPECT_EQ(contentOf(target), "");
}

TEST_F(AtomicFileTest, TargetsThatCannotBeSaved)
{
    fs::create_directory(folder / "Folder.wepn");
    // A new file that cannot be made names the folder it was to go in.
    const std::pair<fs::path, std::string> rows[] = {
        {folder / "Folder.wepn", "Is a directory"},
        {folder / "missing" / "Weapon.wepn", "(no new file in '" + (folder / "missing").string() + "'): No such file or directory"},
        {target / "Weapon.wepn", "Not a directory"}};
    for (const auto &[path, reason] : rows)
        expectFailedSave(path, "x", reason);
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

TEST_F(AtomicFileTest, KeepsOwnerLinksAndLongNamesAndTakesEveryStepInOrder)
{
    // A symlink keeps pointing at its target, which gets the new bytes; a root-run save keeps a
    // plain user's file theirs; a name near the 255-byte limit still has room for the new file.
    if (::geteuid() == 0) {
        ASSERT_EQ(::chown(target.c_str(), 65534, 65534), 0);
    }
    fs::create_symlink("Weapon.wepn", folder / "Link.wepn");
    std::vector<std::string> steps;
    static std::vector<std::string> *recorded = &steps;
    AtomicFile::stepHook = [](std::string_view step) { recorded->emplace_back(step); };
    ASSERT_EQ(AtomicFile::write((folder / "Link.wepn").string(), "new"), std::nullopt);
    AtomicFile::stepHook = nullptr;
    EXPECT_EQ(steps, (std::vector<std::string>{"create", "write", "owner", "sync", "check", "link", "replace",
                                               "sync folder"}));
    EXPECT_TRUE(fs::is_symlink(folder / "Link.wepn"));
    EXPECT_EQ(contentOf(target), "new");
    struct stat info {};
    ASSERT_EQ(::stat(target.c_str(), &info), 0);
    EXPECT_EQ(info.st_uid, ::geteuid() == 0 ? 65534u : ::geteuid());
    const fs::path longName = folder / (std::string(250, 'w') + ".wepn");
    EXPECT_EQ(AtomicFile::write(longName.string(), "x"), std::nullopt);
    EXPECT_EQ(AtomicFile::write(longName.string(), "y"), std::nullopt);
    EXPECT_EQ(contentOf(longName), "y");
}

TEST_F(AtomicFileTest, ReplacesOnlyTheFileThatWasRead)
{
    const struct
    {
        const char *change; // shell commands run between the read and the replacement, in the folder
        const char *after;  // the target's bytes afterwards, or "-" when it is gone
    } rows[] = {
        {"printf 'more' >> Weapon.wepn", "old\r\nmore"},
        {"rm Weapon.wepn", "-"},
        {"printf 'other' > Other && mv Other Weapon.wepn", "other"},
        {"chmod 600 Weapon.wepn", "old\r\n"},
    };
    for (const auto &row : rows) {
        ASSERT_EQ(AtomicFile::write(target.string(), "old\r\n"), std::nullopt);
        std::string bytes;
        AtomicFile::Seen seen;
        ASSERT_EQ(AtomicFile::read(target.string(), bytes, seen), std::nullopt);
        AtomicFile::Batch batch;
        ASSERT_EQ(batch.stage(target.string(), seen, "new"), std::nullopt);
        ASSERT_EQ(std::system(("cd '" + folder.string() + "' && sleep 0.01 && " + row.change).c_str()), 0);
        const auto failures = batch.commit();
        EXPECT_EQ(failures.front(), "Cannot save '" + target.string()
                                        + "': it changed after it was read, so it was left as it is")
            << row.change;
        EXPECT_EQ(fs::exists(target) ? contentOf(target) : "-", row.after) << row.change;
        EXPECT_EQ(namesIn(folder).size(), fs::exists(target) ? 1u : 0u) << row.change;
    }
    // A new file never replaces one that another program made at the last moment.
    static const fs::path *made = &target;
    fs::remove(target);
    AtomicFile::stepHook = [](std::string_view step) { step == "replace" && std::ofstream(*made) << "other"; };
    EXPECT_EQ(AtomicFile::write(target.string(), "new"), "Cannot save '" + target.string() + "' (replacing the file): File exists");
    AtomicFile::stepHook = nullptr;
    EXPECT_EQ(contentOf(target), "other");
}

// The automatic choice syncs the whole file system once for a batch while other programs leave
// less than 4 MiB unwritten, and each file on its own while they leave more.
TEST_F(AtomicFileTest, AutomaticSyncFollowsWhatOtherProgramsLeaveUnwritten)
{
    static int syncs = 0;
    AtomicFile::stepHook = [](std::string_view step) { syncs += step == "sync"; };
    const auto syncsOfTwo = [&](AtomicFile::SyncMethod method) {
        AtomicFile::Batch batch(method);
        for (const fs::path &path : {target, folder / "Other.wepn"}) {
            std::string bytes;
            AtomicFile::Seen seen;
            EXPECT_EQ(AtomicFile::write(path.string(), "old"), std::nullopt);
            EXPECT_EQ(AtomicFile::read(path.string(), bytes, seen), std::nullopt);
            EXPECT_EQ(batch.stage(path.string(), seen, "new"), std::nullopt);
        }
        syncs = 0;
        batch.commit();
        return syncs;
    };
    const std::string figures = (folder / "meminfo").string();
    AtomicFile::unwrittenFigures = figures.c_str();
    std::vector<int> counts;
    for (const char *dirty : {"4096", "4200"}) {
        std::ofstream(figures) << "MemTotal: 8000000 kB\nDirty: " << dirty << " kB\n";
        counts.push_back(syncsOfTwo(AtomicFile::SyncMethod::Auto));
    }
    const int shared = syncsOfTwo(AtomicFile::SyncMethod::Shared);
    AtomicFile::stepHook = nullptr;
    AtomicFile::unwrittenFigures = "/proc/meminfo";
    if (shared != 1)
        GTEST_SKIP() << "this file system is synced file by file";
    EXPECT_EQ(counts, (std::vector<int>{1, 2}));
}

TEST_F(AtomicFileTest, ReadsOnlyRegularFilesOfScriptSize)
{
    ASSERT_EQ(::mkfifo((folder / "Fifo.wepn").c_str(), 0644), 0);
    fs::create_symlink("/dev/zero", folder / "Zero.wepn");
    fs::resize_file(target, AtomicFile::kReadLimit + 1);
    const std::pair<std::string, std::string> rows[] = {
        {"Fifo.wepn", "not a regular file"},
        {"Zero.wepn", "not a regular file"},
        {"Weapon.wepn", "larger than 64 MiB, which no script is"},
        {"", "Is a directory"},
        {"Missing.wepn", "No such file or directory"},
    };
    for (const auto &[name, reason] : rows) {
        std::string bytes = "stale";
        const std::string path = (folder / name).string();
        EXPECT_EQ(AtomicFile::read(path, bytes), "Cannot read '" + path + "': " + reason);
        EXPECT_EQ(bytes, "");
    }
    std::string bytes;
    fs::resize_file(target, 64 << 20); // the largest script, read whole
    EXPECT_EQ(AtomicFile::read(target.string(), bytes), std::nullopt);
    EXPECT_EQ(bytes.size(), std::size_t{64} << 20);
}

TEST_F(AtomicFileTest, RemovesOnlyItsOwnStaleTemporaryFiles)
{
    // A process killed between naming its new file and the replacement leaves the name behind; a
    // name that a live process holds locked is its own, and other names are other programs'.
    for (const char *name : {".vantorel-1-1.tmp", ".vantorel-1-2.tmp", ".vantorel-notes", "vantorel-1-3.tmp"})
        std::ofstream(folder / name) << "x";
    const int held = ::open((folder / ".vantorel-1-2.tmp").c_str(), O_RDONLY);
    ASSERT_EQ(::flock(held, LOCK_EX), 0);
    ASSERT_EQ(AtomicFile::write(target.string(), "new"), std::nullopt);
    ::close(held);
    EXPECT_EQ(namesIn(folder),
              (std::vector<std::string>{".vantorel-1-2.tmp", ".vantorel-notes", "Weapon.wepn", "vantorel-1-3.tmp"}));
}

TEST(AtomicFileText, QuotedPathsStayOnOneLine)
{
    EXPECT_EQ(AtomicFile::quoted("Data/Gun.wepn"), "'Data/Gun.wepn'");
    EXPECT_EQ(AtomicFile::quoted("a\nb\tc'd\\e\x01\x7f.wepn"), "'a\\nb\\tc\\'d\\\\e\\x01\\x7f.wepn'");
    EXPECT_EQ(AtomicFile::shown("Data/Gun's.wepn"), "Data/Gun's.wepn");
    EXPECT_EQ(AtomicFile::shown("a\r.wepn"), "'a\\r.wepn'");
    EXPECT_EQ(AtomicFile::shown("My Mod/L\xC3\xA9g\xC3\xA8re.wepn"), "My Mod/L\xC3\xA9g\xC3\xA8re.wepn"); // blanks and letters stay
}
