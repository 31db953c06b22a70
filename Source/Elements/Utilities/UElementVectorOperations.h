// Operations on vectors of elements.
#pragma once

#include "CPoint/CPoint.h"
#include "CRect/DRect.h"

#include <map>
#include <vector>

class CCompositeGeometry;
class CLayer;

/// Filters, measures, moves, deletes and serialises vectors of elements, which do not own their elements unless an
/// operation says so. Lengths in mm.
class UElementVectorOperations {
public:
    UElementVectorOperations() = delete;

    using tElements = std::vector<CCompositeGeometry*>;
    using tZOrders = std::map<CCompositeGeometry*, int>;
    using Byte = unsigned char;

    /// Stands for no currency found.
    static constexpr int kNoCurrency = 127;

    /// The elements as one block for the clipboard: their number (int) and the raw record of each, host byte order.
    /// @param size  receives the block's length
    /// @return the block; the caller releases it with delete[]
    static Byte* ElementVectorToRawMem(tElements& elements, unsigned long& size);
    /// Appends new elements, which the caller owns, from such a block. The block is trusted to be whole.
    /// @return false when an element could not be made; those before it stay
    static bool ElementVectorFromRawMem(tElements& elements, Byte* block);

    /// The same for a block of `size` bytes from elsewhere. @return false, with nothing appended, when it is too short
    /// for what it claims to hold or names an unknown component
    static bool ElementVectorFromRawMem(tElements& elements, Byte* block, size_t size);

    /// Each replaces `out` by the elements that fit, in order.
    static void GetAllTextElements(const tElements& elements, tElements& out);
    static void GetAllGenericFlextracks(const tElements& elements, tElements& out);
    static void GetAllElementsForLayer(const tElements& elements, const CLayer* layer, tElements& out);
    /// @return the first element of that name, byte for byte, or null
    static CCompositeGeometry* FindElement(const tElements& elements, const char* name);
    /// Destroys every element, last first, and empties the vector.
    static void DeleteItemVector(tElements& elements);
    /// Appends a copy of each element, which the caller owns.
    static void CloneItemVector(const tElements& elements, tElements& out);
    static void MoveItemVec(const tElements& elements, double dx, double dy);
    /// Turns every element about one point of the layout, degrees.
    static void RotateItemVectorBy(const tElements& elements, const CPoint& centre, double angle);
    /// Names and describes the flexible tracks of no library after their maximum length, in the unit of the
    /// preferences; centimetres where that is unknown.
    static void UpdateGenericFlexNameDescription(const tElements& elements);

    /// Sum of the track lengths. The second argument changes nothing.
    static double GetElementVectorRailLength(const tElements& elements, int);
    /// Sum of all prices, whatever their currency, clamped to 32 bits, and the currency of the first track element,
    /// or kNoCurrency.
    static void GetElementVectorCostsCurrency(const tElements& elements, int& sum, int& currency);
    /// Code of the scale with the narrowest gauge; 22 for an empty vector.
    static int GetElementVectorSmallestScale(const tElements& elements);
    /// False when an element of either vector has the same position as one of the other, to 0.001 in x and y.
    static bool IsLocationUnobstructed(const tElements& elements, const tElements& others);
    /// Allowed joints of all elements, free or not.
    static int GetNumberOfJoints(const tElements& elements);
    /// True when the line width of every element can be adjusted, and there is one.
    static bool IsAdjustableLineWidth(const tElements& elements);

    static void ApplyTrackbedWidth(const tElements& elements, double width);
    /// Sets the z-order of those elements that the map knows.
    static void ApplyZOrder(const tElements& elements, const tZOrders& zOrders);
    /// Records the z-order of every element.
    static void StoreElementVectorZOrder(const tElements& elements, tZOrders& zOrders);
    /// The first element with the lowest or highest z-order; null for an empty vector.
    static CCompositeGeometry* FindElementWithMinZOrder(const tElements& elements);
    static CCompositeGeometry* FindElementWithMaxZOrder(const tElements& elements);
    /// Takes the mark from every marked joint.
    static void ResetJointFlags(const tElements& elements);
    /// The box of all elements in the layout. Without elements `bounds` stays.
    static void GetElementVectorBounds(const tElements& elements, DRect& bounds);
    /// Middle of that box; z stays. Without elements the point stays.
    static void GetElementVectorCenter(const tElements& elements, CPoint& centre);
    /// Largest height of a position; 0 for an empty vector.
    static double GetElementVectorMaxZPosition(const tElements& elements);
};
