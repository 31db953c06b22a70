#include "Layers/CLayerManager.h"

#include "CTaggedFile/CTaggedFile.h"
#include "CheckError/CErr.h"
#include "Formats/LayoutFormat.h"

#include <algorithm>
#include <cstring>
#include <new>

CLayerManager::CLayerManager(const char* initialName)
{
    CErr::CheckNull(AddLayer(initialName), "CLayerManager::CLayerManager(const char *)",
                    "Creation of initial layer failed");
}

CLayerManager::~CLayerManager()
{
    Clear();
}

CLayer* CLayerManager::AddLayer(const char* name)
{
    CLayer* layer = new (std::nothrow) CLayer(name);
    CErr::CheckNull(layer, "CLayer *CLayerManager::AddLayer(const char *)", "Failed to create new layer");
    mLayers.push_back(layer);
    if (mIndexIsCurrent) {
        mFirstByName.try_emplace(layer->GetName(), layer);
    }
    mActiveLayer = layer;
    return layer;
}

void CLayerManager::Clear()
{
    mFirstByName.clear();
    mIndexIsCurrent = true;
    mLastFound = nullptr;
    for (CLayer* layer : mLayers) {
        CErr::CheckNull(layer, "void CLayerManager::Clear()", "Failed to get first layer from layer list");
        delete layer;
    }
    mLayers.clear();
}

bool CLayerManager::Load(FILE* file, int version, std::string& message)
{
    if (version < LayoutFormat::kFirstVersionWithLayers) {
        message = "The object is not recognized by this version of Velmora.\r\r"
                  "Please check the Velmora Website for a newer version.";
        return false;
    }
    CTaggedFile records(file);
    int count = 0;
    records.Read(LayoutFormat::kNumLayers.key, count);
    Clear();
    bool locked = false;
    bool visible = true;
    for (int i = 0; i < count; ++i) {
        char name[CLayer::kNameCapacity] = "";
        if (!records.Read(LayoutFormat::kLayerName.key, name, sizeof name)) {
            break;
        }
        CLayer* layer = AddLayer(TestMakeUniqueName(name).c_str());
        CErr::CheckNull(layer, "bool CLayerManager::Load(FILE *, int, string &)", "No reference to new layer");
        records.ReadTable<LayoutFormat::kLayerState>(std::tie(locked, visible));
        layer->SetVisible(visible);
        layer->SetLocked(locked);
    }
    return true;
}

void CLayerManager::Save(FILE* file) const
{
    CTaggedFile records(file);
    records.Write(LayoutFormat::kNumLayers.key, GetNumberOfLayers());
    for (const CLayer* layer : mLayers) {
        records.Write(LayoutFormat::kLayerName.key, layer->GetName());
        const bool locked = layer->GetLocked();
        const bool visible = layer->GetIsVisible();
        records.WriteTable<LayoutFormat::kLayerState>(std::tie(locked, visible));
    }
}

std::string CLayerManager::TestMakeUniqueName(const char* name)
{
    std::string result = name;
    while (result.size() < CLayer::kNameCapacity - 1 && GetLayerByName(result.c_str()) != nullptr) {
        result += '*';
    }
    return result;
}

void CLayerManager::DeleteLayer(CLayer* layer)
{
    static const char kFunction[] = "void CLayerManager::DeleteLayer(CLayer *)";
    if (mLayers.size() == 1) {
        CErr::MinorError(1, kFunction, "Cannot delete last layer.");
        return;
    }
    const auto found = std::find(mLayers.begin(), mLayers.end(), layer);
    if (found == mLayers.end()) {
        CErr::MinorError(-1, kFunction, "Cannot delete layer from layer list (not found).");
        return;
    }
    if (layer == mActiveLayer) {
        mActiveLayer = found == mLayers.begin() ? found[1] : found[-1];
    }
    mLayers.erase(found);
    mIndexIsCurrent = false;
    delete layer;
}

void CLayerManager::DeleteLayer(const char* name)
{
    CLayer* layer = GetLayerByName(name);
    if (layer == nullptr) {
        CErr::MinorError(-1, "void CLayerManager::DeleteLayer(const char *)", "Cannot find layer be deleted.");
        return;
    }
    DeleteLayer(layer);
}

void CLayerManager::MoveLayerToIndex(CLayer* layer, int index)
{
    const int current = GetIndexOfLayer(layer);
    if (current == -1 || current == index) {
        return;
    }
    mLayers.erase(mLayers.begin() + current);
    const size_t target = static_cast<size_t>(index); // a negative index is behind the end
    mLayers.insert(target < mLayers.size() ? mLayers.begin() + index : mLayers.end(), layer);
    mIndexIsCurrent = false;
}

int CLayerManager::GetIndexOfLayer(CLayer* layer)
{
    const auto found = std::find(mLayers.begin(), mLayers.end(), layer);
    if (found == mLayers.end()) {
        CErr::MinorError(-1, "int CLayerManager::GetIndexOfLayer(CLayer *)",
                         "Cannot find layer in layer list (not found).");
        return -1;
    }
    return static_cast<int>(found - mLayers.begin());
}

void CLayerManager::SetActiveLayer(int index)
{
    if (static_cast<unsigned>(index) < mLayers.size()) {
        mActiveLayer = mLayers[static_cast<size_t>(index)];
    } else {
        CErr::MinorError(static_cast<short>(index), "void CLayerManager::SetActiveLayer(int)", "Invalid layer index.");
    }
}

void CLayerManager::RefreshIndex()
{
    mFirstByName.clear();
    for (CLayer* layer : mLayers) {
        mFirstByName.try_emplace(layer->GetName(), layer);
    }
    mLastFound = nullptr;
    mIndexIsCurrent = true;
}

CLayer* CLayerManager::GetLayerByName(const char* name)
{
    if (!mIndexIsCurrent) {
        RefreshIndex();
    }
    if (mLastFound != nullptr && std::strcmp(mLastFound->GetName(), name) == 0) {
        return mLastFound;
    }
    const auto found = mFirstByName.find(name);
    if (found == mFirstByName.end()) {
        return nullptr;
    }
    return mLastFound = found->second;
}

void CLayerManager::GetCurrentVisibilityAsMap(std::map<CLayer*, bool>& visibility) const
{
    for (CLayer* layer : mLayers) {
        visibility[layer] = layer->GetIsVisible();
    }
}

void CLayerManager::RestoreLayerVisibility(std::map<CLayer*, bool>& visibility)
{
    for (CLayer* layer : mLayers) {
        layer->SetVisible(visibility[layer]);
    }
}

void CLayerManager::ShowAllLayers()
{
    for (CLayer* layer : mLayers) {
        layer->SetVisible(true);
    }
}

CLayer* CLayerManager::GetFirstUnlockedVisibleLayer() const
{
    const auto found = std::find_if(mLayers.begin(), mLayers.end(),
                                    [](const CLayer* layer) { return layer->GetIsVisible() && !layer->GetLocked(); });
    return found == mLayers.end() ? nullptr : *found;
}
