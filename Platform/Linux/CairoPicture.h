// Pictures drawn with Cairo. A part of libvelmora-text.so.
#pragma once

#include "Platform/Drawing.h"
#include "TextModule.h"

#include <cairo.h>
#include <pango/pangocairo.h>
#include <string_view>

class CCairoPicture final : public Platform::CPicture {
public:
    CCairoPicture(Platform::ePictureFormat format, int width, int height, const tTextServices& services);
    ~CCairoPicture() override;
    CCairoPicture(const CCairoPicture&) = delete;
    CCairoPicture& operator=(const CCairoPicture&) = delete;

    bool IsGood() const { return cairo_status(mContext) == CAIRO_STATUS_SUCCESS; }

    void MoveTo(double x, double y) override { cairo_move_to(mContext, x, y); }
    void LineTo(double x, double y) override { cairo_line_to(mContext, x, y); }
    void CurveTo(double x1, double y1, double x2, double y2, double x, double y) override
    {
        cairo_curve_to(mContext, x1, y1, x2, y2, x, y);
    }
    void ArcTo(double centreX, double centreY, double radius, double start, double sweep) override;
    void ClosePath() override { cairo_close_path(mContext); }
    void Fill(const Platform::tPaint& paint, bool keepPath) override;
    void Stroke(const Platform::tPen& pen) override;
    void Clip() override { cairo_clip(mContext); }
    void Save() override { cairo_save(mContext); }
    void Restore() override { cairo_restore(mContext); }
    void Shift(double x, double y) override { cairo_translate(mContext, x, y); }
    void Turn(double angle) override;
    void Scale(double factor) override { cairo_scale(mContext, factor, factor); }
    void DrawText(const std::string& text, double x, double y, const Platform::tTextLook& look) override;
    void MeasureText(const std::string& text, const Platform::tTextLook& look, double& width, double& height) override;
    bool Finish(std::string& bytes) override;

private:
    void SetPaint(const Platform::tPaint& paint);
    void DrawPieces(const std::string& font, std::string_view text, const Platform::tTextLook& look, bool halo);
    void DrawPiece(PangoLayout* layout, const Platform::tTextLook& look, bool halo);

    Platform::ePictureFormat mFormat;
    const tTextServices& mServices;
    std::string mBytes;
    cairo_surface_t* mSurface = nullptr;
    cairo_t* mContext = nullptr;
};
