// What Foundation and the C library read from files at the first question, asked before files are out of reach.
#import "Linux/CoreFoundation/Pool.h"
#import "Platform/Process.h"

#include <CoreFoundation/CoreFoundation.h>
#include <cstdlib>
#include <ctime>

void Platform::LookUpSettings()
{
    const CPool pool;
    // Foundation stamps its messages with local times. It comes first, because it does not know a TZ that starts with
    // a colon.
    [[NSTimeZone localTimeZone] secondsFromGMT];
    // Without TZ the C library looks at /etc/localtime again and again, and takes its absence for UTC; with TZ it keeps
    // what it has read.
    if (getenv("TZ") == nullptr) {
        setenv("TZ", ":/etc/localtime", 1);
    }
    tzset();
    const time_t now = time(nullptr);
    tm parts = {};
    localtime_r(&now, &parts);
    [NSBundle mainBundle]; // raises where its folder cannot be found
    CFBundleGetMainBundle();
}
