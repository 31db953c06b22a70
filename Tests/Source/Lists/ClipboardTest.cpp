// Blocks of elements from elsewhere: what is too short or unknown is refused as a whole.
#include "Bounds.h"
#include "BuildingBlocks/BasicGeometries/CCurveBIG.h"
#include "BuildingBlocks/BasicGeometries/CFlexTrackBIG.h"
#include "BuildingBlocks/BasicGeometries/COvalBIG.h"
#include "BuildingBlocks/BasicGeometries/CStraightBIG.h"
#include "BuildingBlocks/BasicGeometries/CTextBIG.h"
#include "BuildingBlocks/CCompositeGeometry.h"
#include "Elements/Utilities/UElementVectorOperations.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <vector>

using tElements = UElementVectorOperations::tElements;
using Byte = UElementVectorOperations::Byte;

TEST(Clipboard, BoundedReaderTakesWholeBlocksAndRefusesEverythingElse)
{
    tElements elements = {new CCompositeGeometry, new CCompositeGeometry};
    for (CBasicGeometry* component :
         std::initializer_list<CBasicGeometry*>{new CStraightBIG, new CCurveBIG, new COvalBIG}) {
        elements[0]->AppendBIG(component);
    }
    auto* flex = new CFlexTrackBIG;
    flex->SpecifyFlexGeometry(1.0, 2.0, {{0, 0, 0}, {100, 0, 0}, {200, 50, 0}}, 30.0, 30.0, 900.0);
    elements[1]->AppendBIG(flex);
    auto* text = new CTextBIG;
    text->SpecifyTextGeometry("Bahnhof", "Futura", 24);
    elements[1]->AppendBIG(text);
    elements[1]->AppendBIG(new CPolyBIG);
    unsigned long size = 0;
    const std::unique_ptr<Byte[]> block(UElementVectorOperations::ElementVectorToRawMem(elements, size));

    tElements back;
    ASSERT_TRUE(UElementVectorOperations::ElementVectorFromRawMem(back, block.get(), size));
    ASSERT_EQ(back.size(), 2u);
    unsigned long backSize = 0;
    const std::unique_ptr<Byte[]> again(UElementVectorOperations::ElementVectorToRawMem(back, backSize));
    ASSERT_EQ(backSize, size);
    EXPECT_EQ(std::memcmp(block.get(), again.get(), size), 0);
    UElementVectorOperations::DeleteItemVector(back);

    for (unsigned long cut = 0; cut < size; ++cut) { // in memory of its own, so that reading behind the end is seen
        const std::unique_ptr<Byte[]> part(new Byte[cut]);
        std::memcpy(part.get(), block.get(), cut);
        EXPECT_FALSE(UElementVectorOperations::ElementVectorFromRawMem(back, part.get(), cut)) << cut;
    }
    const size_t firstType = 4 + CCompositeGeometry::kRawSizeBeforeGrade + CGradeVector::kRawSize + 4;
    const std::pair<size_t, int> damages[] = {
        {0, 3}, {0, -1}, {firstType - 4, 1000000}, {firstType - 4, -1}, {firstType, 7}};
    for (const auto& [offset, value] : damages) { // numbers of elements and of components, a type
        std::vector<Byte> damaged(block.get(), block.get() + size);
        std::memcpy(&damaged[offset], &value, sizeof value);
        EXPECT_FALSE(UElementVectorOperations::ElementVectorFromRawMem(back, damaged.data(), damaged.size()));
        EXPECT_TRUE(back.empty());
    }

    // Fields full to the last byte end inside themselves.
    std::vector<Byte> full(block.get(), block.get() + size);
    std::memset(&full[4], 'x', 264);
    ASSERT_TRUE(UElementVectorOperations::ElementVectorFromRawMem(back, full.data(), full.size()));
    EXPECT_EQ(std::strlen(back[0]->GetName()), 31u);
    EXPECT_EQ(std::strlen(back[0]->GetPrefix()), 7u);
    UElementVectorOperations::DeleteItemVector(back);
    UElementVectorOperations::DeleteItemVector(elements);
}

TEST(Clipboard, WhatAFullElementDropsDoesNotShiftTheNext)
{
    tElements elements = {new CCompositeGeometry, new CCompositeGeometry};
    while (elements[0]->GetNumberOfComponents() < Bounds::kMostComponents + 100) {
        elements[0]->GetComponents().push_back(new CStraightBIG); // as a document may have it
    }
    elements[1]->AppendBIG(new CCurveBIG);
    elements[1]->SetName("P 100");
    unsigned long size = 0;
    const std::unique_ptr<Byte[]> block(UElementVectorOperations::ElementVectorToRawMem(elements, size));
    for (const bool bounded : {true, false}) {
        tElements back;
        ASSERT_TRUE(bounded ? UElementVectorOperations::ElementVectorFromRawMem(back, block.get(), size)
                            : UElementVectorOperations::ElementVectorFromRawMem(back, block.get()));
        ASSERT_EQ(back.size(), 2u);
        EXPECT_EQ(back[0]->GetNumberOfComponents(), Bounds::kMostComponents);
        EXPECT_STREQ(back[1]->GetName(), "P 100");
        EXPECT_EQ(back[1]->GetComponents().front()->GetType(), kCurveType);
        UElementVectorOperations::DeleteItemVector(back);
    }
    UElementVectorOperations::DeleteItemVector(elements);
}
