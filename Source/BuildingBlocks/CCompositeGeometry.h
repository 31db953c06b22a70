// One element of a layout or a track library.
#pragma once

#include "BuildingBlocks/BasicGeometries/CBasicGeometry.h"
#include "BuildingBlocks/CGradeVector.h"
#include "CBlockPool/CBlockPool.h"
#include "CColor/RGBColor.h"
#include "CPoint/CPoint.h"
#include "CRect/DRect.h"

#include <boost/container/small_vector.hpp>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

class CDrawingOptions;
class CFieldStream;
class CLayer;
class CTaggedFile;
namespace Platform {
class CDrawing;
}

/// Which catalogue article an element is. Texts are zero-terminated Mac OS Roman. Lies in raw memory as it lies here.
struct tLibraryItemAttributes {
    char name[32] = "-"; ///< the manufacturer's product number
    char description[64] = "-";
    char manufacturer[32] = "-";
    char railSetName[128] = "-"; ///< the track library's name; a single character stands for none
    char prefix[8] = "";
    int libraryNumber = 1; ///< carried
    int price = 0;
    int currency = 129;
    int modelScale = 16;
    bool libraryFlag = false; ///< carried
};
static_assert(sizeof(tLibraryItemAttributes) == 284);

/// Where and how an element lies in its layout. Lengths in mm, angles in degrees.
struct tLayoutItemAttributes {
    uint32_t uniqueID = 0;
    RGBColor fillColor = {0, 0, 0};
    RGBColor secondColor = {0, 0, 0}; ///< carried in raw memory; cleared by every load
    bool displayFlag = true;          ///< carried in raw memory only
    bool fillMode = true;
    bool selected = false;
    int zOrder = 0;
    CPoint position;             ///< of the components' origin; z is the height
    CPoint secondReferencePoint; ///< carried in raw memory only
    double angle = 0.0;
    CGradeVector grade;
    CLayer* layer = nullptr; ///< not owned
};

/// An element: a piece of track, an accessory, a graphic or a text, made of components that it owns. It is the owner of
/// all their joints.
class CCompositeGeometry {
public:
    /// Most elements have one component, which then needs no block of its own.
    using tComponents = boost::container::small_vector<CBasicGeometry*, 1>;

    /// Bytes of the raw record in front of the grade.
    static constexpr int kRawSizeBeforeGrade = 422;

    /// An element without components, with a new unique ID, which is also its z-order.
    CCompositeGeometry();
    /// A copy with a unique ID of its own. A component of unknown type ends the copying: what was copied so far is
    /// kept, the attributes stay at their defaults.
    explicit CCompositeGeometry(CCompositeGeometry* source);
    /// Reads the raw record, whose size nothing limits: see GetParameterAsRaw.
    /// An unknown component type ends the reading.
    explicit CCompositeGeometry(void* raw);
    CCompositeGeometry(const CCompositeGeometry&) = delete;
    CCompositeGeometry& operator=(const CCompositeGeometry&) = delete;
    virtual ~CCompositeGeometry();

    static void* operator new(size_t size) { return CBlockPool::Allocate(size); }
    static void* operator new(size_t size, const std::nothrow_t& tag) noexcept
    {
        return CBlockPool::Allocate(size, tag);
    }
    static void operator delete(void* block, size_t size) noexcept { CBlockPool::Release(block, size); }

    /// Reads an element record: magic and version (32 bits each), the attributes (keys 200 to 225), then the
    /// components. The components are aligned so that their box starts at (0, 0), and the position moves by as much.
    /// @param error  receives the reason of a failure, except for a version below 3
    /// @return false when the record is damaged; what was read before stays in the element
    bool Load(FILE* file, std::string& error);
    /// Writes an element record of version 4. A failure shows in the stream's error state.
    void Save(FILE* file);
    /// Writes the raw record: library attributes (284 bytes), position, second reference point (three doubles each),
    /// z-order, angle, both colours, display flag, fill mode, layer name (64 bytes), grade, number of components,
    /// components. Host byte order, packed. @return the position behind it
    void* GetParameterAsRaw(void* destination);
    int GetParameterRawSize();
    /// Whether a raw record lies whole in `available` bytes and all its components are known; for blocks from
    /// elsewhere, before an element is made of them.
    /// @param size  set to the record's length when it does
    static bool MeasureRawRecord(const void* raw, size_t available, size_t& size);

