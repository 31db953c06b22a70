// Pseudo-random numbers for tests.
#pragma once

#include <cstdint>
#include <random>
#include <string>

/// The same numbers from the same seed on every system.
class CRandom {
public:
    explicit CRandom(uint64_t seed) : mEngine(seed) {}

    uint64_t operator()() { return mEngine(); }
    /// From 0 to `limit` - 1.
    int Below(int limit) { return static_cast<int>(mEngine() % static_cast<uint64_t>(limit)); }
    /// From `low` to `high`, both included.
    int64_t Int(int64_t low, int64_t high)
    {
        return low + static_cast<int64_t>(mEngine() % (static_cast<uint64_t>(high - low) + 1));
    }
    bool Bool() { return Below(2) == 1; }
    double Between(double low, double high)
    {
        return low + (high - low) * static_cast<double>(mEngine() >> 11) * 0x1p-53;
    }
    /// A multiple of 1e-7, as documents keep them, of at most that amount, of either sign.
    double Fixed(double most)
    {
        constexpr double kUnits = 1e7;
        const auto units = static_cast<int64_t>(most) * static_cast<int64_t>(kUnits);
        return static_cast<double>(Int(-units, units)) / kUnits;
    }
    /// Bytes 1 to 255.
    std::string Text(size_t longest)
    {
        std::string text(static_cast<size_t>(Below(static_cast<int>(longest) + 1)), '\0');
        for (char& character : text) {
            character = static_cast<char>(Int(1, 255));
        }
        return text;
    }

private:
    std::mt19937_64 mEngine;
};
