// No further threads, for libraries that start one to have something done.
#pragma once

namespace Jail {
/// From now on nothing starts a thread in this process: what was to run in one runs at once, where it is asked for.
/// Nobody can wait for its end, as it has ended.
void RunThreadsAtOnce();
} // namespace Jail
