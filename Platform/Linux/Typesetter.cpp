#include "Typesetter.h"

#include "TextModule.h"

#include <cstring>
#include <fontconfig/fontconfig.h>
#include <memory>
#include <pango/pangofc-fontmap.h>
#include <string>
#include <unordered_map>

namespace {
template <auto kFunction>
struct tCall {
    template <class T>
    void operator()(T* object) const
    {
        kFunction(object);
    }
};
using tPattern = std::unique_ptr<FcPattern, tCall<FcPatternDestroy>>;
using tObjectSet = std::unique_ptr<FcObjectSet, tCall<FcObjectSetDestroy>>;
using tFontSet = std::unique_ptr<FcFontSet, tCall<FcFontSetDestroy>>;
using tDescription = std::unique_ptr<PangoFontDescription, tCall<pango_font_description_free>>;

// The fonts whose `key` is the name, or all fonts without a key.
tFontSet ListFonts(const char* key, const char* name)
{
    const tPattern pattern(FcPatternCreate());
    if (key != nullptr) {
        FcPatternAddString(pattern.get(), key, reinterpret_cast<const FcChar8*>(name));
    }
    const tObjectSet objects(
        FcObjectSetBuild(FC_FAMILY, FC_STYLE, FC_SLANT, FC_WEIGHT, FC_WIDTH, FC_FONTFORMAT, nullptr));
    return tFontSet(FcFontList(nullptr, pattern.get(), objects.get()));
}

// The first font that the layout library takes: it knows outline fonts of these two formats only.
FcPattern* FirstUsable(const tFontSet& fonts)
{
    for (int i = 0; fonts && i < fonts->nfont; ++i) {
        FcChar8* format = nullptr;
        if (FcPatternGetString(fonts->fonts[i], FC_FONTFORMAT, 0, &format) == FcResultMatch) {
            const char* const text = reinterpret_cast<const char*>(format);
            if (strcmp(text, "TrueType") == 0 || strcmp(text, "CFF") == 0) {
                return fonts->fonts[i];
            }
        }
    }
    return nullptr;
}

// The layout library looks fonts up by family and style only; PostScript and full names are translated here.
tDescription DescribeFont(const char* name)
{
    tDescription description;
    for (const char* key : {FC_POSTSCRIPT_NAME, FC_FULLNAME, FC_FAMILY}) {
        const tFontSet fonts = *name == '\0' ? nullptr : ListFonts(key, name);
        FcPattern* const font = FirstUsable(fonts);
        if (font == nullptr) {
            continue;
        }
        if (strcmp(key, FC_FAMILY) == 0) { // its regular face, not the one that happens to be listed first
            description.reset(pango_font_description_new());
            pango_font_description_set_family(description.get(), name);
        } else {
            description.reset(pango_fc_font_description_from_pattern(font, FALSE));
        }
        break;
    }
    if (!description) {
        description.reset(pango_font_description_new());
        pango_font_description_set_family(description.get(), "Sans");
    }
    pango_font_description_set_absolute_size(description.get(), kMeasuredSize * PANGO_SCALE);
    return description;
}
} // namespace

CTypesetter::CTypesetter()
{
    if (FirstUsable(ListFonts(nullptr, nullptr)) == nullptr) {
        return; // the layout library would end the process
    }
    PangoFontMap* const map = pango_cairo_font_map_new_for_font_type(CAIRO_FONT_TYPE_FT);
    if (map == nullptr) {
        return;
    }
    pango_cairo_font_map_set_resolution(PANGO_CAIRO_FONT_MAP(map), 72);
    PangoContext* const context = pango_font_map_create_context(map);
    cairo_font_options_t* const options = cairo_font_options_create();
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY); // not as some screen's settings want it
    pango_cairo_context_set_font_options(context, options);
    cairo_font_options_destroy(options);
    pango_context_set_round_glyph_positions(context, FALSE);
    pango_context_set_language(context, pango_language_from_string("en")); // the same size in every locale
    mLayout = pango_layout_new(context);
    g_object_unref(context);
    g_object_unref(map);
    pango_layout_set_single_paragraph_mode(mLayout, TRUE);
}

CTypesetter& CTypesetter::Instance()
{
    static CTypesetter* const sTypesetter = new CTypesetter;
    return *sTypesetter;
}

PangoLayout* CTypesetter::LayOut(const char* font, const char* text, size_t length)
{
    if (mLayout == nullptr) {
        return nullptr;
    }
    // As many as there are names of installed fonts.
    static auto& sDescriptions = *new std::unordered_map<std::string, tDescription>;
    tDescription& description = sDescriptions[font];
    if (!description) {
        description = DescribeFont(font);
    }
    pango_layout_set_font_description(mLayout, description.get());
    pango_layout_set_text(mLayout, text, static_cast<int>(length));
    return mLayout;
}
