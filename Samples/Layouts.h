// The sample layouts, a file each.
#pragma once

#include <memory>

class CPlan;

/// An oval with a passing loop and a siding.
std::unique_ptr<CPlan> MakeOvalLayout();
/// A terminus with throat, engine depot and helix up to a small station in the hills.
std::unique_ptr<CPlan> MakeTerminusLayout();
/// A layout that was begun and left empty.
std::unique_ptr<CPlan> MakeEmptyLayout();
