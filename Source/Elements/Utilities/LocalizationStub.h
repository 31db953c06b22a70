// Where texts in the user's language would come from.
#pragma once

/// Stands in for a table of localised texts. There is none: every text is its own key.
class LocalizationStub {
public:
    LocalizationStub() = delete;

    /// Copies the key into `buffer`, which must have room for it and its zero. The arguments
    /// behind it have no use until there are texts with places for them.
    static void ResStrSprintf(char* buffer, const char* key, ...);
};
