#include "Elements/Utilities/CMissingLayoutFontsDoctor.h"

#include "BuildingBlocks/BasicGeometries/CTextBIG.h"
#include "BuildingBlocks/CCompositeGeometry.h"
#include "CheckError/ULog.h"
#include "Elements/Utilities/UElementVectorOperations.h"
#include "KVUStr/KVUStr.h"
#include "Platform/Fonts.h"
#include "Platform/MacRoman.h"

#include <CoreFoundation/CoreFoundation.h>

#include <boost/foreach.hpp>

#include <unordered_set>

namespace {
constexpr char kFunction[] = "void CMissingLayoutFontsDoctor::RepairMissingFonts(vector<CCompositeGeometry *> &)";

/// Whether a platform string can be made of the name: ASCII, else Mac OS Roman.
bool IsConvertible(const std::string& name)
{
    return KVUStr::IsConvertible(name, kCFStringEncodingASCII) ||
           KVUStr::IsConvertible(name, kCFStringEncodingMacRoman);
}
} // namespace

CMissingLayoutFontsDoctor::CMissingLayoutFontsDoctor(const std::vector<CCompositeGeometry*>& elements)
{
    RepairMissingFonts(elements);
}

void CMissingLayoutFontsDoctor::RepairMissingFonts(const std::vector<CCompositeGeometry*>& elements)
{
    std::vector<CCompositeGeometry*> texts;
    UElementVectorOperations::GetAllTextElements(elements, texts);
    std::unordered_set<std::string> asked;
    const std::string* previous = nullptr; // most texts of a layout share a font or two
    BOOST_FOREACH(const CCompositeGeometry* element, texts) {
        const CBasicGeometry* first = element->GetBIGAtIndex(0);
        if (first->GetType() != kTextType) {
            ULog::Warn("%s: Text element expected, element type %d found.", kFunction, first->GetType());
            continue;
        }
        const std::string& name = static_cast<const CTextBIG*>(first)->GetFontName();
        if ((previous != nullptr && name == *previous) || !asked.insert(name).second) {
            continue;
        }
        previous = &name;
        if (!IsConvertible(name)) {
            ULog::Warn("%s: Unable to check for font '%s'", kFunction, name.c_str());
        } else if (!Platform::IsFontInstalled(Platform::MacRomanToUtf8(name))) {
            mMissing.insert(name);
        }
    }
}

int CMissingLayoutFontsDoctor::GetMissingFontsList(std::vector<std::string>& out) const
{
    out.insert(out.end(), mMissing.begin(), mMissing.end());
    return static_cast<int>(out.size());
}
