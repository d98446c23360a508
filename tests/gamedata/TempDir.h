// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <string_view>

// A fresh folder under the system's temporary folder, removed with everything in it.
class TempDir
{
public:
    TempDir()
    {
        std::random_device random;
        m_path = std::filesystem::temp_directory_path()
                 / ("vantorel-test-" + std::to_string(random()) + std::to_string(random()));
        std::filesystem::create_directories(m_path);
    }
    ~TempDir()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TempDir(const TempDir &) = delete;
    TempDir &operator=(const TempDir &) = delete;

    std::string path() const { return m_path.string(); }

    // Writes the bytes at the relative path, creating its folders; gives the full path.
    std::string write(const std::string &relative, std::string_view bytes) const
    {
        const std::filesystem::path file = m_path / relative;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return file.string();
    }

private:
    std::filesystem::path m_path;
};
