// Which system calls remain.
#pragma once

#include "CCallFilter.h"
#include "Platform/Jail.h"

namespace Jail {
/// The rules of a profile for this process.
CCallFilter MakeCallFilter(eProfile profile);
} // namespace Jail
