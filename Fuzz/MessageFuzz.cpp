// What a worker says to the host. A message that is taken has exactly one form.
#include "protocol/Messages.h"

#include <cstdlib>

namespace {
template <typename tMessage>
void Take(std::string_view bytes)
{
    tMessage message;
    if (Decode(bytes, message) && Encode(message) != bytes) {
        std::abort();
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    const std::string_view message(reinterpret_cast<const char*>(bytes), size);
    Take<tHello>(message);
    Take<tRequest>(message);
    Take<tAnswer>(message);
    return 0;
}
