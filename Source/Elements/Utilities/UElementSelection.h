// Selected elements.
#pragma once

#include <set>
#include <vector>

class CCompositeGeometry;
class CGroupsManager;
class CJoint;
class CLayer;

/// Reads and changes which elements of a vector are selected, and answers questions about the selection. Nothing here
/// selects an element on a hidden or locked layer; unselecting asks for no layer. Elements are never owned.
class UElementSelection {
public:
    UElementSelection() = delete;

    using tElements = std::vector<CCompositeGeometry*>;
    using tElementSet = std::set<CCompositeGeometry*>;

    /// The first selected element, or null.
    static CCompositeGeometry* FindFirstSelectedItem(const tElements& elements);
    /// Each replaces `out` by the elements that fit, in order.
    static void GetSelectedElements(const tElements& elements, tElements& out);
    static void GetUnselectedElements(const tElements& elements, tElements& out);
    static int GetNumberOfSelectedItems(const tElements& elements);

    static void UnselectAll(const tElements& elements);
    /// A null layer stands for the elements that are on none.
    static void UnselectAllInLayer(const tElements& elements, const CLayer* layer);
    static void SelectAll(const tElements& elements);
    static void SelectAllInLayer(const tElements& elements, const CLayer* layer);
    /// Leaves selected what can be reached from an element through connected joints, the element included, and nothing
    /// else of `elements`.
    /// @param element  null for the first selected one; without that nothing happens
    static void SelectAllConnected(const tElements& elements, CCompositeGeometry* element);
    /// @param unselected,selected  receive the number of elements that were changed
    static void InvertSelection(const tElements& elements, int& unselected, int& selected);

    // Each adds to the selection what is like a given element, which need not be in the vector.
    static void SelectSameColor(const CCompositeGeometry* element, const tElements& elements);
    static void SelectSimilarManufacturer(const CCompositeGeometry* element, const tElements& elements);
    /// Nothing for an element of no library.
    static void SelectSimilarRailset(const CCompositeGeometry* element, const tElements& elements);
    /// Track of the same scale; nothing for an element that is no track.
    static void SelectSimilarScale(const CCompositeGeometry* element, const tElements& elements);
    static void SelectSimilarNames(const CCompositeGeometry* element, const tElements& elements);
    /// Graphics of no library: polygons of any kind, circles, or texts.
    static void SelectSimilarDynTypes(const CCompositeGeometry* element, const tElements& elements);
    /// Of the same kind for an element of no library that is no flexible track, else of the same name.
    static void SelectSimilar(const CCompositeGeometry* element, const tElements& elements);
    static void SelectTextElements(const tElements& elements);
    static void SelectTrackElements(const tElements& elements);

    /// True when all selected elements are on the layer of the first; false without a selection. Ends the process when
    /// the first is on no layer.
    static bool SelectionConsistsOfSingleLayer(const tElements& elements);
    /// True when one group holds all selected elements directly; false without a selection.
    static bool SelectionConsistsOfSingleGroup(const tElements& elements, const CGroupsManager* groups);

    /// Finds the ends of a section of track: elements with a joint that is free or leads out of it. Fewer than two
    /// elements are no section: true, with nothing set.
    /// @param first,last            receive the first such element and the last one behind it, or null; must be given
    /// @param firstJoint,lastJoint  receive the joints that lead out; may be null
    /// @return whether there are two ends at least
    static bool GetFirstLastTrackFromSection(const tElements& elements, CCompositeGeometry** first,
                                             CCompositeGeometry** last, CJoint** firstJoint = nullptr,
                                             CJoint** lastJoint = nullptr);
    /// Whether every joint of the element leads to an element of the set. Ends the process at a joint that is connected
    /// to nothing.
    /// @param joint  receives the first one that does not; untouched when all do; may be null
    static bool ConnectedOnlyWithinSelection(CCompositeGeometry* element, CJoint** joint, const tElementSet& selection);
    /// Whether one walk, from the first end of the elements and always on through the other joint of a component,
    /// passes all of them. False for fewer than two elements, and for a ring, which has no end.
    static bool IsSelectionContiguous(const tElements& elements);
    /// Whether a connected joint leads to an element of the set. Ends the process at one that is connected to nothing.
    static bool IsTrackDirectlyConnectedToAnyElementInSelection(CCompositeGeometry* element,
                                                                const tElementSet& selection);
};
