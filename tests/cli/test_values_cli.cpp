// SPDX-License-Identifier: MIT
// table, apply, set, diff and show run as a mod author runs them, on copies of the test scripts.
#include "TempDir.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

std::string readFile(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

struct Outcome
{
    int status = -1;
    std::string out;
    std::string err;
};

const std::string kData = VANTOREL_SOURCE_DIR "/tests/data/";

// A data folder with the family list, and a mod folder with copies of two test scripts, as
// relative paths from the folder the program runs in.
class ValuesCliTest : public testing::Test
{
protected:
    ValuesCliTest()
    {
        dir.write("Data/Scripts/familylist.lua", readFile(kData + "values/familylist.lua"));
        std::filesystem::create_directories(dir.path() + "/Data/Scripts/Weaponfire");
        for (const char *name : {"stock.wepn", "flak.wepn"})
            dir.write(std::string("Mod/") + name, readFile(kData + "game/" + name));
    }

    Outcome run(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin() + 1, {"--data-dir", "Data"});
        std::string command = "cd '" + dir.path() + "' && env XDG_CONFIG_HOME=config " VANTOREL_CLI;
        for (const std::string &argument : arguments)
            command += " '" + argument + "'";
        command += " >out 2>err";
        const int status = std::system(command.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, file("out"), file("err")};
    }

    std::string file(const std::string &relative) const { return readFile(dir.path() + "/" + relative); }

    // The table's lines without the last cell, the fingerprint, and without the CR of CR LF.
    static std::string withoutFingerprints(const std::string &table)
    {
        std::string out;
        std::istringstream lines(table);
        for (std::string line; std::getline(lines, line);)
            out += line.substr(0, line.rfind(',') + 1) + (line.ends_with('\r') ? "\n" : "(no CR)\n");
        return out;
    }

    void copyMod(const std::string &to) const
    {
        std::filesystem::copy(dir.path() + "/Mod", dir.path() + "/" + to, std::filesystem::copy_options::recursive);
    }

    TempDir dir;
};

} // namespace

