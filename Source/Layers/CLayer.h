// One layer of a layout.
#pragma once

class CLayerNameResolver;

/// A named layer that can be locked and hidden. Its name never changes.
class CLayer {
public:
    /// Bytes of the name field: 63 characters of Mac OS Roman and the zero.
    static constexpr int kNameCapacity = 64;

    /// An unlocked, visible layer; the name is cut to 63 characters.
    explicit CLayer(const char* name);

    const char* GetName() const { return mName; }
    bool GetLocked() const { return mLocked; }
    bool GetIsVisible() const { return mVisible; }
    void SetLocked(bool locked) { mLocked = locked; }
    void SetVisible(bool visible) { mVisible = visible; }

    /// Installs the process-wide resolver of layer names; null removes it. Not owned.
    static void ConfigureLayerNameResolver(CLayerNameResolver* resolver) { sLayerNameResolver = resolver; }
    /// The installed resolver, for whoever has to put it back; may be null.
    static CLayerNameResolver* GetLayerNameResolver() { return sLayerNameResolver; }

    /// The layer of that name as the installed resolver knows it, or null. Without a resolver the process ends.
    static CLayer* GetLayerByName(const char* name);

private:
    char mName[kNameCapacity];
    bool mLocked = false;
    bool mVisible = true;

    static CLayerNameResolver* sLayerNameResolver;
};
