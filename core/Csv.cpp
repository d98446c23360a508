// SPDX-License-Identifier: MIT
#include "Csv.h"

namespace Csv {

void appendRecord(std::string &out, const std::vector<std::string> &fields)
{
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (i > 0)
            out += ',';
        const std::string &field = fields[i];
        // Spreadsheets trim unquoted blanks at the ends of a field, so those are quoted too.
        const bool quote = field.find_first_of(",\"\r\n") != std::string::npos
                           || (!field.empty() && (field.front() == ' ' || field.back() == ' '));
        if (!quote) {
            out += field;
            continue;
        }
        out += '"';
        for (const char c : field) {
            if (c == '"')
                out += '"';
            out += c;
        }
        out += '"';
    }
    out += "\r\n";
}

Table parse(std::string_view text)
{
    Table table;
    if (text.starts_with("\xEF\xBB\xBF"))
        text.remove_prefix(3);
    int line = 1;
    std::size_t i = 0;
    const auto lineEnd = [&](std::size_t at) {
        return text[at] == '\r' && at + 1 < text.size() && text[at + 1] == '\n' ? 2 : 1;
    };
    while (i < text.size()) {
        Record record;
        record.line = line;
        std::string field;
        bool ended = false;
        while (!ended) {
            if (i < text.size() && text[i] == '"') {
                const int opened = line;
                ++i;
                for (;;) {
                    if (i == text.size()) {
                        table.errorLine = opened;
                        table.error = "a quoted field is not closed";
                        return table;
                    }
                    if (text[i] == '"') {
                        if (i + 1 < text.size() && text[i + 1] == '"') {
                            field += '"';
                            i += 2;
                            continue;
                        }
                        ++i;
                        break;
                    }
                    if (text[i] == '\n' || (text[i] == '\r' && lineEnd(i) == 1))
                        ++line;
                    field += text[i++];
                }
                if (i < text.size() && text[i] != ',' && text[i] != '\r' && text[i] != '\n') {
                    table.errorLine = line;
                    table.error = "text after the closing quote of a field";
                    return table;
                }
            } else {
                while (i < text.size() && text[i] != ',' && text[i] != '\r' && text[i] != '\n')
                    field += text[i++];
            }
            record.fields.push_back(std::move(field));
            field.clear();
            if (i < text.size() && text[i] == ',') {
                ++i;
                continue;
            }
            if (i < text.size()) {
                i += static_cast<std::size_t>(lineEnd(i));
                ++line;
            }
            ended = true;
        }
        if (record.fields.size() > 1 || !record.fields.front().empty())
            table.records.push_back(std::move(record));
    }
    return table;
}

std::string columnLetters(std::size_t index)
{
    std::string letters;
    for (++index; index > 0; index = (index - 1) / 26)
        letters.insert(letters.begin(), static_cast<char>('A' + (index - 1) % 26));
    return letters;
}

} // namespace Csv
