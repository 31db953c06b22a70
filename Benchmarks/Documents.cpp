#include "Documents.h"

#include "BuildingBlocks/BasicGeometries/CCurveBIG.h"
#include "BuildingBlocks/BasicGeometries/CFlexTrackBIG.h"
#include "BuildingBlocks/BasicGeometries/CStraightBIG.h"
#include "BuildingBlocks/BasicGeometries/CTextBIG.h"
#include "BuildingBlocks/CCompositeGeometry.h"
#include "Layers/CLayerManager.h"
#include "Layouts/CLayout.h"
#include "Layouts/Groups/CGroup.h"
#include "Layouts/Groups/UGroups.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <unistd.h>
#include <vector>

namespace {
constexpr double kTrackbedWidth = 30.0;
constexpr double kGauge = 16.5;

std::unique_ptr<CBasicGeometry> MakeComponent(const tDocumentShape& shape, int i)
{
    if (i < shape.texts) {
        auto text = std::make_unique<CTextBIG>();
        text->SpecifyTextGeometry(("Station " + std::to_string(i)).c_str(), "Futura", 24);
        return text;
    }
    if (i < shape.texts + shape.flexTracks) {
        std::vector<CPoint> points;
        for (int p = 0; p < 8; ++p) {
            points.emplace_back(p * 40.0, 30.0 * std::sin(p * 0.7 + i), 0.0);
        }
        auto flex = std::make_unique<CFlexTrackBIG>();
        flex->SpecifyFlexGeometry(0.0, 0.0, points, 0.0, kTrackbedWidth, 900.0);
        return flex;
    }
    if (i % 2 == 0) {
        auto straight = std::make_unique<CStraightBIG>();
        straight->SpecifyStraightGeometry(0.0, 0.0, 230.0, 0.0, kGauge, kTrackbedWidth, true, true);
        return straight;
    }
    auto curve = std::make_unique<CCurveBIG>();
    curve->SpecifyCurveGeometry(0.0, 0.0, 360.0, 30.0, 0.0, kGauge, kTrackbedWidth, true, true);
    return curve;
}

void FillLayout(CLayout& layout, const tDocumentShape& shape)
{
    for (int i = 0; i < shape.layers; ++i) {
        layout.GetLayerList()->AddLayer(("Layer " + std::to_string(i)).c_str());
    }
    for (int i = 0; i < shape.elements; ++i) {
        auto element = std::make_unique<CCompositeGeometry>();
        element->AppendBIG(MakeComponent(shape, i).release());
        if (i >= shape.texts) {
            element->SetName(("Art " + std::to_string(10000 + i % shape.articleNames)).c_str());
            element->SetRailSetName(("Library " + std::to_string(i % shape.libraries)).c_str());
            element->SetDescription("A piece of track");
            element->SetManufacturer("Nowhere Models");
        }
        element->SetPosition(17.0 * (i % 300), 23.0 * (i / 300));
        element->RotateBy(30.0 * (i % 12));
        element->SetLayer(
            layout.GetLayerList()->GetLayerAtIndex(static_cast<int>(int64_t{i} * shape.layers / shape.elements)));
        layout.AddItem(element.release());
    }
    CGroup* outer = nullptr;
    for (int i = 0; i < shape.groups; ++i) {
        std::vector<CCompositeGeometry*>& elements = layout.GetElements();
        const size_t first = static_cast<size_t>(2 * i) % (elements.size() - 1);
        CGroup* group = UGroups::NewGroupFromElementVector(&layout, {elements[first], elements[first + 1]});
        if (shape.nested && outer != nullptr) {
            outer->AddMember(group);
        }
        outer = group;
    }
}
} // namespace

CTemporaryDocument::CTemporaryDocument(const tDocumentShape& shape)
{
    mPath = (std::filesystem::temp_directory_path() / "velmora-benchmark-XXXXXX").string();
    const int descriptor = mkstemp(mPath.data());
    CLayout layout;
    FillLayout(layout, shape);
    if (descriptor < 0 || !layout.Save(&mPath)) {
        std::perror(mPath.c_str());
        std::exit(EXIT_FAILURE);
    }
    close(descriptor);
    mSize = std::filesystem::file_size(mPath);
}

CTemporaryDocument::~CTemporaryDocument()
{
    std::error_code ignored;
    std::filesystem::remove(mPath, ignored);
}

size_t WalkRecords(const std::string& path)
{
    static unsigned char buffer[1 << 20];
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        return 0;
    }
    size_t dataBytes = 0;
    size_t skip = 8; // the header
    size_t kept = 0;
    for (ssize_t got; (got = read(file, buffer + kept, sizeof buffer - kept)) > 0;) {
        const size_t end = kept + static_cast<size_t>(got);
        size_t at = 0;
        while (at + skip + 4 <= end) {
            at += skip;
            const unsigned char* record = buffer + at;
            // An element's header stands between records like one of 4 bytes.
            const size_t size =
                record[0] == 'R' && record[1] == 'C' ? 4 : static_cast<size_t>(record[2] << 8 | record[3]);
            dataBytes += size;
            skip = size + 4;
        }
        if (skip > end - at) {
            skip -= end - at;
            kept = 0;
        } else {
            kept = end - at - skip;
            std::copy(buffer + end - kept, buffer + end, buffer);
            skip = 0;
        }
    }
    close(file);
    return dataBytes;
}
