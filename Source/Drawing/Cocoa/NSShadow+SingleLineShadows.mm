#import "Drawing/Cocoa/NSShadow+SingleLineShadows.h"

@implementation NSShadow (SingleLineShadows)

+ (void)setShadowWithOffset:(NSSize)offset blurRadius:(CGFloat)blurRadius color:(NSColor*)color
{
    if ([NSGraphicsContext currentContext] == nil) {
        return;
    }
    NSShadow* const shadow = [[NSShadow alloc] init];
    [shadow setShadowOffset:offset];
    [shadow setShadowBlurRadius:blurRadius];
    [shadow setShadowColor:color];
    [shadow set];
    [shadow release];
}

+ (void)clearShadow
{
    // A shadow without colour is none.
    [NSShadow setShadowWithOffset:NSMakeSize(0.0, 0.0) blurRadius:0.0 color:nil];
}

@end
