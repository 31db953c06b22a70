// A layout as the importer sets it up, and a file for it to read and write.
#pragma once

#include "Layers/CLayer.h"
#include "Layers/CLayerManager.h"
#include "Layouts/CLayout.h"
#include "Layouts/Groups/CGroup.h"
#include "Layouts/Utilities/CVLLayerNameResolver.h"
#include "support/DocumentBuilder.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

/// A file without a name that is gone with the object. On Linux it lies in memory.
class CScratchFile {
public:
    CScratchFile()
    {
#if defined(__linux__)
        mDescriptor = memfd_create("velmora-test", 0);
#else
        std::string name = std::string(getenv("TEST_FOLDER")) + "/scratch-XXXXXX";
        mDescriptor = mkstemp(name.data());
        unlink(name.c_str());
#endif
        if (mDescriptor < 0) {
            throw std::runtime_error("no scratch file");
        }
    }
    explicit CScratchFile(std::string_view bytes) : CScratchFile()
    {
        Set(bytes);
    }
    ~CScratchFile()
    {
        close(mDescriptor);
    }
    CScratchFile(const CScratchFile&) = delete;
    CScratchFile& operator=(const CScratchFile&) = delete;

    void Set(std::string_view bytes)
    {
        CutTo(0);
        if (pwrite(mDescriptor, bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
            throw std::runtime_error("scratch file not written");
        }
    }
    void SetByte(size_t offset, char byte)
    {
        if (pwrite(mDescriptor, &byte, 1, static_cast<off_t>(offset)) != 1) {
            throw std::runtime_error("scratch file not written");
        }
    }
    void CutTo(size_t size)
    {
        if (ftruncate(mDescriptor, static_cast<off_t>(size)) != 0) {
            throw std::runtime_error("scratch file not cut");
        }
    }
    std::string Get() const
    {
        std::string bytes(static_cast<size_t>(lseek(mDescriptor, 0, SEEK_END)), '\0');
        if (pread(mDescriptor, bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
            throw std::runtime_error("scratch file not read");
        }
        return bytes;
    }
    std::string Path() const
    {
        return "/proc/self/fd/" + std::to_string(mDescriptor);
    }

private:
    int mDescriptor = -1;
};

/// A layout with the layer name resolver bound to it.
class CTestLayout : public CLayout {
public:
    CTestLayout() : mResolver(this) { CLayer::ConfigureLayerNameResolver(&mResolver); }
    ~CTestLayout() { CLayer::ConfigureLayerNameResolver(nullptr); }

    int LoadBytes(std::string_view bytes) { return Load(CScratchFile(bytes).Path()); }
    int LoadRecords(const CRecords& records) { return LoadBytes(records.Bytes()); }
    /// What Save writes, with nothing changed but what saving changes.
    std::string SavedBytes()
    {
        const CScratchFile file;
        const std::string path = file.Path();
        if (!Save(&path)) {
            throw std::runtime_error("not saved");
        }
        return file.Get();
    }
    CRecords Saved() { return CRecords::OfDocument(SavedBytes()); }

    std::vector<std::string> LayerNames()
    {
        std::vector<std::string> names;
        for (int i = 0; i < GetLayerList()->GetNumberOfLayers(); ++i) {
            names.emplace_back(GetLayerList()->GetLayerAtIndex(i)->GetName());
        }
        return names;
    }

private:
    CVLLayerNameResolver mResolver;
};

/// True when every group is reached from one without a parent, exactly once, and lists only groups whose parent it is.
inline bool IsForest(const std::vector<CGroup*>& groups)
{
    std::multimap<const CGroup*, const CGroup*> children;
    for (const CGroup* group : groups) {
        children.emplace(group->GetParentGroup(), group);
    }
    std::vector<const CGroup*> pending = {nullptr};
    for (size_t i = 0; i < pending.size(); ++i) {
        const auto [begin, end] = children.equal_range(pending[i]);
        std::transform(begin, end, std::back_inserter(pending), [](const auto& child) { return child.second; });
    }
    return pending.size() == groups.size() + 1 && std::all_of(groups.begin(), groups.end(), [](const CGroup* group) {
               const std::vector<CGroup*>& members = group->GetMemberGroupsVec();
               return std::all_of(members.begin(), members.end(),
                                  [group](const CGroup* member) { return member->GetParentGroup() == group; });
           });
}
