// How libFuzzer changes inputs that are tagged records: record by record, and every fourth time as mere bytes.
#include "CRecordMutator.h"

#include <algorithm>

extern "C" size_t LLVMFuzzerMutate(uint8_t* bytes, size_t size, size_t most);

namespace {
size_t Put(const std::string& changed, uint8_t* bytes, size_t most)
{
    const size_t size = std::min(changed.size(), most);
    std::copy_n(changed.begin(), size, bytes);
    return size;
}

std::string_view View(const uint8_t* bytes, size_t size)
{
    return {reinterpret_cast<const char*>(bytes), size};
}
} // namespace

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* bytes, size_t size, size_t most, unsigned seed)
{
    if (size == 0 || seed % 4 == 0) {
        return LLVMFuzzerMutate(bytes, size, most);
    }
    return Put(CRecordMutator(seed).Mutate(View(bytes, size)), bytes, most);
}

extern "C" size_t LLVMFuzzerCustomCrossOver(const uint8_t* first, size_t firstSize, const uint8_t* second,
                                            size_t secondSize, uint8_t* out, size_t most, unsigned seed)
{
    return Put(CRecordMutator(seed).CrossOver(View(first, firstSize), View(second, secondSize)), out, most);
}
