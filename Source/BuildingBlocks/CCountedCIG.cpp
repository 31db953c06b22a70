#include "BuildingBlocks/CCountedCIG.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace {
using tLimits = std::numeric_limits<int>;
}

void CCountedCIG::IncCount(int n)
{
    mCount = static_cast<int>(std::clamp<int64_t>(int64_t{mCount} + n, tLimits::min(), tLimits::max()));
}

void CCountedCIG::DecCount(int n)
{
    mCount = static_cast<int>(std::clamp<int64_t>(int64_t{mCount} - n, 0, tLimits::max()));
}
