// A file that no folder knows.
#pragma once

#include "protocol/CDescriptor.h"

/// A descriptor to a nameless file that can be written and then read from its beginning; in memory where the system has
/// that. @return closed, with errno set, when it fails
CDescriptor MakeNamelessFile();
