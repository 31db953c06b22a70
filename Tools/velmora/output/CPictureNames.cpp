#include "output/CPictureNames.h"

#include "input/DocumentNames.h"

std::string CPictureNames::Take(const tInput& input)
{
    const std::string stem = DocumentNames::WithoutExtension(input.path.substr(input.ownPart));
    const auto hash = std::hash<std::string>();
    std::string name = stem;
    unsigned& next = mNext[hash(stem)]; // stays where it is when others are added
    for (bool isFree = next == 0; !isFree;) {
        name = stem + "-" + std::to_string(++next);
        isFree = mNext.emplace(hash(name), 1).second;
    }
    next = next == 0 ? 1 : next;
    return mFolder + (mFolder.ends_with('/') ? "" : "/") + name + "." + mEnding;
}
