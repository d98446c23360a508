// SPDX-License-Identifier: MIT
#include "FamilyList.h"

#include "TextPieces.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

namespace {

using TextPieces::containsNoCase;

struct Section
{
    std::string_view what; // for messages
    std::string_view startWord;
    std::string_view endWord;
};

constexpr Section kArmourSection{"armour family", "armourfamily", "unitcapsfamily"};
constexpr Section kAttackSection{"attack family", "attackfamily", "dockfamily"};

std::string location(std::string_view fileName, std::size_t lineNumber)
{
    return std::string(fileName) + ':' + std::to_string(lineNumber) + ": ";
}

// Reads one section from the top of the file, as the editor reads it: the start line counts as a
// family line too, the end line does not. Gives the error message, or nothing.
std::string readSection(const std::vector<std::string> &lines, const Section &section,
                        std::string_view fileName, std::vector<std::string> &families)
{
    const auto start = std::find_if(lines.begin(), lines.end(), [&](const std::string &line) {
        return containsNoCase(line, section.startWord);
    });
    // An empty file still reports line 1, where the word was looked for.
    const std::size_t lastLine = std::max<std::size_t>(lines.size(), 1);
    if (start == lines.end())
        return location(fileName, lastLine) + "the file ends before a line holding \""
               + std::string(section.startWord) + "\", which starts the " + std::string(section.what)
               + " section";

    for (auto it = start; it != lines.end(); ++it) {
        const std::string &line = *it;
        if (containsNoCase(line, section.endWord))
            return {};
        if (line.find('=') == std::string::npos || !containsNoCase(line, "name"))
            continue;
        const std::size_t open = line.find('"');
        if (open == std::string::npos)
            return location(fileName, static_cast<std::size_t>(it - lines.begin()) + 1)
                   + "the " + std::string(section.what) + " line has no double quote around its name: "
                   + line;
        const std::size_t close = line.find('"', open + 1);
        families.push_back(line.substr(open + 1, close == std::string::npos ? std::string::npos
                                                                              : close - open - 1));
    }
    return location(fileName, lastLine) + "the file ends before a line holding \""
           + std::string(section.endWord) + "\", which ends the " + std::string(section.what)
           + " section begun on line " + std::to_string(static_cast<std::size_t>(start - lines.begin()) + 1);
}

} // namespace

FamilyList ReadFamilyList(std::string_view bytes, std::string_view fileName)
{
    const std::vector<std::string> lines = TextPieces::splitLines(bytes);
    FamilyList list;
    list.error = readSection(lines, kArmourSection, fileName, list.armourFamilies);
    if (list.ok())
        list.error = readSection(lines, kAttackSection, fileName, list.attackFamilies);
    return list;
}

FamilyList ReadFamilyListFile(const std::string &path)
{
    const auto cannotRead = [&](int error) {
        FamilyList list;
        list.error = path + ": cannot read the family list: " + std::strerror(error);
        return list;
    };
    struct Closer
    {
        void operator()(std::FILE *f) const { std::fclose(f); }
    };
    const std::unique_ptr<std::FILE, Closer> file(std::fopen(path.c_str(), "rb"));
    if (!file)
        return cannotRead(errno);
    std::string bytes;
    char buffer[65536];
    std::size_t got = 0;
    while ((got = std::fread(buffer, 1, sizeof buffer, file.get())) > 0)
        bytes.append(buffer, got);
    if (std::ferror(file.get()))
        return cannotRead(errno);
    return ReadFamilyList(bytes, path);
}
