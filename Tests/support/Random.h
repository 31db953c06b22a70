// Pseudo-random numbers for tests.
#pragma once

#include <cstdint>
#include <string>

/// The same numbers from the same seed on every system.
class CRandom {
public:
    explicit CRandom(uint64_t seed) : mState(seed) {}
    uint64_t Next()
    {
        mState += 0x9E3779B97F4A7C15;
        uint64_t value = mState;
        value = (value ^ value >> 30) * 0xBF58476D1CE4E5B9;
        value = (value ^ value >> 27) * 0x94D049BB133111EB;
        return value ^ value >> 31;
    }
    /// From `low` to `high`, both included.
    int64_t Int(int64_t low, int64_t high)
    {
        return low + static_cast<int64_t>(Next() % (static_cast<uint64_t>(high - low) + 1));
    }
    /// From 0 to `limit` - 1.
    int Below(int limit) { return static_cast<int>(Int(0, limit - 1)); }
    bool Bool() { return (Next() & 1) != 0; }
    double Between(double low, double high) { return low + (high - low) * static_cast<double>(Next() >> 11) * 0x1p-53; }
    /// A multiple of 1e-7, as documents keep them, of at most that amount, of either sign.
    double Fixed(double most)
    {
        constexpr int64_t kUnits = 10000000;
        const int64_t units = static_cast<int64_t>(most) * kUnits;
        return static_cast<double>(Int(-units, units)) / static_cast<double>(kUnits);
    }
    /// Bytes 1 to 255.
    std::string Text(size_t longest)
    {
        std::string text(static_cast<size_t>(Int(0, static_cast<int64_t>(longest))), '\0');
        for (char& character : text) {
            character = static_cast<char>(Int(1, 255));
        }
        return text;
    }

private:
    uint64_t mState;
};
