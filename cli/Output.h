// SPDX-License-Identifier: MIT
#pragma once

#include <cstdio>
#include <string>

// The conventions every command of vantorel-cli keeps in what it prints: one line per failure on
// standard error, files named so that a line stays one line, and the exit statuses.
namespace Output {

constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;

void printLine(std::FILE *stream, const std::string &text);
// A failure on standard error, after whatever standard output holds so far.
void failure(const std::string &message);
// "-" is standard input, and messages say so. Other names are quoted when they hold a control
// character, so that each message stays one line.
std::string shownName(const std::string &file);
// "FILE:LINE: ", the start of a finding or an error about a script.
std::string location(const std::string &file, int line);

} // namespace Output
