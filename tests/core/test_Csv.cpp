// SPDX-License-Identifier: MIT
#include "Csv.h"

#include <gtest/gtest.h>

using Fields = std::vector<std::string>;

TEST(CsvTest, WritesRecordsWithCrLfAndQuotesOnlyWhereNeeded)
{
    std::string out;
    Csv::appendRecord(out, {"Path", "a,b", "say \"hi\"", "two\r\nlines", " padded", "Bullet ", "", "1E-05"});
    Csv::appendRecord(out, {""});
    EXPECT_EQ(out, "Path,\"a,b\",\"say \"\"hi\"\"\",\"two\r\nlines\",\" padded\",\"Bullet \",,1E-05\r\n\r\n");
}

TEST(CsvTest, ReadsWhatSpreadsheetsWrite)
{
    const std::pair<const char *, std::vector<Fields>> rows[] = {
        {"a,b\r\n1,2\r\n", {{"a", "b"}, {"1", "2"}}},
        {"\xEF\xBB\xBF" "a,b\n1,2", {{"a", "b"}, {"1", "2"}}},
        {"a\r1\r", {{"a"}, {"1"}}},
        {"a,\"b,c\"\r\n\"1\",\"2\"\r\n\"x\"\r\"y\"", {{"a", "b,c"}, {"1", "2"}, {"x"}, {"y"}}}, // quoted last
        {"\"x,y\",\"q\"\"q\",\"l1\nl2\"\n", {{"x,y", "q\"q", "l1\nl2"}}},
        {"a,,\n\n,\n", {{"a", "", ""}, {"", ""}}},
        {"say \"hi\",2\n", {{"say \"hi\"", "2"}}},
        {"\"\"\n", {}},
    };
    for (const auto &[text, records] : rows) {
        const Csv::Table table = Csv::parse(text);
        EXPECT_EQ(table.error, "") << text;
        std::vector<Fields> got;
        for (const Csv::Record &record : table.records)
            got.push_back(record.fields);
        EXPECT_EQ(got, records) << text;
    }
}

TEST(CsvTest, NamesTheLinesOfRecordsAndErrors)
{
    const Csv::Table table = Csv::parse("a\r\"multi\r\nline\rthree\"\n\nb\n"); // a CR alone ends a line too
    ASSERT_EQ(table.records.size(), 3u);
    EXPECT_EQ(table.records[1].line, 2);
    EXPECT_EQ(table.records[2].line, 6);

    const std::pair<const char *, std::pair<int, const char *>> errors[] = {
        {"a\nb,\"open\n\n", {2, "a quoted field is not closed"}},
        {"a\n\"x\"y,1\n", {2, "text after the closing quote of a field"}},
    };
    for (const auto &[text, error] : errors) {
        const Csv::Table bad = Csv::parse(text);
        EXPECT_EQ(std::make_pair(bad.errorLine, bad.error), std::make_pair(error.first, std::string(error.second)));
    }
}

TEST(CsvTest, WrittenRecordsReadBack)
{
    const std::vector<Fields> records = {{"Path", "\"", ",", "\r", "\n", " x ", "é"}, {"", "", ""}, {"last"}};
    std::string text;
    for (const Fields &fields : records)
        Csv::appendRecord(text, fields);
    const Csv::Table table = Csv::parse(text);
    ASSERT_EQ(table.records.size(), 3u);
    for (std::size_t i = 0; i < records.size(); ++i)
        EXPECT_EQ(table.records[i].fields, records[i]);
}

TEST(CsvTest, ColumnLettersAsSpreadsheetsShowThem)
{
    const std::pair<std::size_t, const char *> rows[] = {{0, "A"}, {25, "Z"}, {26, "AA"}, {51, "AZ"}, {52, "BA"}, {701, "ZZ"}, {702, "AAA"}};
    for (const auto &[index, letters] : rows)
        EXPECT_EQ(Csv::columnLetters(index), letters);
}
