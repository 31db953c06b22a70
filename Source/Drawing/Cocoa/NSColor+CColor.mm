#import "Drawing/Cocoa/NSColor+CColor.h"

@implementation NSColor (CColor)

+ (NSColor*)colorWithCColor:(const CColor&)color
{
    return [NSColor colorWithCalibratedRed:color.R() green:color.G() blue:color.B() alpha:color.A()];
}

@end
