// What damage does to a block of bytes: cuts at every length, and replaced bytes.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <initializer_list>
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

/// Calls with a block in which one byte is another: 0, 255, the top bit turned, for every byte in its turn.
/// Ends with the first failure.
template <typename tCall>
void ForEachReplacedByte(std::string_view whole, tCall call, size_t step = 1)
{
    std::string damaged(whole);
    for (size_t at = 0; at < whole.size() && !testing::Test::HasFailure(); at += step) {
        for (const char byte : {'\0', '\xFF', static_cast<char>(whole[at] ^ '\x80')}) {
            SCOPED_TRACE("byte " + std::to_string(at) + " is " + std::to_string(static_cast<unsigned char>(byte)));
            damaged[at] = byte;
            call(std::string_view(damaged));
        }
        damaged[at] = whole[at];
    }
}