TEST_F(ValuesCliTest, TableThenApplyWritesOnlyTheChangedCells)
{
    const Outcome table = run({"table", "-o", "t.csv", "Mod"});
    ASSERT_EQ(table.status, 0) << table.err;
    EXPECT_EQ(table.out + table.err, "");
    const std::string csv = file("t.csv");
    EXPECT_EQ(withoutFingerprints(csv), readFile(kData + "values/table.csv"));
    EXPECT_NE(csv.find(",fnv1a64:"), std::string::npos);
    EXPECT_EQ(run({"table", "Mod/stock.wepn", "Mod/flak.wepn"}).out, csv);

    // Unchanged, and as a spreadsheet rewrites numbers, nothing is written.
    copyMod("Before");
    struct stat before {}, after {};
    ::stat((dir.path() + "/Mod/stock.wepn").c_str(), &before);
    std::string respelled = csv;
    respelled.replace(respelled.find(",0.1,"), 5, ",0.10,").replace(respelled.find(",2200,"), 6, ",2.2E3,");
    dir.write("same.csv", respelled);
    const Outcome same = run({"apply", "same.csv"});
    EXPECT_EQ(same.status, 0) << same.err;
    EXPECT_EQ(same.out + same.err, "");
    ::stat((dir.path() + "/Mod/stock.wepn").c_str(), &after);
    EXPECT_EQ(before.st_ino, after.st_ino);

    // Cells changed in any column order, some columns dropped.
    dir.write("edit.csv", "Beam Pass-Thru Health,Path,Penetration: Alpha,Accuracy: Corvette,Result 1 Target\r\n"
                          "2200,Mod/stock.wepn,0.5,,Self\r\n2.5,Mod/flak.wepn,,0.25,\r\n");
    const std::string changes = "Mod/stock.wepn:9: Penetration: Alpha (none) -> 0.5\n"
                                "Mod/stock.wepn:13: Accuracy: Corvette 0.2 -> (none)\n"
                                "Mod/stock.wepn:13: Always Causes Damage: Corvette 0 -> (none)\n"
                                "Mod/stock.wepn:4: Result 1 Target Target -> Self\n";
    // A value's line is where it stands after the change, or stood before, when it is gone.
    const std::string flakChanges = "Mod/flak.wepn:14: Beam Pass-Thru Health 0 -> 2\n"
                                    "Mod/flak.wepn:18: Penetration: Alpha 1.5 -> (none)\n"
                                    "Mod/flak.wepn:20: Accuracy: Corvette (none) -> 0.25\n"
                                    "Mod/flak.wepn:20: Always Causes Damage: Corvette (none) -> 0\n";
    const Outcome dry = run({"apply", "--dry-run", "edit.csv"});
    EXPECT_EQ(dry.out, changes + flakChanges);
    EXPECT_EQ(run({"diff", "Before", "Mod"}).status, 0);
    const Outcome applied = run({"apply", "edit.csv"});
    EXPECT_EQ(applied.status, 0) << applied.err;
    EXPECT_EQ(applied.out, dry.out);
    EXPECT_EQ(run({"apply", "edit.csv"}).out, "");

    // Exactly those cells changed in the table, and diff lists exactly those changes.
    EXPECT_EQ(withoutFingerprints(run({"table", "Mod"}).out), readFile(kData + "values/table.edited.csv"));
    const Outcome diff = run({"diff", "Before", "Mod"});
    EXPECT_EQ(diff.status, 1);
    EXPECT_EQ(diff.out, "Mod/flak.wepn:14: Beam Pass-Thru Health 0 -> 2\nMod/flak.wepn:16: Penetration: Alpha 1.5 -> (none)\n"
                        "Mod/flak.wepn:20: Accuracy: Corvette (none) -> 0.25\n"
                        "Mod/flak.wepn:20: Always Causes Damage: Corvette (none) -> 0\n"
                        "Mod/stock.wepn:9: Penetration: Alpha (none) -> 0.5\n"
                        "Mod/stock.wepn:11: Accuracy: Corvette 0.2 -> (none)\n"
                        "Mod/stock.wepn:11: Always Causes Damage: Corvette 0 -> (none)\n"
                        "Mod/stock.wepn:4: Result 1 Target Target -> Self\n");

    // The same edits from the command line give the same bytes.
    const Outcome set = run({"set", "Before/stock.wepn", "Penetration: Alpha=0.5", "Accuracy: Corvette=", "Result 1 Target=Self"});
    EXPECT_EQ(set.status, 0) << set.err;
    const Outcome setFlak = run({"set", "Before/flak.wepn", "Beam Pass-Thru Health+=2.5", "Penetration: Alpha=",
                                 "Accuracy: Corvette=0.25"});
    EXPECT_EQ(setFlak.status, 0) << setFlak.err;
    for (const char *name : {"stock.wepn", "flak.wepn"})
        EXPECT_EQ(file(std::string("Before/") + name), file(std::string("Mod/") + name));
    const std::string shown = run({"show", "Mod/flak.wepn"}).out;
    EXPECT_EQ(shown.substr(0, 55), "Weapon Type = AnimatedTurret\nWeapon Fire Type = Bullet\n");
    EXPECT_NE(shown.find("\nPenetration: Beta = 0.5\nAccuracy: Corvette = 0.25\n"), std::string::npos);
}

