#include "index/ContentHash.h"

#include <cerrno>
#include <memory>
#include <unistd.h>
#include <vector>
#include <xxhash.h>

namespace {
struct tStateFree {
    void operator()(XXH3_state_t* state) const { XXH3_freeState(state); }
};

std::string ToBytes(XXH128_hash_t hash)
{
    XXH128_canonical_t bytes;
    XXH128_canonicalFromHash(&bytes, hash);
    return {reinterpret_cast<const char*>(bytes.digest), sizeof bytes.digest};
}
} // namespace

std::optional<std::string> ContentHash::OfFile(int descriptor)
{
    static std::vector<char> buffer(size_t{64} << 10);
    static const std::unique_ptr<XXH3_state_t, tStateFree> state(XXH3_createState());
    XXH3_128bits_reset(state.get());
    for (off_t offset = 0;;) {
        const ssize_t count = pread(descriptor, buffer.data(), buffer.size(), offset);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return std::nullopt;
        }
        if (count == 0) {
            break;
        }
        XXH3_128bits_update(state.get(), buffer.data(), static_cast<size_t>(count));
        offset += count;
    }
    return ToBytes(XXH3_128bits_digest(state.get()));
}

std::string ContentHash::OfBytes(const std::string& bytes)
{
    return ToBytes(XXH3_128bits(bytes.data(), bytes.size()));
}

std::string ContentHash::InHex(const std::string& hash)
{
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (const char character : hash) {
        const auto byte = static_cast<unsigned char>(character);
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return text;
}
