// Elements and records for the tests of the element model.
#pragma once

#include "BuildingBlocks/BasicGeometries/CCurveBIG.h"
#include "BuildingBlocks/BasicGeometries/CFlexTrackBIG.h"
#include "BuildingBlocks/BasicGeometries/COvalBIG.h"
#include "BuildingBlocks/BasicGeometries/CStraightBIG.h"
#include "BuildingBlocks/BasicGeometries/CTextBIG.h"
#include "BuildingBlocks/CCompositeGeometry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

using tElement = std::unique_ptr<CCompositeGeometry>;
using tBytes = std::vector<unsigned char>;

constexpr int kAllTypes[] = {kStraightType, kCurveType, kPolyType, kTextType, kOvalType, kFlexTrackType};

/// A component of each kind with values of its own in every field that is stored.
inline CBasicGeometry* NewComponent(int type)
{
    CBasicGeometry* component = nullptr;
    if (type == kStraightType) {
        auto* straight = new CStraightBIG;
        straight->SpecifyStraightGeometry(1.5, -2.25, 200.5, 30, 16.5, 40, true, false);
        component = straight;
    } else if (type == kCurveType) {
        auto* curve = new CCurveBIG;
        curve->SpecifyCurveGeometry(1.5, -2.25, 437.5, 22.5, 30, 16.5, 40, false, true);
        component = curve;
    } else if (type == kPolyType) {
        auto* poly = new CPolyBIG;
        poly->SpecifyPolyGeometry(1.5, -2.25, {{0, 0, 9}, {10.5, -3, 9}}, 30, 4, 7);
        poly->SetPolyCloseFlag(false);
        poly->SetTrackbedWidth(40);
        component = poly;
    } else if (type == kTextType) {
        auto* text = new CTextBIG;
        text->SpecifyTextGeometry("Yard", "Times", 36);
        text->MoveItemBy(1.5, -2.25);
        text->SetAngle(30);
        component = text;
    } else if (type == kOvalType) {
        auto* circle = new COvalBIG;
        circle->SpecifyOvalGeometry(1.5, -2.25, 12.5, 3);
        circle->SetAngle(30);
        component = circle;
    } else {
        auto* flex = new CFlexTrackBIG;
        flex->SpecifyFlexGeometry(1.5, -2.25, {{0, 0, 9}, {10.5, -3, 9}}, 30, 40, 850.5);
        component = flex;
    }
    RGBColor color = {1, 2, 0xFF03};
    component->SetFixedColor(color);
    component->SetRailWidth(0.75);
    component->SetMidRailFlag(-5);
    return component;
}

/// An element of one component, of a library unless that is "-".
inline tElement NewElement(int type, const char* name = "-", const char* library = "-")
{
    auto element = std::make_unique<CCompositeGeometry>();
    element->AppendBIG(NewComponent(type));
    element->SetName(name);
    element->SetRailSetName(library);
    return element;
}

/// An element with a value of its own in every field that is stored or copied.
inline tElement FullElement(int type, CLayer* layer)
{
    tElement element = NewElement(type, ("A" + std::to_string(type)).c_str(), "Alpha");
    element->SetDescription("Curve 22.5");
    element->SetManufacturer("Maker");
    element->SetPrefix("P");
    tLibraryItemAttributes& library = element->GetLibraryItemAttributes();
    library.libraryNumber = 11;
    library.price = -12;
    library.currency = 13;
    library.modelScale = 14;
    library.libraryFlag = true;
    element->GetLayoutItemAttributes() = {element->GetUniqueID(),
                                          {1, 2, 3},
                                          {4, 5, 6},
                                          false,
                                          false,
                                          true,
                                          -15,
                                          {1.25, 2.25, 3.25},
                                          {4.25, 5.25, 6.25},
                                          33.5,
                                          CGradeVector({1, 2, 0}, {100, 50, 0}, 7.5),
                                          layer};
    return element;
}

inline tElement NewText(const char* text, const char* font = "Futura")
{
    tElement element = NewElement(kTextType);
    static_cast<CTextBIG*>(element->GetBIGAtIndex(0))->SpecifyTextGeometry(text, font, 24);
    return element;
}

/// Borrowed pointers, as the operations on vectors take them.
inline std::vector<CCompositeGeometry*> Pointers(const std::vector<tElement>& elements)
{
    std::vector<CCompositeGeometry*> pointers;
    for (const tElement& element : elements) {
        pointers.push_back(element.get());
    }
    return pointers;
}
