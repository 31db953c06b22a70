// A layout in the making.
#pragma once

#include "Layouts/CLayout.h"

#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

class CBasicGeometry;
class CCompositeGeometry;
class CLayer;
class CPolyBIG;
struct tArticle;

/// A place in the drawing plane, mm.
struct tSpot {
    double x;
    double y;
};

/// What a layer starts with. Texts here are UTF-8.
struct tLayerSetting {
    const char* name;
    bool locked = false;
    bool visible = true;
};

/// Builds one layout: elements go to the layer in use, in the order in which they are added. Lengths in mm, y grows
/// downwards; texts are UTF-8.
class CPlan {
public:
    /// @param width, height  of the workspace
    /// @param layers  at least one; the first is in use
    CPlan(const char* author, const char* description, const char* revision, int width, int height,
          std::initializer_list<tLayerSetting> layers);

    /// Further elements go to that layer, which must exist.
    void UseLayer(const char* name);
    /// Adds an element, aligned to its box, which the layout owns from then on.
    CCompositeGeometry* Add(std::unique_ptr<CCompositeGeometry> element);

    /// Adds an article with its middle at (x, y), turned by `angle` degrees clockwise.
    CCompositeGeometry* Place(const tArticle& article, double x, double y, double angle = 0.0);
    /// Adds a text with its left top corner at (x, y).
    void Text(const char* text, double x, double y, int size);
    /// Adds a filled area; points in layout coordinates.
    void Area(const char* description, const std::vector<tSpot>& points, unsigned color);
    void Rectangle(const char* description, double left, double top, double width, double height, unsigned color);
    /// Adds an open line.
    void Line(const char* description, const std::vector<tSpot>& points, int thickness, unsigned color);
    void Circle(const char* description, double x, double y, double radius, unsigned color);

    /// Number of elements so far: what GroupSince counts from.
    size_t Count();
    /// Groups the elements added since there were `first`; groups among them are members of the new one.
    void GroupSince(size_t first);

    /// Whether nothing from a library has its box within `distance` of a point.
    bool IsFree(double x, double y, double distance);

    /// Writes the layout. @return false when that failed
    bool Save(const std::string& path);

private:
    CCompositeGeometry* AddShape(const char* description, CBasicGeometry* component, unsigned color);
    void AddPolygon(const char* description, CPolyBIG* polygon, const std::vector<tSpot>& points, int thickness,
                    unsigned color);

    CLayout mLayout;
    CLayer* mLayer = nullptr;
};
