// SPDX-License-Identifier: MIT
// libFuzzer entry: any bytes go to the reader; bytes that open must survive write, open, write.
#include "ScriptRoundTrip.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char *>(data), size);
    if (const std::optional<std::string> problem = checkScriptRoundTrip(bytes)) {
        std::fprintf(stderr, "%s\n", problem->c_str());
        std::abort();
    }
    return 0;
}
