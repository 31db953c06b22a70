// Ownership of Core Foundation objects.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <memory>
#include <type_traits>

namespace Platform {
struct tReleaser {
    void operator()(CFTypeRef object) const { CFRelease(object); }
};

/// Holds a reference that was got from a Create or Copy function, null included, and gives it back.
template <class tRef>
using tReleased = std::unique_ptr<std::remove_pointer_t<tRef>, tReleaser>;
} // namespace Platform
