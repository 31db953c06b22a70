// Constants of angles.
#pragma once

inline constexpr double kPi = 3.141592653589793;
inline constexpr double kDegreesPerRadian = 57.29577951308232;
inline constexpr double kRadiansPerDegree = 0.017453292519943295;
