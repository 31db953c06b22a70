// Place for operations over several layers.
#pragma once

/// Static operations over layers; none is needed so far.
class ULayers {
public:
    ULayers() = delete;
};
