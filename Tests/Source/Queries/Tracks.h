// Elements of straight tracks that are joined as a test says.
#pragma once

#include "BuildingBlocks/BasicGeometries/CStraightBIG.h"
#include "BuildingBlocks/CCompositeGeometry.h"
#include "Elements/Utilities/UElementVectorOperations.h"

#include <memory>
#include <string>
#include <vector>

/// Owns its elements, which are called "0", "1", ... in the order in which they were added.
class CTracks {
public:
    ~CTracks()
    {
        for (size_t i = 0; i < mElements.size(); ++i) { // while all live: a joint may have lost its partner to another
            for (int joint = 2 * static_cast<int>(mElements[i]->GetNumberOfComponents()); joint-- > 0;) {
                Joint(i, joint)->DisconnectJoint();
            }
        }
        UElementVectorOperations::DeleteItemVector(mElements);
    }

    /// A new element of that many joints, two to a component; of an odd number, the last component has but joint 0.
    CCompositeGeometry* Add(int joints = 2)
    {
        mElements.push_back(new CCompositeGeometry);
        CCompositeGeometry* element = mElements.back();
        element->SetName(std::to_string(mElements.size() - 1).c_str());
        for (; joints > 0; joints -= 2) {
            auto straight = std::make_unique<CStraightBIG>();
            straight->SpecifyStraightGeometry(0, 0, 100, 0, 0, 30, true, joints > 1);
            element->AppendBIG(straight.release());
        }
        return element;
    }
    /// Adds that many elements of two joints in a row, each joined by its joint 1 to joint 0 of the next.
    void AddChain(size_t count)
    {
        const size_t first = mElements.size();
        for (size_t i = first; i < first + count; ++i) {
            Add();
            if (i > first) {
                Connect(i - 1, 1, i, 0);
            }
        }
    }
    void Connect(size_t a, int jointOfA, size_t b, int jointOfB)
    {
        Joint(a, jointOfA)->ConnectToJoint(Joint(b, jointOfB));
    }
    CJoint* Joint(size_t element, int joint) const
    {
        return mElements[element]->GetBIGAtIndex(static_cast<short>(joint / 2))->GetJoint(joint % 2);
    }
    CCompositeGeometry* operator[](size_t i) const { return mElements[i]; }
    const std::vector<CCompositeGeometry*>& All() const { return mElements; }
    std::vector<CCompositeGeometry*> Some(const std::vector<size_t>& indices) const
    {
        std::vector<CCompositeGeometry*> some;
        for (const size_t i : indices) {
            some.push_back(mElements[i]);
        }
        return some;
    }

private:
    std::vector<CCompositeGeometry*> mElements;
};

inline std::vector<std::string> Names(const std::vector<CCompositeGeometry*>& elements)
{
    std::vector<std::string> names;
    for (const CCompositeGeometry* element : elements) {
        names.emplace_back(element->GetName());
    }
    return names;
}
