// A point in whole units.
#pragma once

/// A place in a drawing, rounded.
struct Point32 {
    int x;
    int y;
};
