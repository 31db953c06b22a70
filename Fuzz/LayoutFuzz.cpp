// A layout as the importer takes it; and whatever a check finds whole has to load.
#include "CMemoryFile.h"

#include "Checks/CDocumentChecker.h"
#include "Elements/Utilities/UElementStatistics.h"
#include "Layouts/Utilities/CBoundLayout.h"

#include <cmath>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    static CMemoryFile sFile("layout");
    sFile.Set(bytes, size);
    const bool whole = CDocumentChecker::CheckLayout({bytes, size}).empty();
    CBoundLayout layout;
    const int code = layout.Load(sFile.GetPath());
    if (code < CLayout::kLoaded || code > 5 || (whole && code != CLayout::kLoaded)) {
        std::abort();
    }
    UElementStatistics::GetContentSummaryAsString(layout.GetElements());
    return 0;
}
