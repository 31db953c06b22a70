// Everything that hangs together with an element.
#pragma once

#include <functional>
#include <set>
#include <vector>

class CCompositeGeometry;

/// Orders elements by their address.
struct CItemAddrLessThan {
    bool operator()(const CCompositeGeometry* a, const CCompositeGeometry* b) const
    {
        return std::less<const CCompositeGeometry*>()(a, b);
    }
};

/// Collects the elements that can be reached from one through connected joints. Owns none. It remembers where it was:
/// asked a second time, it only finds the start again.
class CQueryConnectedItems {
public:
    explicit CQueryConnectedItems(CCompositeGeometry* start) : mStart(start) {}
    virtual ~CQueryConnectedItems() = default;

    /// Appends the start, then what is connected to it, depth first, following the joints of each element in their
    /// order. Ends the process at a joint that is connected to nothing.
    void GetConnectedItems(std::vector<CCompositeGeometry*>& out) { FindAllConnectedItems(out, mStart); }

private:
    void FindAllConnectedItems(std::vector<CCompositeGeometry*>& out, CCompositeGeometry* item);

    CCompositeGeometry* mStart;
    std::set<CCompositeGeometry*, CItemAddrLessThan> mVisited;
};
