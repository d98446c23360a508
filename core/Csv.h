// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

// Comma-separated tables as RFC 4180 defines them: records end with CR LF, a field holding a comma,
// a double quote, a line break or a blank at either end is quoted, and a quote inside is doubled.
// The reader also takes what spreadsheets write: LF or CR line ends, a UTF-8 byte-order mark at the
// start, a last record without a line end.
namespace Csv {

// One record and its line end appended to out.
void appendRecord(std::string &out, const std::vector<std::string> &fields);

struct Record
{
    int line = 0; // 1-based line of the file where the record starts
    std::vector<std::string> fields;
};

struct Table
{
    std::vector<Record> records;
    // Empty when the whole text was read; else the line and what is wrong there.
    int errorLine = 0;
    std::string error;
};

// Every record of the text, blank lines left out.
Table parse(std::string_view text);

// The spreadsheet's name of a column counted from 0: A, B, ..., Z, AA, AB, ...
std::string columnLetters(std::size_t index);

} // namespace Csv
