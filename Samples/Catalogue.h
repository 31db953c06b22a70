// What the libraries hold.
#pragma once

#include "Articles.h"

#include <vector>

/// An invented N system, by the rules of TrackSystem.h.
inline constexpr tLibrary kNarrowLibrary = {"Törrig N Feingleis",
                                            "Törrig & Cie",
                                            129,
                                            ULibraryConstants::kContentTracks,
                                            URailConstants::kScaleN,
                                            9.0,
                                            20.0,
                                            30.0};

/// All articles of a library in the order of their numbers.
std::vector<tArticle> ArticlesOf(const tLibrary& library);
