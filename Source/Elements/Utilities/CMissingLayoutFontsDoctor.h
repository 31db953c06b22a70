// Which fonts of a layout's texts are not installed.
#pragma once

#include <set>
#include <string>
#include <vector>

class CCompositeGeometry;

/// Collects, when it is made, the names of fonts that the text elements of a layout ask for and the machine lacks.
/// Changes no element.
class CMissingLayoutFontsDoctor {
public:
    explicit CMissingLayoutFontsDoctor(const std::vector<CCompositeGeometry*>& elements);
    virtual ~CMissingLayoutFontsDoctor() = default;

    /// Adds the missing fonts of these elements. A name that no platform string can be made of is passed over.
    void RepairMissingFonts(const std::vector<CCompositeGeometry*>& elements);
    /// Appends the missing names, as the document spells them, in byte order. @return the size of `out`
    int GetMissingFontsList(std::vector<std::string>& out) const;

private:
    std::set<std::string> mMissing;
};