TEST_F(ValuesCliTest, BadTablesAndArgumentsWriteNothingForTheScriptsTheyConcern)
{
    copyMod("Before");
    const std::string csv = run({"table", "Mod"}).out;
    std::string unknown = csv;
    unknown.replace(unknown.find("Firing Range"), 12, "Firing Rang");
    dir.write("unknown.csv", unknown);
    dir.write("bad.csv", "Path,Firing Range,Fire Axis,Accuracy: Beta,Result 1 Minimum Effect\r\n"
                         "Mod/flak.wepn,far,99999,1.5,\r\nMod/stock.wepn,1234,0,,35\r\n\"Mod/stock.wepn\r\n");
    dir.write("half.csv", "Path,Result 3 Condition,Result 1 Spawned FX\r\nMod/stock.wepn,Hit,Boom\r\n");
    const std::pair<std::vector<std::string>, Outcome> rows[] = {
        {{"apply", "unknown.csv"}, {1, "", "unknown.csv:1: error: column G (Firing Rang): no value has this name; nothing was written\n"}},
        {{"apply", "bad.csv"}, {1, "", "bad.csv:4: error: a quoted field is not closed; nothing was written\n"}},
        {{"apply", "half.csv"},
         {1, "", "half.csv:2: error: column C (Result 1 Spawned FX): a spawned effect needs the effect SpawnWeaponFire\n"
                 "half.csv:2: error: Result 3 Minimum Effect: a number is needed, as the result has other cells\n"
                 "half.csv:2: error: Result 3 Maximum Effect: a number is needed, as the result has other cells\n"}},
        {{"set", "Mod", "Weapon Type*=2"},
         {2, "", "vantorel-cli: 'Weapon Type*=2': Weapon Type holds a text, which cannot be computed with (see vantorel-cli --help)\n"}},
        {{"set", "Mod", "Range=2"}, {2, "", "vantorel-cli: 'Range=2': no value is named 'Range' (see vantorel-cli --help)\n"}},
        {{"set", "Mod", "Firing Range=", "--where", "Weapon Fire Type=Bullet"},
         {1, "", "Mod/flak.wepn:8: error: Firing Range: a number is needed here\n"}},
    };
    for (const auto &[arguments, outcome] : rows) {
        const Outcome got = run(arguments);
        EXPECT_EQ(std::tie(got.status, got.out, got.err), std::tie(outcome.status, outcome.out, outcome.err)) << arguments[1];
    }
    EXPECT_EQ(run({"diff", "Before", "Mod"}).out, "");

    // A bad cell keeps its script as it is; the other rows are still written.
    std::string bad = file("bad.csv");
    dir.write("bad.csv", bad.substr(0, bad.rfind("\"Mod")));
    const Outcome partly = run({"apply", "bad.csv"});
    EXPECT_EQ(partly.status, 1);
    EXPECT_EQ(partly.out, "Mod/stock.wepn:2: Firing Range 4410 -> 1234\n");
    EXPECT_EQ(partly.err, "bad.csv:2: error: column B (Firing Range): 'far' is not a number\n"
                          "bad.csv:2: error: column C (Fire Axis): '99999' is beyond -32768 to 32767\n"
                          "bad.csv:2: error: column D (Accuracy: Beta): '1.5' is outside 0 to 1\n");
    EXPECT_EQ(file("Mod/flak.wepn"), file("Before/flak.wepn"));

    // The first table is older than that change: it would undo it.
    dir.write("old.csv", csv);
    const Outcome stale = run({"apply", "old.csv"});
    EXPECT_EQ(stale.status, 1);
    EXPECT_EQ(stale.out, "");
    EXPECT_EQ(stale.err, "old.csv:3: error: Mod/stock.wepn changed since the table was made, and the table would undo "
                         "that; apply --force writes the table's values anyway\n");
    EXPECT_EQ(run({"apply", "--force", "old.csv"}).out, "Mod/stock.wepn:2: Firing Range 1234 -> 4410\n");
    EXPECT_EQ(run({"diff", "Before", "Mod"}).status, 0);
}

TEST_F(ValuesCliTest, TextsAreLatin1InScriptsAndUtf8InTheTable)
{
    std::string script = file("Mod/stock.wepn");
    script.replace(script.find("Beam_Ion"), 8, "Beam_\xE9");
    dir.write("Latin/gun.wepn", script);
    // A script the game cannot read gets no row; the others are still written.
    dir.write("Latin/broken.wepn", "setAngles(");
    const Outcome table = run({"table", "Latin"});
    EXPECT_EQ(table.status, 1);
    EXPECT_EQ(table.err, "Latin/broken.wepn:1: error: unexpected symbol near <eof>\n");
    std::filesystem::remove(dir.path() + "/Latin/broken.wepn");
    const std::string csv = table.out;
    EXPECT_NE(csv.find("\r\nLatin/gun.wepn,Gimble,InstantHit,Beam_\xC3\xA9,"), std::string::npos);
    dir.write("latin.csv", csv);
    EXPECT_EQ(run({"apply", "latin.csv"}).out, "");
    dir.write("other.csv", "Path,Weapon Effects File\r\nLatin/gun.wepn,Beam_\xE9\r\nLatin/gun.wepn\r\n");
    EXPECT_EQ(run({"apply", "other.csv"}).err,
              "other.csv:2: error: Latin/gun.wepn has more than one row; it was not changed\n"
              "other.csv:3: error: Latin/gun.wepn has more than one row; it was not changed\n");
    dir.write("other.csv", "Path,Weapon Effects File\r\nLatin/gun.wepn,Beam_\xE9\r\n");
    EXPECT_EQ(run({"apply", "other.csv"}).err,
              "other.csv:2: error: column B (Weapon Effects File): the text is no UTF-8 (save the table as UTF-8) or "
              "holds a character beyond Latin-1, which a script cannot hold\n");
    EXPECT_EQ(file("Latin/gun.wepn"), script);

    // A script with another hard link is left alone, as by normalize --in-place.
    std::filesystem::create_hard_link(dir.path() + "/Latin/gun.wepn", dir.path() + "/link.wepn");
    const Outcome linked = run({"set", "Latin", "Firing Range=1"});
    EXPECT_EQ(linked.out, "");
    EXPECT_EQ(linked.err, "Latin/gun.wepn:0: error: Cannot save 'Latin/gun.wepn': it has 2 hard links, which a rewrite "
                          "would split\n");
    EXPECT_EQ(file("link.wepn"), script);
}