    /// Passes the fields that the copying constructor reads. An element that is given its fields has no components
    /// before; one of unknown kind ends them.
    void TransferFields(CFieldStream& fields);

    /// True when name and library name are the same bytes; nothing else counts.
    bool Equals(const CCompositeGeometry* other) const;

    /// Appends a component and owns it from then on; it takes the middle rail of the first one. A full element does not
    /// take it.
    void AppendBIG(CBasicGeometry* big);
    /// @return the component, or null for an index outside the list
    CBasicGeometry* GetBIGAtIndex(short index) const;
    /// Index of the last place of the component, or -1.
    int GetIndexOfBIG(CBasicGeometry* big) const;
    /// Takes a component out of the list; the caller owns it then. Nothing happens for an index outside the list.
    void DeleteBIG(int index);
    /// Puts a component in the place of another, which the caller owns then.
    void ReplaceBIG(int index, CBasicGeometry* big);
    size_t GetNumberOfComponents() const { return mComponents.size(); }
    tComponents& GetComponents() { return mComponents; }
    const tComponents& GetComponents() const { return mComponents; }
    /// Components that are straight, curved or flexible track.
    int GetNumberOfTrackBIGs() const;
    /// @return the first of them, or null
    CBasicGeometry* GetFirstTrackBIG() const;

    /// Replaces `joints` by the allowed joints in component order, those of the left end first.
    /// @param includeConnected  also joints that are not free
    /// @param recalculate  place them first, in layout coordinates
    void GetJoints(std::vector<CJoint*>& joints, bool includeConnected, bool recalculate);
    /// Places all joints in layout coordinates.
    void DefineAllJoints();

    /// The box of all components in the element's coordinates: add the position for the layout's. Without components
    /// `box` stays.
    void CalcBoundingBox(DRect& box);
    /// The same with texts where they stand, turned as they are drawn. (A text's own box starts at (0, 0).)
    void CalcPlacedBox(DRect& box);
    /// Moves the components so that their box starts at (0, 0). A grade stays as it is stored.
    /// @param box  receives the box before the move; may be null
    /// @return by how much they moved
    CPoint AlignComponentsLeftTop(DRect* box);
    /// Move the components, and a grade with them, so that the middle of their placed box, or a joint, lies at the
    /// element's origin. The position stays, so the element moves in the layout by what they return.
    CPoint CenterAllComponents();
    CPoint AlignComponentsOnJoint(int component, int joint);
    /// Moves the element so that a joint of a component lies on a point of the layout, height included. Nothing happens
    /// for a component or joint that is not there.
    void AlignComponentJointOnPoint(int component, int joint, const CPoint& point);
    /// Multiplies the size of all components about the element's origin, which stays where it is, and a grade with
    /// them: its slope stays. Rails keep their width, which follows the model scale. A factor that is not positive
    /// changes nothing.
    void Scale(double factor);
    /// Joins open polylines of the same thickness, colour and width whose ends meet (CPolyBIG::kSamePlace) into one
    /// each, in the place of the first; those that run back into themselves are closed. Quadratic in the components;
    /// an element of more than Bounds::kMostComponents stays as it is.
    /// @return how many components are gone
    int SimplifyJoinPolylines();
    /// Turns the element as a rigid whole, about the middle of the placed box that it has unturned, or about a point of
    /// the layout. The components are moved so that the left top corner of their placed box stays where it is in the
    /// element; a grade turns with them. Turning back restores the element.
    void RotateBy(double angle);
    void RotateBy(const CPoint& centre, double angle);
    /// Turns the element about the middle of its unturned box so that it has that angle, less whole turns. No angle
    /// that is not finite turns anything.
    void SetAngle(double angle);

    /// The middle rail, which all components share: the first one's; 0 without components.
    void SetMidRailFlag(int flag);
    int GetMidRailFlag() const;
    /// The first thickness above 0, else that of the last component.
    void SetLineThickness(int thickness);
    int GetLineThickness() const;
    /// Switching the filling off leaves a light grey fill colour.
    void SetFillMode(bool on);
    bool GetFillMode() const { return mLayout.fillMode; }
    /// Sum of the components' track lengths, mm.
    double GetTrackLength();

