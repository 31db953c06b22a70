#include "Elements/Utilities/LocalizationStub.h"

#include <cstring>

void LocalizationStub::ResStrSprintf(char* buffer, const char* key, ...)
{
    std::memcpy(buffer, key, std::strlen(key) + 1);
}
