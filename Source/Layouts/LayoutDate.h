// The form of dates inside layouts.
#pragma once

#include <cstddef>

/// Writes the local time as "Jan  5. 2026, 14:03:00", with English months, cut to `size` bytes.
void FormatLayoutDate(char* text, size_t size);
