#include "Stock/CStock.h"

#include "BuildingBlocks/CCountedCIG.h"
#include "CheckError/CErr.h"
#include "CheckError/ULog.h"
#include "KVUPath/KVUPath.h"
#include "KVUStr/KVUStr.h"
#include "Platform/MacRoman.h"
#include "TrackLibraries/CRailSet.h"
#include "TrackLibraries/CRailsetFolder.h"
#include "UFiles/UFiles.h"

#include <CoreFoundation/CoreFoundation.h>
#include <boost/foreach.hpp>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>

namespace {
/// Between library name and product number in keys.
constexpr char kKeySeparator = '#';
/// Bytes of the application folder's path, with a separator and zero.
constexpr int kFolderSize = 256;

/// A name from the preferences is Mac OS Roman, one from a command line what the file system holds; joined with a
/// folder, only the latter serves.
std::string FileSystemName(const std::string& name)
{
    return KVUStr::IsConvertible(name, kCFStringEncodingUTF8) ? name : Platform::MacRomanToUtf8(name);
}
} // namespace

CStock* CStock::Instance()
{
    static CStock* sInstance = nullptr;
    if (sInstance == nullptr) {
        sInstance = new (std::nothrow) CStock;
        CErr::CheckNull(sInstance, "static CStock *CStock::Instance()", "Failed to construct CStock singleton member");
    }
    return sInstance;
}

CStock::~CStock()
{
    ClearStock();
}

bool CStock::Load(const char* fileName)
{
    if (fileName != nullptr) {
        mFileName = fileName;
    }
    if (mFileName.empty()) {
        return false;
    }
    LocalFileToAbsolutePath();
    return LoadFromFile(mFileName.c_str());
}

bool CStock::Save()
{
    if (mFileName.empty()) {
        ULog::Info("%s: Failed to save - No filename supplied.", "bool CStock::Save()");
        return false;
    }
    LocalFileToAbsolutePath();
    return SaveToFile(mFileName.c_str());
}

bool CStock::SaveAs(const char* fileName)
{
    mFileName = fileName != nullptr ? fileName : "";
    return Save();
}

void CStock::LocalFileToAbsolutePath()
{
    static constexpr char kFunction[] = "void CStock::LocalFileToAbsolutePath()";
    if (KVUPath::IsAbsolutePath(mFileName.c_str())) {
        return;
    }
    FSRef folder;
    if (!UFiles::GetUserApplicationSupportFolder(folder)) {
        ULog::Warn("%s: Failed to access 'Velmora' folder in 'Application Support'", kFunction);
        return;
    }
    char path[kFolderSize] = "";
    std::string message;
    if (UFiles::GetFullPathToFile(path, sizeof path - 1, folder, message) != noErr) {
        ULog::Warn("%s: Failed to locate path to stock database, %s", kFunction, message.c_str());
        return;
    }
    KVUPath::SetPathEndToSeparator(path, sizeof path);
    mFileName = path + FileSystemName(mFileName);
}

CCountedCIG* CStock::CreateCountedCIG(const char* libraryName, const char* productNumber, int count) const
{
    static constexpr char kFunction[] = "CCountedCIG *CStock::CreateCountedCIG(const char *, const char *, int)";
    static constexpr int kUnknownLibrary = -1;
    const std::unique_ptr<CRailSet> library(CRailsetFolder::Instance()->GetRailset(libraryName));
    const int loaded = library ? library->Load() : kUnknownLibrary;
    if (loaded != CRailSet::kLoaded) {
        ULog::Warn("%s: Failed to load library '%s' for stock item with product number %s (%d).", kFunction,
                   libraryName, productNumber, loaded);
        return nullptr;
    }
    CCompositeGeometry* const article = library->FindGeometry(productNumber);
    if (article == nullptr) {
        ULog::Warn("%s: Failed to locate stock item '%s' in library %s.", kFunction, productNumber, libraryName);
        return nullptr;
    }
    return new CCountedCIG(article, count);
}

int CStock::AddElement(CCountedCIG* element)
{
    const auto [entry, added] = mItems.emplace(KeyOf(element), element);
    if (added) {
        return 1;
    }
    entry->second->IncCount(element->GetCount());
    return 0;
}

CCountedCIG* CStock::FindElement(const char* libraryName, const char* productNumber) const
{
    const auto found = mItems.find(KeyOf(libraryName, productNumber));
    return found != mItems.end() ? found->second : nullptr;
}

void CStock::RemoveElement(const CCompositeGeometry* element)
{
    mItems.erase(KeyOf(element));
}

int CStock::RemoveZeroCountElements()
{
    return static_cast<int>(std::erase_if(mItems, [](const auto& item) { return item.second->GetCount() < 1; }));
}

int CStock::GetElements(tElements& elements) const
{
    elements.clear();
    elements.reserve(mItems.size());
    BOOST_FOREACH(const auto& item, mItems) {
        elements.push_back(item.second);
    }
    return static_cast<int>(elements.size());
}

int CStock::GetSumOfAllElements() const
{
    int64_t sum = 0;
    BOOST_FOREACH(const auto& item, mItems) {
        sum += item.second->GetCount();
    }
    using tLimits = std::numeric_limits<int>;
    return static_cast<int>(std::clamp<int64_t>(sum, tLimits::min(), tLimits::max()));
}

void CStock::ClearStock()
{
    BOOST_FOREACH(const auto& item, mItems) {
        delete item.second;
    }
    mItems.clear();
}

std::string CStock::KeyOf(std::string_view libraryName, std::string_view productNumber)
{
    return std::string(libraryName).append(1, kKeySeparator).append(productNumber);
}

std::string CStock::KeyOf(const CCompositeGeometry* element)
{
    return KeyOf(element->GetRailSetName(), element->GetName());
}
