// Folders are not watched here: programs say so, and walk.
#include "Platform/FolderWatch.h"

CFolderWatch::CFolderWatch() = default;
CFolderWatch::~CFolderWatch() = default;

CFolderWatch::eAdded CFolderWatch::Add(const std::string&)
{
    return eAdded::kNoRoom;
}

void CFolderWatch::Remove(const std::string&) {}

std::vector<tFolderEvent> CFolderWatch::Read()
{
    return {};
}
