// SPDX-License-Identifier: MIT
#include "EditorReading.h"
#include "FamilyList.h"
#include "ScriptWriter.h"
#include "TempDir.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
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
    Outcome run(const std::vector<std::string> &arguments, const std::string &prefix = {},
                const std::string &program = VANTOREL_CLI) const
    {
        std::string command = prefix + " env XDG_CONFIG_HOME=" + shellQuoted(dir.path() + "/config") + ' '
                              + shellQuoted(program);
        for (const std::string &argument : arguments)
            command += ' ' + shellQuoted(argument);
        command += " >" + shellQuoted(dir.path() + "/out") + " 2>" + shellQuoted(dir.path() + "/err");
        const int status = std::system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, readFile(dir.path() + "/out"),
                readFile(dir.path() + "/err")};
    }

    Outcome check(const std::string &file) const { return run({"check", "--data-dir", dataDir, file}); }

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

    // Mixed.wepn is no Lua the game can run: --in-place leaves it alone unless told otherwise.
    const Outcome refused = run({"normalize", "--in-place", "--data-dir", dataDir, script});
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.err, script + ":12: error: left as it is: the game cannot run this script (unexpected symbol "
                                    "near '}'), so what a save changes is not known (--allow-changes rewrites it all "
                                    "the same)\n");
    EXPECT_EQ(readFile(script), input);
    const Outcome inPlace = run({"normalize", "--in-place", "--allow-changes", "--data-dir", dataDir, script});
    EXPECT_EQ(inPlace.status, 0) << inPlace.err;
    EXPECT_EQ(inPlace.out, "");
    EXPECT_EQ(readFile(script), expected);
    // Normalising the normalised script gives the same bytes.
    EXPECT_EQ(run({"normalize", "--data-dir=" + dataDir, script}).out, expected);
}

