// The track style in which everything is drawn at the moment.
#pragma once

/// Process-wide holder of the current track style; every layout sets it when it is made and when it was loaded.
class CDisplayOptionsManager {
public:
    /// The one object, made on first use and never destroyed.
    static CDisplayOptionsManager* Instance();

    CDisplayOptionsManager() = default;
    virtual ~CDisplayOptionsManager() = default;

    void SetTrackStyle(int style) { mTrackStyle = style; }
    int GetTrackStyle() const { return mTrackStyle; }

private:
    int mTrackStyle = 4;
};
