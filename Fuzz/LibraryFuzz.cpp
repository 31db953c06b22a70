// A track library; and whatever a check finds whole has to load.
#include "CMemoryFile.h"

#include "Checks/CDocumentChecker.h"
#include "TrackLibraries/CRailSet.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    static CMemoryFile sFile("library");
    sFile.Set(bytes, size);
    const bool whole = CDocumentChecker::CheckLibrary({bytes, size}).empty();
    CRailSet library(sFile.GetPath());
    const int code = library.Load();
    if (whole && code != CRailSet::kLoaded) {
        std::abort();
    }
    return 0;
}
