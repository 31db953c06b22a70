// Drawing primitives and text over AppKit.
#pragma once

#import <AppKit/AppKit.h>

#include "CPoint/CPoint.h"
#include "CRect/DRect.h"

/// Paths, text, shadow and transform of the current graphics context. Coordinates are those of the context, z does not
/// count; angles are in degrees, positive ones turn from the x axis towards the y axis. Paths are autoreleased, and can
/// be made without a context; what draws or changes the context does nothing where there is none.
///
/// Of a text, its font or its colour: no text or no font draws nothing and measures 0 x 0; no colour is black. The
/// width of an outline is in percent of the font's size, and the outline is drawn over the text, half of it outside the
/// glyphs. No outline where its colour is nil or its width not above 0.
@interface UCocoaDrawing : NSObject

/// A soft shadow below right of all that is drawn until shadowOff.
+ (void)shadowOn;
+ (void)shadowOff;

/// A closed path around the rectangle.
+ (NSBezierPath*)pathForDRect:(const DRect&)rect;

+ (NSBezierPath*)lineFromPoint:(const CPoint&)start toPoint:(const CPoint&)end;

/// An empty path whose pen is at that point, to be continued.
+ (NSBezierPath*)pathForLineStartingAtPoint:(const CPoint&)start;

/// Goes on to the point: with a line, or, with drawLine NO, without one, so that a new part of the path begins there.
+ (void)continueLine:(NSBezierPath*)path ToPoint:(const CPoint&)point drawLine:(BOOL)drawLine;

/// A closed circle; no elements when the radius is not above 0.
+ (NSBezierPath*)pathForCircleAtPoint:(const CPoint&)centre withRadius:(double)radius;

/// Draws the text with its box's corner of smallest coordinates at the point: the lower left one, or the upper left one
/// in a flipped context. Line breaks start new lines.
+ (void)drawText:(NSString*)text withColor:(NSColor*)color font:(NSFont*)font atPoint:(const CPoint&)point;
+ (void)drawText:(NSString*)text
       withColor:(NSColor*)color
            font:(NSFont*)font
         atPoint:(const CPoint&)point
    outlineColor:(NSColor*)outlineColor
     strokeWidth:(double)strokeWidth;

/// Draws the text from the upper left corner of the rectangle on, as the context is seen, with lines broken at its
/// width. What would lie outside is cut off; an empty rectangle draws nothing.
+ (void)drawText:(NSString*)text withColor:(NSColor*)color font:(NSFont*)font inRect:(const DRect&)rect;
+ (void)drawText:(NSString*)text
       withColor:(NSColor*)color
            font:(NSFont*)font
          inRect:(const DRect&)rect
    outlineColor:(NSColor*)outlineColor
     strokeWidth:(double)strokeWidth;

/// The box of the text, in points. A text without characters has the height of a line and width 0.
+ (NSSize)measureText:(NSString*)text font:(NSFont*)font;

/// The same with an outline around it: larger by its width, half of it on each side.
+ (NSSize)measureText:(NSString*)text font:(NSFont*)font strokeWidth:(double)strokeWidth;

/// Attributes for strings of AppKit. What is nil is left out.
/// @return owned by the caller
+ (NSDictionary*)createAttributesForTextColor:(NSColor*)color
                                         font:(NSFont*)font
                                 outlineColor:(NSColor*)outlineColor
                                  strokeWidth:(double)strokeWidth NS_RETURNS_RETAINED;

/// What is drawn from now on is turned about the point.
+ (void)rotateContextBy:(double)degrees aroundPoint:(const CPoint&)point;

/// What is drawn from now on is moved by x and y.
+ (void)offsetContextBy:(const CPoint&)offset;

@end
