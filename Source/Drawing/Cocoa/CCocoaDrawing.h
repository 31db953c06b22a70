// The core's drawing surface over AppKit: what draws pictures into files draws into views with this.
#pragma once

#import <AppKit/AppKit.h>

#include "CPoint/CPoint.h"
#include "Drawing/CDrawing.h"

#include <vector>

/// Draws on the graphics context that is current during its whole life, flipped or not. Transform and clip of the
/// context are again what they were when it goes. Without a context nothing is drawn, and texts measure 0 x 0.
///
/// The path is kept in coordinates of the surface, so what changes the transform may stand between its points.
class CCocoaDrawing final : public CDrawing {
public:
    /// @param height  of the surface, in units of the context: y is counted downwards from there
    explicit CCocoaDrawing(double height);
    ~CCocoaDrawing() override;
    CCocoaDrawing(const CCocoaDrawing&) = delete;
    CCocoaDrawing& operator=(const CCocoaDrawing&) = delete;

    void MoveTo(double x, double y) override;
    void LineTo(double x, double y) override;
    void CurveTo(double x1, double y1, double x2, double y2, double x, double y) override;
    void ArcTo(double centreX, double centreY, double radius, double start, double sweep) override;
    void ClosePath() override;

    void Fill(const tPaint& paint, bool keepPath) override;
    void Stroke(const tPen& pen) override;
    void Clip() override;

    void Save() override;
    /// Without a Save to undo it does nothing.
    void Restore() override;
    void Shift(double x, double y) override;
    void Turn(double angle) override;
    void Scale(double factor) override;

    void DrawText(const std::string& text, double x, double y, const tTextLook& look) override;
    void MeasureText(const std::string& text, const tTextLook& look, double& width, double& height) override;

private:
    /// From the user's coordinates to the surface's: scaled, then turned, then shifted.
    struct tPlacing {
        CPoint shift;
        double angle = 0.0;
        double scale = 1.0;

        CPoint Apply(double x, double y) const;
    };

    NSGraphicsContext* mContext; ///< retained; nil where there is none
    NSBezierPath* mPath;         ///< owned; in coordinates of the surface
    tPlacing mPlacing;
    std::vector<tPlacing> mSaved;
};
