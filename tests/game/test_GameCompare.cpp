// SPDX-License-Identifier: MIT
// Walks tests/data/compare: what the game reads differently in NAME.saved.wepn than in
// NAME.opened.wepn must be exactly NAME.changes, one "LINE: message" a line.
#include "AtomicFile.h"
#include "GameCompare.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

TEST(GameCompare, ReportsExactlyWhatTheFilesList)
{
    const std::filesystem::path folder = std::filesystem::path(VANTOREL_SOURCE_DIR) / "tests/data/compare";
    for (const auto &entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() != ".changes")
            continue;
        const std::string name = (folder / entry.path().stem()).string();
        std::string opened, saved, expected, found;
        ASSERT_FALSE(AtomicFile::read(name + ".opened.wepn", opened) || AtomicFile::read(name + ".saved.wepn", saved)
                     || AtomicFile::read(entry.path().string(), expected));
        for (const GameChange &change : SaveChanges(opened, saved))
            found += std::to_string(change.line) + ": " + change.message + '\n';
        EXPECT_EQ(found, expected) << name;
    }
}

} // namespace
