// Numbers of the tagged stream: big-endian words and the fixed-point form of doubles.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace BigEndian {
inline uint16_t Unsigned16(const unsigned char* bytes)
{
    return static_cast<uint16_t>(bytes[0] << 8 | bytes[1]);
}

inline uint32_t Unsigned32(const unsigned char* bytes)
{
    return uint32_t{bytes[0]} << 24 | uint32_t{bytes[1]} << 16 | uint32_t{bytes[2]} << 8 | bytes[3];
}

inline int32_t Signed32(const unsigned char* bytes)
{
    return static_cast<int32_t>(Unsigned32(bytes));
}

inline void StoreUnsigned16(uint16_t value, unsigned char* bytes)
{
    bytes[0] = static_cast<unsigned char>(value >> 8);
    bytes[1] = static_cast<unsigned char>(value);
}

inline void StoreUnsigned32(uint32_t value, unsigned char* bytes)
{
    StoreUnsigned16(static_cast<uint16_t>(value >> 16), bytes);
    StoreUnsigned16(static_cast<uint16_t>(value), bytes + 2);
}

/// Units of the fraction: seven decimals.
constexpr double kFixedPointUnits = 10000000.0;

/// Reads a double from its 8 bytes: the signed integer part, then the signed fraction in units of 1e-7.
inline double FixedPoint(const unsigned char* bytes)
{
    const int32_t whole = Signed32(bytes);
    const int32_t fraction = Signed32(bytes + 4);
    if (fraction == 0) {
        return whole;
    }
    double value = fraction / kFixedPointUnits + whole;
    // One value in fourteen would be cut by another unit of 1e-7 when it is stored again, and would creep towards zero
    // with each save: such a value is read as the next double away from zero, which stores as the pair that was read.
    const double units = value * kFixedPointUnits - whole * kFixedPointUnits;
    if (fraction > 0 && whole >= 0 && units < fraction) {
        value = std::nextafter(value, std::numeric_limits<double>::infinity());
    } else if (fraction < 0 && whole <= 0 && units > fraction) {
        value = std::nextafter(value, -std::numeric_limits<double>::infinity());
    }
    return value;
}

/// Stores a double in 8 bytes, cut (not rounded) to seven decimals; both parts carry its sign. NaN is stored as 0, a
/// value whose integer part does not fit in 32 bits as the nearest that does.
inline void StoreFixedPoint(double value, unsigned char* bytes)
{
    double whole = std::trunc(value);
    double fraction = std::trunc(std::fmod(value * kFixedPointUnits, kFixedPointUnits));
    if (std::isnan(value)) {
        whole = fraction = 0.0;
    } else if (whole > std::numeric_limits<int32_t>::max()) {
        whole = std::numeric_limits<int32_t>::max();
        fraction = kFixedPointUnits - 1;
    } else if (whole < std::numeric_limits<int32_t>::min()) {
        whole = std::numeric_limits<int32_t>::min();
        fraction = 1 - kFixedPointUnits;
    }
    StoreUnsigned32(static_cast<uint32_t>(static_cast<int32_t>(whole)), bytes);
    StoreUnsigned32(static_cast<uint32_t>(static_cast<int32_t>(fraction)), bytes + 4);
}
} // namespace BigEndian
