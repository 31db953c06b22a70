// Marks what libvelmora-platform shows to its users; everything else is hidden.
#pragma once

#define PLATFORM_EXPORT __attribute__((visibility("default")))
