// Tests one property, FUZZ_PROPERTY, with each input.
#include "Properties.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    const std::string wrong = Properties::FUZZ_PROPERTY({reinterpret_cast<const char*>(bytes), size});
    if (!wrong.empty()) {
        fprintf(stderr, "PROPERTY: %s\n", wrong.c_str());
        std::abort();
    }
    return 0;
}