    /// Draws the element alone, where it lies in its layout. Its joints are placed anew, nothing else of it changes.
    /// Defined beside the renderer, which knows elements and is not known by them.
    /// @param pixel  size of what the drawing just shows, mm
    void Render(Platform::CDrawing& drawing, const CDrawingOptions& options, double pixel);

    // Library attributes. Texts are cut to their fields; a null text changes nothing.
    const char* GetName() const { return mLibrary.name; }
    void SetName(const char* name);
    const char* GetDescription() const { return mLibrary.description; }
    void SetDescription(const char* description);
    const char* GetManufacturer() const { return mLibrary.manufacturer; }
    void SetManufacturer(const char* manufacturer);
    const char* GetRailSetName() const { return mLibrary.railSetName; }
    void SetRailSetName(const char* name);
    /// False for a library name of one character or none.
    bool HasRailSetName() const { return mLibrary.railSetName[0] != 0 && mLibrary.railSetName[1] != 0; }
    const char* GetPrefix() const { return mLibrary.prefix; }
    void SetPrefix(const char* prefix);
    int GetPrice() const { return mLibrary.price; }
    void SetPrice(int price) { mLibrary.price = price; }
    int GetCurrency() const { return mLibrary.currency; }
    void SetCurrency(int currency) { mLibrary.currency = currency; }
    int GetModelScale() const { return mLibrary.modelScale; }
    void SetModelScale(int scale) { mLibrary.modelScale = scale; }
    tLibraryItemAttributes& GetLibraryItemAttributes() { return mLibrary; }
    const tLibraryItemAttributes& GetLibraryItemAttributes() const { return mLibrary; }

    // Layout attributes.
    tLayoutItemAttributes& GetLayoutItemAttributes() { return mLayout; }
    const tLayoutItemAttributes& GetLayoutItemAttributes() const { return mLayout; }
    const CPoint& GetPosition() const { return mLayout.position; }
    void SetPosition(double x, double y)
    {
        mLayout.position.x = x;
        mLayout.position.y = y;
    }
    void SetZPosition(double z) { mLayout.position.z = z; }
    void MoveBy(double dx, double dy) { SetPosition(mLayout.position.x + dx, mLayout.position.y + dy); }
    double GetAngle() const { return mLayout.angle; }
    const CGradeVector& GetGrade() const { return mLayout.grade; }
    void SetGrade(const CGradeVector& grade) { mLayout.grade = grade; }
    CLayer* GetLayer() const { return mLayout.layer; }
    void SetLayer(CLayer* layer) { mLayout.layer = layer; }
    int GetZOrder() const { return mLayout.zOrder; }
    void SetZOrder(int zOrder) { mLayout.zOrder = zOrder; }
    const RGBColor& GetFillColor() const { return mLayout.fillColor; }
    bool IsSelected() const { return mLayout.selected; }
    void Select() { mLayout.selected = true; }
    void Unselect() { mLayout.selected = false; }
    uint32_t GetUniqueID() const { return mLayout.uniqueID; }

    /// The next construction's ID; never reset.
    static uint32_t sNextUniqueID;

private:
    bool ReadCompositeParameter(FILE* file, int version, int& componentCount);
    /// Reads the numbers between prefix and layer name record by record, or decodes them from a run of the usual shape.
    void WriteCompositeParameter(FILE* file);
    static int ReadComponentTypeCode(FILE* file, int version);
    bool LoadComponents(FILE* file, int version, int count, std::string& error);
    /// Appends a component, or destroys it when the element is full.
    void AppendOrDrop(std::unique_ptr<CBasicGeometry> big);
    /// Puts a component at the end of the list and makes this element the owner of its joints.
    void Adopt(CBasicGeometry* big);
    /// Aligns the components after a load and moves the position along.
    void AlignLoadedComponents();
    void MoveComponentsBy(double dx, double dy);
    /// Moves components and grade, and places the joints.
    CPoint MoveContentsBy(double dx, double dy);
    bool HasJoint(int component, int joint) const;
    /// Left top corner of the box; a text is only measured when it is turned, since it starts at (0, 0) otherwise.
    CPoint CalcLeftTop();

    tComponents mComponents;
    tLibraryItemAttributes mLibrary;
    tLayoutItemAttributes mLayout;
};
