// Where texts in the user's language would come from.
#pragma once

/// Stands in for a table of localised texts. There is none: every text is its own key.
class LocalizationStub {
public:
    LocalizationStub() = delete;

    /// Copies the key into `buffer`, which must have room for it and its zero. What follows would fill the places of
    /// the text; it is passed all the same, so that callers need not change once there are texts.
    static void ResStrSprintf(char* buffer, const char* key, ...);
};
