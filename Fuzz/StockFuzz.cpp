// A stock file, entry by entry.
#include "CMemoryFile.h"

#include "Stock/CStock.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    static CMemoryFile sFile("stock");
    sFile.Set(bytes, size);
    size_t length = 0;
    CStock::ForEachEntry(sFile.GetPath().c_str(), [&length](const std::string& library, const std::string& product,
                                                            int) { length += library.size() + product.size(); });
    return 0;
}
