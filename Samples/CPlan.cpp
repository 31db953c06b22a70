#include "CPlan.h"

#include "Articles.h"
#include "Colors.h"
#include "RomanText.h"
#include "Settle.h"

#include "BuildingBlocks/BasicGeometries/COvalBIG.h"
#include "BuildingBlocks/BasicGeometries/CPolyBIG.h"
#include "BuildingBlocks/BasicGeometries/CTextBIG.h"
#include "BuildingBlocks/CCompositeGeometry.h"
#include "CheckError/CErr.h"
#include "Layers/CLayerManager.h"
#include "Layouts/Groups/UGroups.h"
#include "UnitLength/URailConstants.h"

namespace {
constexpr char kTextFont[] = "Helvetica";
constexpr int kFreePolygon = 1;
constexpr double kZoomFactor = 0.25;
} // namespace

CPlan::CPlan(const char* author, const char* description, const char* revision, int width, int height,
             std::initializer_list<tLayerSetting> layers)
{
    mLayout.SetAuthor(RomanText(author).c_str());
    mLayout.SetDesc(RomanText(description).c_str());
    mLayout.SetRevision(RomanText(revision).c_str());
    mLayout.SetWidthHeight(width, height);
    mLayout.SetZoomFactor(kZoomFactor);
    CLayerManager* manager = mLayout.GetLayerList();
    manager->Clear(); // the one every new layout has
    for (const tLayerSetting& setting : layers) {
        CLayer* layer = manager->AddLayer(RomanText(setting.name).c_str());
        layer->SetLocked(setting.locked);
        layer->SetVisible(setting.visible);
    }
    manager->SetActiveLayer(0);
    mLayer = manager->GetActiveLayer();
}

void CPlan::UseLayer(const char* name)
{
    mLayer = mLayout.GetLayerList()->GetLayerByName(RomanText(name).c_str());
    CErr::CheckNull(mLayer, "void CPlan::UseLayer(const char *)", "No such layer");
}

CCompositeGeometry* CPlan::Add(std::unique_ptr<CCompositeGeometry> element)
{
    element->SetLayer(mLayer);
    // What every load gives a component, track or not.
    const double railWidth = URailConstants::GetDefaultRailWidth(element->GetModelScale());
    for (CBasicGeometry* component : element->GetComponents()) {
        component->SetRailWidth(railWidth);
    }
    CCompositeGeometry* added = element.release();
    mLayout.AddItem(added);
    return added;
}

CCompositeGeometry* CPlan::Place(const tArticle& article, double x, double y, double angle)
{
    auto element = NewElement(article);
    element->RotateBy(angle);
    DRect box = {};
    element->CalcBoundingBox(box);
    const CPoint middle = UDRect::Center(box);
    element->SetPosition(x - middle.x, y - middle.y);
    return Add(std::move(element));
}

void CPlan::Text(const char* text, double x, double y, int size)
{
    auto* component = new CTextBIG;
    component->SpecifyTextGeometry(RomanText(text).c_str(), kTextFont, size);
    AddShape("Text", component, 0)->SetPosition(x, y);
}

CCompositeGeometry* CPlan::AddShape(const char* description, CBasicGeometry* component, unsigned color)
{
    auto element = std::make_unique<CCompositeGeometry>();
    element->AppendBIG(component);
    element->SetMidRailFlag(0);
    element->SetDescription(RomanText(description).c_str());
    element->GetLayoutItemAttributes().fillColor = ColorOf(color);
    return Add(std::move(element));
}

void CPlan::AddPolygon(const char* description, CPolyBIG* polygon, const std::vector<tSpot>& points, int thickness,
                       unsigned color)
{
    std::vector<CPoint> corners;
    corners.reserve(points.size());
    for (const tSpot& point : points) {
        corners.emplace_back(point.x, point.y, 0.0);
    }
    polygon->SpecifyPolyGeometry(0.0, 0.0, corners, 0.0, thickness, kFreePolygon);
    CCompositeGeometry* element = AddShape(description, polygon, color);
    const CPoint moved = element->AlignComponentsLeftTop(nullptr);
    element->MoveBy(-moved.x, -moved.y);
}

void CPlan::Area(const char* description, const std::vector<tSpot>& points, unsigned color)
{
    AddPolygon(description, new CPolyBIG, points, 1, color);
}

void CPlan::Rectangle(const char* description, double left, double top, double width, double height, unsigned color)
{
    const double right = left + width;
    const double bottom = top + height;
    Area(description, {{left, top}, {right, top}, {right, bottom}, {left, bottom}}, color);
}

void CPlan::Line(const char* description, const std::vector<tSpot>& points, int thickness, unsigned color)
{
    auto* line = new CPolyBIG;
    line->SetPolyCloseFlag(false);
    AddPolygon(description, line, points, thickness, color);
}

void CPlan::Circle(const char* description, double x, double y, double radius, unsigned color)
{
    auto* circle = new COvalBIG;
    circle->SpecifyOvalGeometry(0.0, 0.0, radius, 1);
    AddShape(description, circle, color)->SetPosition(x - radius, y - radius);
}

size_t CPlan::Count()
{
    return mLayout.GetElements().size();
}

void CPlan::GroupSince(size_t first)
{
    const std::vector<CCompositeGeometry*>& elements = mLayout.GetElements();
    UGroups::NewGroupFromElementVector(&mLayout,
                                       {elements.begin() + static_cast<std::ptrdiff_t>(first), elements.end()});
}

bool CPlan::IsFree(double x, double y, double distance)
{
    for (CCompositeGeometry* element : mLayout.GetElements()) {
        if (!element->HasRailSetName()) {
            continue; // hills and meadows, whose boxes are everywhere, and texts
        }
        DRect box = {};
        element->CalcBoundingBox(box);
        const CPoint& position = element->GetPosition();
        if (position.x + box.left - distance < x && x < position.x + box.right + distance &&
            position.y + box.top - distance < y && y < position.y + box.bottom + distance) {
            return false;
        }
    }
    return true;
}

bool CPlan::Save(const std::string& path)
{
    for (CCompositeGeometry* element : mLayout.GetElements()) {
        Settle(*element);
    }
    return mLayout.Save(&path);
}
