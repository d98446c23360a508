// SPDX-License-Identifier: MIT
#include "Output.h"

#include "AtomicFile.h"

namespace Output {

void printLine(std::FILE *stream, const std::string &text)
{
    std::fwrite(text.data(), 1, text.size(), stream);
    std::fputc('\n', stream);
}

void failure(const std::string &message)
{
    std::fflush(stdout);
    printLine(stderr, message);
}

std::string shownName(const std::string &file)
{
    return file == "-" ? "(standard input)" : AtomicFile::shown(file);
}

std::string location(const std::string &file, int line)
{
    return shownName(file) + ':' + std::to_string(line) + ": ";
}

} // namespace Output
