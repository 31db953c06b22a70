// The ordered layers of one layout.
#pragma once

#include "Layers/CLayer.h"

#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

/// Owns the layers of a layout, in list order, and knows the one that new elements go to.
class CLayerManager {
public:
    /// A list of one layer of that name.
    explicit CLayerManager(const char* initialName);
    ~CLayerManager();
    CLayerManager(const CLayerManager&) = delete;
    CLayerManager& operator=(const CLayerManager&) = delete;

    /// Appends a new layer and makes it the active one. Names may repeat. @return the layer, owned by this list
    CLayer* AddLayer(const char* name);
    /// Deletes every layer, first to last. The active layer is not reset and points nowhere until the next AddLayer.
    void Clear();

    /// Replaces the list by the layer section at the stream's position: 500 count (int), then for each layer 501 name
    /// (text), 502 locked (bool), 503 visible (bool). A repeated name gets stars; locked and visible records that are
    /// missing repeat the previous layer's value (at first unlocked and visible). The list ends with the first name
    /// that is missing.
    /// @param message  receives the reason of a failure
    /// @return false for a document version below 4, which has no layers; nothing is read then
    bool Load(FILE* file, int version, std::string& message);
    /// Writes the layer section.
    void Save(FILE* file) const;

    /// `name`, followed by as many stars as make it differ from all layers, but no longer than a layer's name can be.
    std::string TestMakeUniqueName(const char* name);

    /// Deletes a layer of the list unless it is the last one; the elements on it are not touched. The active layer
    /// moves to the one before it, or behind it where it was the first.
    void DeleteLayer(CLayer* layer);
    void DeleteLayer(const char* name);
    /// Moves a layer; an index at or behind the end of the others appends it.
    void MoveLayerToIndex(CLayer* layer, int index);
    /// @return the layer's index, or -1 after an error message
    int GetIndexOfLayer(CLayer* layer);
    /// An index outside the list is reported with the index as the error's code,
    /// so an invalid 0 passes without a message.
    void SetActiveLayer(int index);
    CLayer* GetActiveLayer() const { return mActiveLayer; }

    /// The first layer in list order with exactly this name, or null. Costs the same however many layers there are.
    CLayer* GetLayerByName(const char* name);
    int GetNumberOfLayers() const { return static_cast<int>(mLayers.size()); }
    /// @throws std::out_of_range for an index outside the list
    CLayer* GetLayerAtIndex(int index) const { return mLayers.at(static_cast<size_t>(index)); }

    /// Records every layer's visibility in the map; entries of other layers stay.
    void GetCurrentVisibilityAsMap(std::map<CLayer*, bool>& visibility) const;
    /// Sets every layer's visibility from the map; a layer that the map does not know is hidden and entered as such.
    void RestoreLayerVisibility(std::map<CLayer*, bool>& visibility);
    void ShowAllLayers();
    /// @return the first layer that is neither locked nor hidden, or null
    CLayer* GetFirstUnlockedVisibleLayer() const;

private:
    void RefreshIndex();

    std::vector<CLayer*> mLayers; ///< owned
    CLayer* mActiveLayer = nullptr;
    [[maybe_unused]] int mReserved = 2; ///< a number that nobody asks for

    /// Name to the first layer in list order; keys lie in the layers. Out of date after a layer left or moved.
    std::unordered_map<std::string_view, CLayer*> mFirstByName;
    bool mIndexIsCurrent = true;
    CLayer* mLastFound = nullptr; ///< elements of one layer usually follow each other
};
