#include "TrackLibraries/CRailsetFolder.h"

#include "CheckError/CErr.h"
#include "CheckError/ULog.h"
#include "TrackLibraries/CRailSet.h"
#include "TrackLibraries/Utilities/ULibraryFiles.h"
#include "TrackLibraries/Utilities/URailsetQueries.h"
#include "UnitLength/URailConstants.h"

#include <new>

CRailsetFolder* CRailsetFolder::mSingletonInstance = nullptr;

CRailsetFolder* CRailsetFolder::Instance()
{
    if (mSingletonInstance == nullptr) {
        mSingletonInstance = new (std::nothrow) CRailsetFolder;
        CErr::CheckNull(mSingletonInstance, "static CRailsetFolder *CRailsetFolder::Instance()",
                        "Failed to construct CRailsetFolder singleton member");
    }
    return mSingletonInstance;
}

void CRailsetFolder::InitializeWithPaths(const std::vector<std::string>& paths)
{
    ULog::Info("Initializing libraries (%d found)", static_cast<int>(paths.size()));
    for (const std::string& path : paths) {
        if (TestMakeUniqueName(path)) {
            ULog::Warn("Duplicate library %s ignored", path.c_str());
        } else if (BufferLibrary(path) == nullptr) {
            ULog::Warn("Error adding library %s", path.c_str());
        }
    }
}

const tRSDiskEntry* CRailsetFolder::LoadExternalRailset(const std::string& path)
{
    if (!TestMakeUniqueName(path)) { // meant: only what is registered is taken, the reverse of InitializeWithPaths
        return nullptr;
    }
    const tRSDiskEntry* const entry = BufferLibrary(path);
    if (entry == nullptr) {
        ULog::Warn("Failed to add new library '%s' to buffer.", path.c_str());
    }
    return entry;
}

bool CRailsetFolder::TestMakeUniqueName(const std::string& path) const
{
    std::string name = ULibraryFiles::GetLibraryName(path);
    for (const tRSDiskEntry& entry : mEntries) {
        if (entry.name != name) {
            continue;
        }
        if (entry.path == path) {
            return true;
        }
        ULog::Info("Library '%s' already exists. Creating unique name '%s*'.", name.c_str(), name.c_str());
        name += '*';
    }
    return false;
}

const tRSDiskEntry* CRailsetFolder::BufferLibrary(const std::string& path)
{
    tRSDiskEntry entry = {ULibraryFiles::GetLibraryName(path), path};
    if (!URailsetQueries::GetModelScaleAndType(path, entry.modelScale, entry.contentType)) {
        return nullptr;
    }
    mEntries.push_back(entry);
    ULog::Debug("Adding library '%s', scale %s (%s)", entry.name.c_str(),
                URailConstants::GetModelScaleTxt(entry.modelScale, true).c_str(),
                ULibraryConstants::GetContentTypeText(entry.contentType));
    return &mEntries.back();
}

const tRSDiskEntry* CRailsetFolder::GetRailsetEntry(const std::string& name) const
{
    for (const tRSDiskEntry& entry : mEntries) {
        if (entry.name == name) {
            return &entry;
        }
    }
    return nullptr;
}

CRailSet* CRailsetFolder::GetRailset(const std::string& name) const
{
    const tRSDiskEntry* const entry = GetRailsetEntry(name);
    return entry != nullptr ? new CRailSet(entry->path) : nullptr;
}

int CRailsetFolder::GetRailsetEntries(std::vector<const tRSDiskEntry*>& entries, int modelScale,
                                      tRailSetContentType contentType) const
{
    entries.clear();
    for (const tRSDiskEntry& entry : mEntries) {
        if (entry.modelScale == modelScale && entry.contentType == contentType) {
            entries.push_back(&entry);
        }
    }
    return static_cast<int>(entries.size());
}

bool CRailsetFolder::FindLibraryForElement(const std::string& manufacturer, const std::string& productNumber,
                                           std::string& libraryName) const
{
    for (const bool anyManufacturer : {false, true}) {
        for (const tRSDiskEntry& entry : mEntries) {
            CRailSet library(entry.path);
            library.Load(); // also what is left of a library that was damaged since it was registered is searched
            if ((anyManufacturer || manufacturer == library.GetManufacturer()) &&
                library.FindGeometry(productNumber) != nullptr) {
                libraryName = entry.name;
                return true;
            }
        }
    }
    return false;
}
