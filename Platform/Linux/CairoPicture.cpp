#include "CairoPicture.h"

#include "TextPieces.h"
#include "Typesetter.h"

#include <algorithm>
#include <cairo-pdf.h>
#include <cairo-svg.h>
#include <cmath>

using namespace Platform;

namespace {
/// Letters taller than this many device units are drawn as areas: as glyphs each would be kept as a bitmap.
constexpr double kTallestGlyphs = 200;

cairo_status_t Append(void* closure, const unsigned char* data, unsigned int length)
{
    try {
        static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
    } catch (const std::bad_alloc&) {
        return CAIRO_STATUS_NO_MEMORY; // the library is C
    }
    return CAIRO_STATUS_SUCCESS;
}

cairo_surface_t* MakeSurface(ePictureFormat format, int width, int height, std::string& bytes)
{
    switch (format) {
    case ePictureFormat::kSVG: {
        cairo_surface_t* const surface = cairo_svg_surface_create_for_stream(Append, &bytes, width, height);
        cairo_svg_surface_restrict_to_version(surface, CAIRO_SVG_VERSION_1_1);
        cairo_svg_surface_set_document_unit(surface, CAIRO_SVG_UNIT_PX);
        return surface;
    }
    case ePictureFormat::kPDF: {
        cairo_surface_t* const surface = cairo_pdf_surface_create_for_stream(Append, &bytes, width, height);
        // The library would take the time of day: the same drawing is to give the same bytes.
        cairo_pdf_surface_set_metadata(surface, CAIRO_PDF_METADATA_CREATE_DATE, "2000-01-01T00:00:00Z");
        cairo_pdf_surface_set_metadata(surface, CAIRO_PDF_METADATA_CREATOR, "velmora");
        return surface;
    }
    case ePictureFormat::kPNG:
        break;
    }
    return cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height);
}

cairo_line_cap_t CapOf(eLineCap cap)
{
    return cap == eLineCap::kRound    ? CAIRO_LINE_CAP_ROUND
           : cap == eLineCap::kSquare ? CAIRO_LINE_CAP_SQUARE
                                      : CAIRO_LINE_CAP_BUTT;
}

cairo_line_join_t JoinOf(eLineJoin join)
{
    return join == eLineJoin::kRound   ? CAIRO_LINE_JOIN_ROUND
           : join == eLineJoin::kBevel ? CAIRO_LINE_JOIN_BEVEL
                                       : CAIRO_LINE_JOIN_MITER;
}
} // namespace

CCairoPicture::CCairoPicture(ePictureFormat format, int width, int height, const tTextServices& services)
    : mFormat(format), mServices(services), mSurface(MakeSurface(format, width, height, mBytes)),
      mContext(cairo_create(mSurface))
{}

CCairoPicture::~CCairoPicture()
{
    cairo_destroy(mContext);
    cairo_surface_destroy(mSurface);
}

void CCairoPicture::ArcTo(double centreX, double centreY, double radius, double start, double sweep)
{
    const double from = start * kRadiansPerDegree;
    const double to = (start + sweep) * kRadiansPerDegree;
    if (sweep < 0) {
        cairo_arc_negative(mContext, centreX, centreY, radius, from, to);
    } else {
        cairo_arc(mContext, centreX, centreY, radius, from, to);
    }
}

void CCairoPicture::SetPaint(const tPaint& paint)
{
    cairo_set_source_rgba(mContext, paint.red, paint.green, paint.blue, paint.alpha);
}

void CCairoPicture::Fill(const tPaint& paint, bool keepPath)
{
    SetPaint(paint);
    if (keepPath) {
        cairo_fill_preserve(mContext);
    } else {
        cairo_fill(mContext);
    }
}

