// What the core draws on: one interface, implemented by Platform for pictures in files and by Cocoa for views.
#pragma once

#include "CColor/CColor.h"
#include "Platform/Drawing.h"

using CDrawing = Platform::CDrawing;
using Platform::tPaint;
using Platform::tPen;
using Platform::tTextLook;

/// A drawing colour as the surface takes it.
inline tPaint PaintOf(const CColor& color)
{
    return {color.R(), color.G(), color.B(), color.A()};
}
