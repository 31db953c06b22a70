// From the core's colours to AppKit's.
#pragma once

#import <AppKit/AppKit.h>

#include "CColor/CColor.h"

@interface NSColor (CColor)
/// The same components in the calibrated colour space; autoreleased.
+ (NSColor*)colorWithCColor:(const CColor&)color;
@end