void CCairoPicture::Stroke(const tPen& pen)
{
    SetPaint(pen.paint);
    cairo_set_line_width(mContext, pen.width);
    cairo_set_line_cap(mContext, CapOf(pen.cap));
    cairo_set_line_join(mContext, JoinOf(pen.join));
    cairo_set_dash(mContext, pen.dash.data(), static_cast<int>(pen.dash.size()), pen.dashOffset);
    cairo_set_antialias(mContext, pen.isCoarse ? CAIRO_ANTIALIAS_FAST : CAIRO_ANTIALIAS_DEFAULT);
    cairo_stroke(mContext);
    cairo_set_antialias(mContext, CAIRO_ANTIALIAS_DEFAULT);
}

void CCairoPicture::Turn(double angle)
{
    cairo_rotate(mContext, angle * kRadiansPerDegree);
}

void CCairoPicture::DrawText(const std::string& text, double x, double y, const tTextLook& look)
{
    const std::string font = mServices.findFont(look.font);
    cairo_save(mContext);
    cairo_new_path(mContext);
    cairo_translate(mContext, x, y);
    cairo_scale(mContext, look.size / kMeasuredSize, look.size / kMeasuredSize);
    if (look.halo > 0) {
        DrawPieces(font, text, look, true); // under all letters, not over their neighbours
    }
    DrawPieces(font, text, look, false);
    cairo_restore(mContext);
}

void CCairoPicture::DrawPieces(const std::string& font, std::string_view text, const tTextLook& look, bool halo)
{
    double x = 0;
    double y = 0;
    double height = 0;
    bool ends = false;
    for (bool more = true; more || !ends;) {
        const std::string piece = TakePiece(text, ends, more);
        PangoLayout* const layout = CTypesetter::Instance().LayOut(font.c_str(), piece.data(), piece.size());
        if (layout == nullptr) {
            return;
        }
        PangoRectangle logical = {};
        pango_layout_get_extents(layout, nullptr, &logical);
        height = std::max(height, static_cast<double>(logical.height) / PANGO_SCALE);
        if (!piece.empty()) {
            cairo_move_to(mContext, x, y);
            DrawPiece(layout, look, halo);
            x += static_cast<double>(logical.width) / PANGO_SCALE;
        }
        if (ends) {
            x = 0;
            y += height;
            height = 0;
        }
    }
}

void CCairoPicture::DrawPiece(PangoLayout* layout, const tTextLook& look, bool halo)
{
    if (halo) {
        SetPaint(look.haloPaint);
        pango_cairo_layout_path(mContext, layout);
        cairo_set_line_width(mContext, 2 * look.halo * kMeasuredSize / look.size);
        cairo_set_line_join(mContext, CAIRO_LINE_JOIN_ROUND);
        cairo_set_dash(mContext, nullptr, 0, 0);
        cairo_stroke(mContext);
        return;
    }
    SetPaint(look.paint);
    double widthX = 0;
    double widthY = kMeasuredSize;
    cairo_user_to_device_distance(mContext, &widthX, &widthY);
    if (std::hypot(widthX, widthY) <= kTallestGlyphs) {
        pango_cairo_show_layout(mContext, layout);
        cairo_new_path(mContext);
    } else {
        pango_cairo_layout_path(mContext, layout);
        cairo_fill(mContext);
    }
}

void CCairoPicture::MeasureText(const std::string& text, const tTextLook& look, double& width, double& height)
{
    mServices.measureText(look.font, look.size, text, width, height);
}

bool CCairoPicture::Finish(std::string& bytes)
{
    bytes.clear();
    cairo_status_t status = cairo_status(mContext);
    if (status == CAIRO_STATUS_SUCCESS && mFormat == ePictureFormat::kPNG) {
        status = cairo_surface_write_to_png_stream(mSurface, Append, &mBytes);
    }
    cairo_surface_finish(mSurface);
    if (status == CAIRO_STATUS_SUCCESS) {
        status = cairo_surface_status(mSurface);
    }
    if (status != CAIRO_STATUS_SUCCESS) {
        return false;
    }
    bytes = std::move(mBytes);
    return true;
}
