// SPDX-License-Identifier: MIT
#include "EditorReading.h"
#include "FamilyList.h"
#include "ScriptWriter.h"
#include "TempDir.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <vector>

namespace {

const std::string kFixtures = VANTOREL_SOURCE_DIR "/tests/cli/data";

std::string readFile(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

std::string shellQuoted(const std::string &text)
{
    std::string quoted = "'";
    for (char c : text)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

struct Outcome
{
    int status = -1;
    std::string out;
    std::string err;
};

// A data directory with the fixture family list and a weapon-fire folder, and a settings folder
// of its own so that the user's real settings are never read or written.
class CliTest : public testing::Test
{
protected:
    CliTest()
    {
        dir.write("Data/Scripts/familylist.lua", readFile(kFixtures + "/familylist.lua"));
        std::filesystem::create_directories(dir.path() + "/Data/Scripts/Weaponfire/FX_Shot");
        dataDir = dir.path() + "/Data";
    }

    // Runs the program; `prefix` is shell text put before it (environment, ulimit).
    Outcome run(const std::vector<std::string> &arguments, const std::string &prefix = {}) const
    {
        std::string command = prefix + " env XDG_CONFIG_HOME=" + shellQuoted(dir.path() + "/config") + ' '
                              + shellQuoted(VANTOREL_CLI);
        for (const std::string &argument : arguments)
            command += ' ' + shellQuoted(argument);
        command += " >" + shellQuoted(dir.path() + "/out") + " 2>" + shellQuoted(dir.path() + "/err");
        const int status = std::system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, readFile(dir.path() + "/out"),
                readFile(dir.path() + "/err")};
    }


    // What the editor's Open and Save As write for the script: the shared library pipeline.
    std::string editorSaves(const std::string &bytes) const
    {
        const FamilyList families = ReadFamilyListFile(dataDir + "/Scripts/familylist.lua");
        EXPECT_TRUE(families.ok()) << families.error;
        EditorDocument document;
        document.setFamilies(families.armourFamilies, families.attackFamilies);
        EXPECT_TRUE(OpenEditorScript(document, bytes).completed());
        return WeaponScriptText(document);
    }

    TempDir dir;
    std::string dataDir;
};

// A script in exactly the form a save writes, for the fixture family list.
const std::string kNormalised =
    "StartWeaponConfig(NewWeaponType,\"Gimble\",\"Bullet\",\"FX_Shot\",\"Normal\",3,1700,0,0,0,0,0,1,1,0.5,0,0,0,0,"
    "80,80,0.1,\"\",0,0,0)\r\n\r\n"
    "AddWeaponResult(NewWeaponType,\"Hit\",\"DamageHealth\",\"Target\",40,45,\"\")\r\n\r\n"
    "setAngles(NewWeaponType,10,-90,90,-5,60)\r\n\r\n"
    "setPenetration(NewWeaponType,5,1,\r\n{Unarmoured=1,},\r\n{LightArmour=0.5,},\r\n{HeavyArmour=0.4,})\r\n\r\n"
    "setAccuracy(NewWeaponType,1,\r\n{Fighter=1,},\r\n{Frigate=0.5,},\r\n{Capital=0.2, damage=1,})\r\n";

TEST_F(CliTest, NormalizeWritesWhatTheEditorSaves)
{
    // The editor window's Open then Save As of tests/cli/data/Mixed.wepn, with this family list,
    // must give tests/cli/data/Mixed.normalized.wepn too.
    const std::string input = readFile(kFixtures + "/Mixed.wepn");
    const std::string expected = readFile(kFixtures + "/Mixed.normalized.wepn");
    ASSERT_EQ(editorSaves(input), expected);
    ASSERT_EQ(editorSaves(kNormalised), kNormalised);

    const std::string script = dir.write("Weapon/Mixed.wepn", input);
    const Outcome once = run({"normalize", "--data-dir", dataDir, script});
    EXPECT_EQ(once.status, 0) << once.err;
    EXPECT_EQ(once.out, expected);

    const Outcome inPlace = run({"normalize", "--in-place", "--data-dir", dataDir, script});
    EXPECT_EQ(inPlace.status, 0) << inPlace.err;
    EXPECT_EQ(inPlace.out, "");
    EXPECT_EQ(readFile(script), expected);
    // Normalising the normalised script gives the same bytes.
    EXPECT_EQ(run({"normalize", "--data-dir=" + dataDir, script}).out, expected);
}

TEST_F(CliTest, InPlaceTouchesOnlyTheScriptItRewrites)
{
    // Each row runs in a folder of its own holding `in` (Mixed.wepn) and `out` (its normalised
    // form); `@` in the expected messages stands for that folder. A `plain` row runs as the user
    // nobody when the test runs as root.
    const std::string longName = std::string(250, 'w') + ".wepn";
    const struct
    {
        const char *name;
        std::string setup;
        std::vector<std::string> arguments; // after normalize --in-place --data-dir DIR
        int status;
        std::string err;
        std::string after; // shell test that must hold afterwards
        bool plain = false;
    } rows[] = {
        {"FifoWithNewlineInName", "mkfifo \"$(printf 'n\\nl.wepn')\"", {"n\nl.wepn"}, 1,
         "'n\\nl.wepn':0: error: Cannot read 'n\\nl.wepn': not a regular file\n", "test -p \"$(printf 'n\\nl.wepn')\""},
        {"Symlink", "cp in a.wepn && ln -s ../Symlink/a.wepn l.wepn", {"l.wepn"}, 0, "",
         "test -L l.wepn && cmp a.wepn out"},
        {"HardLink", "cp in a.wepn && ln a.wepn h.wepn", {"a.wepn"}, 1,
         "a.wepn:0: error: Cannot save 'a.wepn': it has 2 hard links, which a rewrite would split "
         "(--split-hard-links allows it)\n",
         "cmp a.wepn in && cmp h.wepn in"},
        {"HardLinkSplit", "cp in a.wepn && ln a.wepn h.wepn", {"--split-hard-links", "a.wepn"}, 0, "",
         "cmp a.wepn out && cmp h.wepn in"},
        {"OwnerAndMode", "cp in a.wepn && chown 65534:65534 a.wepn 2>/dev/null; chmod 666 a.wepn && stat -c %u%g%a a.wepn >s",
         {"a.wepn"}, 0, "", "cmp a.wepn out && test \"$(stat -c %u%g%a a.wepn)\" = \"$(cat s)\""},
        {"LongName", "cp in " + longName, {longName}, 0, "", "cmp out " + longName},
        // Folders made before and after the one that cannot be listed: both are still rewritten.
        {"UnlistableFolder", "mkdir -p F/ok F/shut F/zz && cp in F/ok/a.wepn && cp in F/shut/b.wepn && cp in F/zz/c.wepn && "
                             "chmod 000 F/shut && (chown -R 65534:65534 F/ok F/zz 2>/dev/null; true)",
         {"F"}, 1, "F/shut: cannot list the folder: Permission denied\n",
         "cmp F/ok/a.wepn out && cmp F/zz/c.wepn out && cmp F/shut/b.wepn in",
         true},
    };
    for (const auto &row : rows) {
        const std::string folder = dir.path() + "/" + row.name;
        std::filesystem::create_directories(folder);
        const std::string shell = "cd " + shellQuoted(folder) + " && ";
        ASSERT_EQ(std::system((shell + "cp " + shellQuoted(kFixtures + "/Mixed.wepn") + " in && cp "
                               + shellQuoted(kFixtures + "/Mixed.normalized.wepn") + " out && " + row.setup)
                                  .c_str()),
                  0)
            << row.name;
        std::vector<std::string> arguments = {"normalize", "--in-place", "--data-dir", dataDir};
        arguments.insert(arguments.end(), row.arguments.begin(), row.arguments.end());
        const bool asNobody = row.plain && ::geteuid() == 0;
        const Outcome result = run(arguments, shell + (asNobody ? "setpriv --reuid=65534 --regid=65534 --clear-groups" : ""));
        EXPECT_EQ(result.status, row.status) << row.name;
        EXPECT_EQ(result.err, row.err) << row.name;
        EXPECT_EQ(std::system((shell + row.after).c_str()), 0) << row.name;
        std::system(("chmod -R 700 " + shellQuoted(folder)).c_str());
    }
}

TEST_F(CliTest, InterruptedRunsLeaveEveryScriptOldOrNew)
{
    // Programs that hold scripts open keep seeing the old bytes. Runs stopped at random points
    // leave each script with its complete old or new bytes; SIGINT and SIGTERM end with a message
    // and nothing left behind; a later run finishes the work and removes what a SIGKILL left.
    const std::string input = readFile(kFixtures + "/Mixed.wepn");
    const std::string expected = readFile(kFixtures + "/Mixed.normalized.wepn");
    std::vector<int> handles;
    for (int i = 0; i < 400; ++i) {
        const std::string script = dir.write("K/" + std::to_string(i) + ".wepn", input);
        if (i % 10 == 0)
            handles.push_back(::open(script.c_str(), O_RDONLY));
    }
    const std::vector<std::string> arguments = {"normalize", "--in-place", "--data-dir", dataDir, dir.path() + "/K"};
    std::mt19937 random(std::random_device{}());
    for (const std::string signal : {"KILL", "TERM", "INT", "KILL", "TERM", "INT"}) {
        const auto delay = std::to_string(std::uniform_int_distribution<>(1, 80)(random) / 1000.0);
        const Outcome stopped = run(arguments, "timeout -s " + signal + ' ' + delay);
        for (int i = 0; i < 400; ++i) {
            const std::string bytes = readFile(dir.path() + "/K/" + std::to_string(i) + ".wepn");
            ASSERT_TRUE(bytes == input || bytes == expected) << i << " after SIG" << signal << " at " << delay;
        }
        if (signal != "KILL" && !stopped.err.empty()) {
            EXPECT_EQ(stopped.err.rfind("vantorel-cli: stopped by SIG" + signal + " after ", 0), 0u) << stopped.err;
            EXPECT_EQ(std::count(stopped.err.begin(), stopped.err.end(), '\n'), 1) << stopped.err;
            EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path() + "/K"), {}), 400);
        }
    }
    const Outcome finished = run(arguments);
    EXPECT_EQ(finished.status, 0) << finished.err;
    for (int i = 0; i < 400; ++i)
        ASSERT_EQ(readFile(dir.path() + "/K/" + std::to_string(i) + ".wepn"), expected) << i;
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path() + "/K"), {}), 400);
    for (const int handle : handles) {
        std::string old(input.size() + 1, '\0');
        EXPECT_EQ(::pread(handle, old.data(), old.size(), 0), static_cast<ssize_t>(input.size()));
        EXPECT_EQ(old.substr(0, input.size()), input);
        ::close(handle);
    }
}

TEST_F(CliTest, InPlaceFailureLeavesTheFileAsItWas)
{
    // A leftover line longer than the file size limit below, which holds for root too: writing
    // the temporary file fails, while the short messages still reach standard error.
    const std::string longLine = "print(\"" + std::string(8000, 'x') + "\")\r\n";
    const std::string original = "-- keep me\r\n" + kNormalised + longLine;
    const std::string script = dir.write("Weapon/a.wepn", original);
    const std::string other = dir.write("Weapon/b.wepn", "-- me too\r\n" + kNormalised + longLine);
    const Outcome result =
        run({"normalize", "--in-place", "--data-dir", dataDir, script, other}, "ulimit -f 8;");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 2) << result.err;
    EXPECT_EQ(result.err.rfind(script + ":0: error: Cannot save", 0), 0u) << result.err;
    EXPECT_EQ(readFile(script), original);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path() + "/Weapon"), {}), 2);
}

} // namespace
