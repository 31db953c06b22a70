// What damage does to a block of bytes: cuts at every length.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

/// Calls with every beginning of a block, the empty one first, the whole block not; each lies in memory of its own
/// size, so that a sanitizer sees who reads behind it. Ends with the first failure.
/// @param step  bytes from one length to the next
template <typename tCall>
void ForEachCut(std::string_view whole, tCall call, size_t step = 1)
{
    for (size_t size = 0; size < whole.size() && !testing::Test::HasFailure(); size += step) {
        SCOPED_TRACE("cut to " + std::to_string(size) + " bytes");
        const std::unique_ptr<char[]> part(new char[size]);
        std::memcpy(part.get(), whole.data(), size);
        call(std::string_view(part.get(), size));
    }
}
