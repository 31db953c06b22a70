// Names of elements that no library names, and the labels of all.
#pragma once

#include <string>

class CCompositeGeometry;
class CLayout;

/// Makes names. A generic name lies in a static buffer of its function: valid until its next call, for one thread only.
/// Units are codes of UUnits; an unknown one is fatal where the name has a length in it.
class UElementNameGenerator {
public:
    UElementNameGenerator() = delete;

    /// Of a text, circle, rectangle, polygon or line. A polygon of any kind is named as a rectangle, since the kinds
    /// cannot be told apart; "???" for anything else. When the first component is not of the class that its type says,
    /// the text of the previous call stays. Both are warned of.
    static char* GetGenericGraphicElementName(int unit, CCompositeGeometry* element);
    /// Of a flexible track.
    /// @param maxLength  of one piece, mm
    static char* GetGenericFlexElementName(int unit, double maxLength);
    /// The label in a layout: "PREFIX-NAME" where prefixes are shown and there is one, else the name alone.
    /// @param layout  says whether prefixes are shown; null leaves it to the preferences for new layouts
    static void GetPrefixedElementName(CCompositeGeometry* element, CLayout* layout, std::string& out);
};
