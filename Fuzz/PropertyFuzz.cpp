// Tests one property, FUZZ_PROPERTY, with each input.
#include "CScratchFolder.h"
#include "Properties.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {
/// What is saved as preferences is nobody's. The folder is looked up once in a process.
struct tPrivatePreferences {
    tPrivatePreferences() { setenv("XDG_CONFIG_HOME", folder.PathOf("").c_str(), 1); }
    CScratchFolder folder;
};
const tPrivatePreferences sPreferences;
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    const std::string wrong = Properties::FUZZ_PROPERTY({reinterpret_cast<const char*>(bytes), size});
    if (!wrong.empty()) {
        fprintf(stderr, "PROPERTY: %s\n", wrong.c_str());
        std::abort();
    }
    return 0;
}
