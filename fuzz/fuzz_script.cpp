// SPDX-License-Identifier: MIT
// libFuzzer entry: any bytes go to the reader; bytes that open must survive write, open, write, and
// in the game's reading keep their text through a save.
#include "ScriptRoundTrip.h"
#include "SyntaxRoundTrip.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char *>(data), size);
    std::optional<std::string> problem = checkScriptRoundTrip(bytes);
    if (!problem)
        problem = checkSyntaxRoundTrip(bytes);
    if (problem) {
        std::fprintf(stderr, "%s\n", problem->c_str());
        std::abort();
    }
    return 0;
}
