// velmora-samples FOLDER: makes the samples: layouts, libraries and a stock.
#include "CPlan.h"
#include "Layouts.h"
#include "Libraries.h"

#include "Preferences/CVLPreferences.h"

#include <cstdio>
#include <cstdlib>
#include <string>

/// A new layout takes its settings from the user's preferences; the samples are the same for every user.
static void FixPreferences()
{
    CVLPreferences& preferences = *CVLPreferences::Instance();
    preferences.mDefaultShowGrid = true;
    preferences.mDefaultShowElementNames = false;
    preferences.mDefaultOutlineNames = true;
    preferences.mDefaultShowPrefix = true;
    preferences.m3DTerrain = false;
    preferences.m3DOnlyTracks = false;
    preferences.mDefaultColorScheme = 1;
    preferences.mDefaultTrackStyle = 105;
    preferences.mDefaultGridSpacing = 50;
}

int main(int argc, char** argv)
{
    if (argc != 2) {
        fprintf(stderr, "usage: velmora-samples FOLDER\n");
        return 2;
    }
    FixPreferences();
    const struct {
        const char* name;
        std::unique_ptr<CPlan> (*make)();
    } samples[] = {{"oval.velmora", &MakeOvalLayout},
                   {"terminus.velmora", &MakeTerminusLayout},
                   {"empty.velmora", &MakeEmptyLayout}};
    for (const auto& sample : samples) {
        const std::string path = std::string(argv[1]) + "/" + sample.name;
        if (!sample.make()->Save(path)) {
            fprintf(stderr, "velmora-samples: cannot write %s\n", path.c_str());
            return EXIT_FAILURE;
        }
    }
    const std::string folder = argv[1];
    if (!MakeLibraries(folder + "/libraries") || !MakeStock(folder + "/stock.xml")) {
        fprintf(stderr, "velmora-samples: cannot write the libraries and the stock\n");
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