TEST_F(CliTest, FolderArgumentTakesEveryWepnBelowItSortedByPath)
{
    const std::string untouched = "not a script";
    dir.write("Mods/b.wepn", kNormalised);
    dir.write("Mods/A/z.WEPN", "-- first\r\n" + kNormalised);
    dir.write("Mods/B/y.wepn", "-- second\r\n" + kNormalised);
    dir.write("Mods/notes.txt", untouched);
    dir.write("Mods/c.Wepn", "-- third\r\n" + kNormalised);

    const Outcome checked = check(dir.path() + "/Mods");
    EXPECT_EQ(checked.status, 0) << checked.err;
    EXPECT_EQ(checked.out, dir.path() + "/Mods/A/z.WEPN:1: warning: comment: a save drops it\n" + dir.path()
                               + "/Mods/B/y.wepn:1: warning: comment: a save drops it\n" + dir.path()
                               + "/Mods/c.Wepn:1: warning: comment: a save drops it\n");

    // An already normalised script keeps its file and modification time.
    struct stat before {}, after {};
    ASSERT_EQ(::stat((dir.path() + "/Mods/b.wepn").c_str(), &before), 0);
    const Outcome normalised = run({"normalize", "--in-place", "--data-dir", dataDir, dir.path() + "/Mods"});
    EXPECT_EQ(normalised.status, 0) << normalised.err;
    ASSERT_EQ(::stat((dir.path() + "/Mods/b.wepn").c_str(), &after), 0);
    EXPECT_EQ(after.st_ino, before.st_ino);
    EXPECT_EQ(after.st_mtim.tv_nsec, before.st_mtim.tv_nsec);
    EXPECT_EQ(readFile(dir.path() + "/Mods/A/z.WEPN"), kNormalised);
    EXPECT_EQ(readFile(dir.path() + "/Mods/c.Wepn"), kNormalised);
    EXPECT_EQ(readFile(dir.path() + "/Mods/notes.txt"), untouched);
    // Only the scripts are left: no temporary files.
    EXPECT_EQ(std::distance(std::filesystem::recursive_directory_iterator(dir.path() + "/Mods"), {}), 7);
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
        std::vector<std::string> arguments = {"normalize", "--in-place", "--allow-changes", "--data-dir", dataDir};
        arguments.insert(arguments.end(), row.arguments.begin(), row.arguments.end());
        const bool asNobody = row.plain && ::geteuid() == 0;
        // The user nobody may not reach the build folder (a checkout in a home folder of mode 0700):
        // it runs a copy of the tool in this test's own folder.
        std::string program = VANTOREL_CLI;
        if (asNobody) {
            program = dir.path() + "/vantorel-cli";
            std::filesystem::copy_file(VANTOREL_CLI, program, std::filesystem::copy_options::skip_existing);
        }
        const Outcome result = run(arguments, shell + (asNobody ? "setpriv --reuid=65534 --regid=65534 --clear-groups" : ""),
                                   program);
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
    const std::vector<std::string> arguments = {"normalize", "--in-place", "--allow-changes", "--data-dir", dataDir,
                                                dir.path() + "/K"};
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

TEST_F(CliTest, ExitStatusAndMessages)
{
    const std::string a = dir.write("a.wepn", kNormalised);
    const std::string b = dir.write("b.wepn", kNormalised);
    const std::string broken = dir.path() + "/Broken";
    dir.write("Broken/Scripts/familylist.lua", "armourFamily = {\r\n{ name = Alpha },\r\n");
    std::filesystem::create_directories(broken + "/Scripts/Weaponfire");
    struct Row
    {
        std::vector<std::string> arguments;
        int status;
        std::string err; // start of standard error
    };
    const std::vector<Row> rows = {
        {{"--version"}, 0, ""},
        {{"fix", a}, 2, "vantorel-cli: unknown command 'fix'"},
        {{"check", "--in-place", a}, 2, "vantorel-cli: unknown option '--in-place' for check"},
        {{"normalize", "--in-place", "--sync=fast", a}, 2, "vantorel-cli: --sync is each, shared or auto, not 'fast'"},
        {{"check", "--sync=each", a}, 2, "vantorel-cli: unknown option '--sync=each' for check"},
        {{"normalize", "--data-dir", dataDir}, 2, "vantorel-cli: normalize needs at least one FILE"},
        {{"normalize", "--data-dir", dataDir, a, b}, 2, "vantorel-cli: normalize without --in-place writes one"},
        {{"normalize", "--data-dir", dataDir, dir.path()}, 2, "vantorel-cli: normalize without --in-place writes one"},
        {{"normalize", "--data-dir", dataDir, dir.path() + "/missing.wepn"}, 1, dir.path() + "/missing.wepn:0: error: "},
        {{"check", "--data-dir", dataDir, a, dir.path() + "/missing.wepn", b}, 1, dir.path() + "/missing.wepn:0: error"},
        {{"check", "--data-dir", dir.path() + "/nowhere", a}, 1, std::string("vantorel-cli: The folder '") + dir.path()
                                                                     + "/nowhere/Scripts/Weaponfire' does not exist."},
        // Without a stored setting the default directory is used, which does not exist here.
        {{"check", a}, 1, "vantorel-cli: The folder 'C:\\Program Files\\Quellbrook\\Korvath\\Data/Scripts/Weaponfire'"},
        {{"check", "--data-dir", broken, a}, 1, "vantorel-cli: " + broken + "/Scripts/familylist.lua:2: the armour family "
                                                 "line has no double quote around its name: { name = Alpha },\n"},
    };
    for (const Row &row : rows) {
        const Outcome result = run(row.arguments);
        EXPECT_EQ(result.status, row.status) << testing::PrintToString(row.arguments) << result.err;
        EXPECT_EQ(result.err.substr(0, row.err.size()), row.err) << testing::PrintToString(row.arguments);
        if (!row.err.empty()) {
            EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
        }
    }
    EXPECT_EQ(run({"--version"}).out, "vantorel-cli 1.4.3\n");
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

TEST_F(CliTest, StoredSettingsGiveTheDataDirectoryAndTheReading)
{
    const std::string a = dir.write("a.wepn", "-- note\r\n" + kNormalised);
    const std::string store = dir.write("config/Tarnwick/Tarnwick.conf", "[Directories]\nDecompiled_Data=" + dataDir + "\n");
    const Outcome stored = run({"check", a});
    EXPECT_EQ(stored.status, 0) << stored.err;
    EXPECT_EQ(stored.out, a + ":1: warning: comment: a save drops it\n");

    // Read as the game does, a save keeps the comment; a script Lua cannot run says where that
    // reading came from, once, on standard output.
    dir.write("config/Tarnwick/Tarnwick.conf", "[Directories]\nDecompiled_Data=" + dataDir
                                                   + "\n[Reading]\nReadScriptsAsTheGameDoes=true\n");
    const std::string broken = dir.write("b.wepn", "setAngles(");
    const Outcome game = run({"check", a, broken});
    EXPECT_EQ(game.status, 1);
    EXPECT_EQ(game.out, broken + ":1: error: unexpected symbol near <eof> (read as the game does, as the editor's "
                                 "stored setting in " + store + " says; --read=editor reads the editor's dialect)\n");
    EXPECT_EQ(game.err, "");
    EXPECT_EQ(run({"check", "--read=editor", a}).out, stored.out);
}

} // namespace

TEST_F(CliTest, GameReadingWritesTheScriptsOwnBytesAndChecksNothingElse)
{
    const std::string stock = readFile(VANTOREL_SOURCE_DIR "/tests/data/game/stock.wepn");
    const std::string script = dir.write("Weapon/stock.wepn", stock);
    const std::string broken = dir.write("Weapon/broken.wepn", "setAngles(NewWeaponType,1,2,3,4,5)\nsetAngles(");
    const Outcome normalised = run({"normalize", "--read=game", "--data-dir", dataDir, script});
    EXPECT_EQ(normalised.status, 0) << normalised.err;
    EXPECT_EQ(normalised.out, stock);
    const Outcome checked = run({"check", "--read=game", "--data-dir", dataDir, script, broken});
    EXPECT_EQ(checked.status, 1);
    EXPECT_EQ(checked.out, broken + ":2: error: unexpected symbol near <eof>\n");
    EXPECT_EQ(run({"check", "--read=lua", "--data-dir", dataDir, script}).err,
              "vantorel-cli: unknown option '--read=lua' for check (see vantorel-cli --help)\n");
}
