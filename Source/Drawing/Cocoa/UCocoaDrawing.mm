#import "Drawing/Cocoa/UCocoaDrawing.h"

#import "Drawing/Cocoa/NSShadow+SingleLineShadows.h"

namespace {
/// The soft shadow of shadowOn, in points: light from the upper left, near enough to leave thin lines readable.
const NSSize kShadowOffset = {1.5, -1.5};
constexpr CGFloat kShadowBlurRadius = 2.0;
constexpr CGFloat kShadowAlpha = 0.4;

/// Sides of a text's layout that nothing bounds. Not CGFLOAT_MAX: positions are added to it.
constexpr CGFloat kUnbounded = 1.0e7;

NSPoint ToNSPoint(const CPoint& point) { return NSMakePoint(point.x, point.y); }

NSRect ToNSRect(const DRect& rect)
{
    return NSMakeRect(rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top);
}

bool HasContext() { return [NSGraphicsContext currentContext] != nil; }

bool IsDrawable(NSString* text, NSFont* font) { return [text length] > 0 && font != nil; }

bool HasOutline(NSColor* outlineColor, double strokeWidth) { return outlineColor != nil && strokeWidth > 0.0; }

/// An outline's width in points, from percent of the font's size.
CGFloat OutlineWidth(NSFont* font, double strokeWidth)
{
    return strokeWidth > 0.0 ? strokeWidth / 100.0 * [font pointSize] : 0.0;
}

/// The outlines of all glyphs of a text laid out into `size`, the upper left corner of the layout at (0, 0), y upwards.
NSBezierPath* GlyphOutlines(NSString* text, NSDictionary* attributes, NSFont* font, NSSize size)
{
    NSTextStorage* const storage = [[NSTextStorage alloc] initWithString:text attributes:attributes];
    NSLayoutManager* const layout = [[NSLayoutManager alloc] init];
    NSTextContainer* const container = [[NSTextContainer alloc] initWithContainerSize:size];
    [container setLineFragmentPadding:0.0];
    [layout addTextContainer:container];
    [storage addLayoutManager:layout];

    NSBezierPath* const outlines = [NSBezierPath bezierPath];
    const NSRange glyphs = [layout glyphRangeForTextContainer:container];
    for (NSUInteger index = glyphs.location; index < NSMaxRange(glyphs); ++index) {
        NSGlyph glyph = [layout glyphAtIndex:static_cast<unsigned>(index)];
        if (glyph == NSControlGlyph || glyph == NSNullGlyph) { // line breaks and the like
            continue;
        }
        const NSRect line = [layout lineFragmentRectForGlyphAtIndex:index effectiveRange:nullptr];
        const NSPoint inLine = [layout locationForGlyphAtIndex:index]; // of the base line, downwards
        [outlines moveToPoint:NSMakePoint(NSMinX(line) + inLine.x, -(NSMinY(line) + inLine.y))];
        [outlines appendBezierPathWithGlyphs:&glyph count:1 inFont:font];
    }
    [storage removeLayoutManager:layout];
    [container release];
    [layout release];
    [storage release];
    return outlines;
}

/// Strokes the outlines of a text whose layout fills `box`, which is in the context's coordinates. Not left to the
/// attributes of the string, since not every AppKit draws those.
void StrokeOutlines(NSString* text, NSDictionary* attributes, NSFont* font, NSRect box, NSColor* color, CGFloat width)
{
    NSBezierPath* const outlines = GlyphOutlines(text, attributes, font, NSMakeSize(NSWidth(box), NSHeight(box)));
    NSAffineTransform* const placing = [NSAffineTransform transform];
    if ([[NSGraphicsContext currentContext] isFlipped]) {
        [placing translateXBy:NSMinX(box) yBy:NSMinY(box)];
        [placing scaleXBy:1.0 yBy:-1.0];
    } else {
        [placing translateXBy:NSMinX(box) yBy:NSMaxY(box)];
    }
    [outlines transformUsingAffineTransform:placing];
    [outlines setLineWidth:width];
    [outlines setLineJoinStyle:NSRoundLineJoinStyle]; // mitres of sharp glyphs would reach far out
    [color set];
    [outlines stroke];
}
} // namespace

@implementation UCocoaDrawing

+ (void)shadowOn
{
    NSColor* const color = [NSColor colorWithCalibratedWhite:0.0 alpha:kShadowAlpha];
    [NSShadow setShadowWithOffset:kShadowOffset blurRadius:kShadowBlurRadius color:color];
}

+ (void)shadowOff
{
    [NSShadow clearShadow];
}

+ (NSBezierPath*)pathForDRect:(const DRect&)rect
{
    return [NSBezierPath bezierPathWithRect:ToNSRect(rect)];
}

+ (NSBezierPath*)lineFromPoint:(const CPoint&)start toPoint:(const CPoint&)end
{
    NSBezierPath* const path = [UCocoaDrawing pathForLineStartingAtPoint:start];
    [UCocoaDrawing continueLine:path ToPoint:end drawLine:YES];
    return path;
}

+ (NSBezierPath*)pathForLineStartingAtPoint:(const CPoint&)start
{
    NSBezierPath* const path = [NSBezierPath bezierPath];
    [path moveToPoint:ToNSPoint(start)];
    return path;
}

+ (void)continueLine:(NSBezierPath*)path ToPoint:(const CPoint&)point drawLine:(BOOL)drawLine
{
    if (drawLine) {
        [path lineToPoint:ToNSPoint(point)];
    } else {
        [path moveToPoint:ToNSPoint(point)];
    }
}

