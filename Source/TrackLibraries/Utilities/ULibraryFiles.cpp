#include "TrackLibraries/Utilities/ULibraryFiles.h"

#include "KVUPath/KVUPath.h"
#include "Platform/Composition.h"
#include "Platform/MacRoman.h"

std::string ULibraryFiles::GetLibraryName(const std::string& path)
{
    std::string name = Platform::ComposeUtf8(KVUPath::GetLastPathComponent(path));
    Platform::Utf8ToMacRoman(name, name); // leaves what it cannot convert
    return name;
}
