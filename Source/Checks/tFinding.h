// What a check has to say about one place of a document.
#pragma once

#include <cstddef>
#include <string>

/// One finding. Texts are plain English without line breaks; of a tagged document they quote nothing but
/// numbers, of a stock file also texts, in UTF-8.
struct tFinding {
    enum class eKind {
        kDamage, ///< the document is not as it was written
        kOddity  ///< well-formed, but readers lose or change something
    };

    eKind kind = eKind::kDamage;
    size_t offset = 0; ///< in the file, bytes
    int key = 0;       ///< of the record that was expected or found there; 0 for a header
    int element = 0;   ///< number of the element, from 1; 0 outside elements
    int component = 0; ///< number of the component in it, from 1; 0 outside components
    std::string text;  ///< what was expected, and what was found
    size_t line = 0;   ///< in a file of text, from 1; 0 where it is not known
};