+ (NSBezierPath*)pathForCircleAtPoint:(const CPoint&)centre withRadius:(double)radius
{
    if (!(radius > 0.0)) {
        return [NSBezierPath bezierPath];
    }
    const double diameter = 2.0 * radius;
    return [NSBezierPath bezierPathWithOvalInRect:NSMakeRect(centre.x - radius, centre.y - radius, diameter, diameter)];
}

+ (void)drawText:(NSString*)text withColor:(NSColor*)color font:(NSFont*)font atPoint:(const CPoint&)point
{
    [UCocoaDrawing drawText:text withColor:color font:font atPoint:point outlineColor:nil strokeWidth:0.0];
}

+ (void)drawText:(NSString*)text
       withColor:(NSColor*)color
            font:(NSFont*)font
         atPoint:(const CPoint&)point
    outlineColor:(NSColor*)outlineColor
     strokeWidth:(double)strokeWidth
{
    if (!HasContext() || !IsDrawable(text, font)) {
        return;
    }
    NSDictionary* const attributes = [UCocoaDrawing createAttributesForTextColor:color
                                                                            font:font
                                                                    outlineColor:nil
                                                                     strokeWidth:0.0];
    [text drawAtPoint:ToNSPoint(point) withAttributes:attributes];
    if (HasOutline(outlineColor, strokeWidth)) {
        // Only the height places lines; the layout must not break where a rounded width would just be too narrow.
        const NSRect box = NSMakeRect(point.x, point.y, kUnbounded, [UCocoaDrawing measureText:text font:font].height);
        StrokeOutlines(text, attributes, font, box, outlineColor, OutlineWidth(font, strokeWidth));
    }
    [attributes release];
}

+ (void)drawText:(NSString*)text withColor:(NSColor*)color font:(NSFont*)font inRect:(const DRect&)rect
{
    [UCocoaDrawing drawText:text withColor:color font:font inRect:rect outlineColor:nil strokeWidth:0.0];
}

+ (void)drawText:(NSString*)text
       withColor:(NSColor*)color
            font:(NSFont*)font
          inRect:(const DRect&)rect
    outlineColor:(NSColor*)outlineColor
     strokeWidth:(double)strokeWidth
{
    const NSRect box = ToNSRect(rect);
    if (!HasContext() || !IsDrawable(text, font) || !(NSWidth(box) > 0.0 && NSHeight(box) > 0.0)) {
        return;
    }
    NSDictionary* const attributes = [UCocoaDrawing createAttributesForTextColor:color
                                                                            font:font
                                                                    outlineColor:nil
                                                                     strokeWidth:0.0];
    [NSGraphicsContext saveGraphicsState];
    [NSBezierPath clipRect:box];
    [text drawInRect:box withAttributes:attributes];
    if (HasOutline(outlineColor, strokeWidth)) {
        StrokeOutlines(text, attributes, font, box, outlineColor, OutlineWidth(font, strokeWidth));
    }
    [NSGraphicsContext restoreGraphicsState];
    [attributes release];
}

+ (NSSize)measureText:(NSString*)text font:(NSFont*)font
{
    return [UCocoaDrawing measureText:text font:font strokeWidth:0.0];
}

+ (NSSize)measureText:(NSString*)text font:(NSFont*)font strokeWidth:(double)strokeWidth
{
    if (text == nil || font == nil) {
        return NSMakeSize(0.0, 0.0);
    }
    NSDictionary* const attributes = [UCocoaDrawing createAttributesForTextColor:nil
                                                                            font:font
                                                                    outlineColor:nil
                                                                     strokeWidth:0.0];
    // The size of a text without characters would be that of some other font.
    const bool isEmpty = [text length] == 0;
    NSSize size = [(isEmpty ? @" " : text) sizeWithAttributes:attributes];
    if (isEmpty) {
        size.width = 0.0;
    }
    [attributes release];
    const CGFloat outline = OutlineWidth(font, strokeWidth);
    return NSMakeSize(size.width + outline, size.height + outline);
}

+ (NSDictionary*)createAttributesForTextColor:(NSColor*)color
                                         font:(NSFont*)font
                                 outlineColor:(NSColor*)outlineColor
                                  strokeWidth:(double)strokeWidth
{
    NSMutableDictionary* const attributes = [[NSMutableDictionary alloc] init];
    if (color != nil) {
        [attributes setObject:color forKey:NSForegroundColorAttributeName];
    }
    if (font != nil) {
        [attributes setObject:font forKey:NSFontAttributeName];
    }
    if (HasOutline(outlineColor, strokeWidth)) {
        [attributes setObject:outlineColor forKey:NSStrokeColorAttributeName];
        // AppKit draws the outline alone at positive widths, outline and text at negative ones.
        [attributes setObject:[NSNumber numberWithDouble:-strokeWidth] forKey:NSStrokeWidthAttributeName];
    }
    return attributes;
}

+ (void)rotateContextBy:(double)degrees aroundPoint:(const CPoint&)point
{
    if (!HasContext()) {
        return;
    }
    NSAffineTransform* const transform = [NSAffineTransform transform];
    [transform translateXBy:point.x yBy:point.y];
    [transform rotateByDegrees:degrees];
    [transform translateXBy:-point.x yBy:-point.y];
    [transform concat];
}

+ (void)offsetContextBy:(const CPoint&)offset
{
    if (!HasContext()) {
        return;
    }
    NSAffineTransform* const transform = [NSAffineTransform transform];
    [transform translateXBy:offset.x yBy:offset.y];
    [transform concat];
}

@end
