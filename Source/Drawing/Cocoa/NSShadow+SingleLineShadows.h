// Shadows switched on and off in one line.
#pragma once

#import <AppKit/AppKit.h>

/// Both change the graphics state of the current context, so they last until it is restored.
/// Without a context nothing happens.
@interface NSShadow (SingleLineShadows)
/// Everything drawn from now on throws a shadow.
/// @param offset      of the shadow, in units of the unscaled context, y upwards whatever the context's transform
/// @param blurRadius  0 for a sharp one, in the same units
+ (void)setShadowWithOffset:(NSSize)offset blurRadius:(CGFloat)blurRadius color:(NSColor*)color;

/// What is drawn from now on throws none.
+ (void)clearShadow;
@end
