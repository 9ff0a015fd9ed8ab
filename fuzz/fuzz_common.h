// Shared by the fuzz targets: the system log is silenced so the targets run at full speed
// (a masked priority returns before any formatting), and a failed property stops the run.
#pragma once

#include <syslog.h>

#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    setlogmask(LOG_MASK(LOG_EMERG));
    return 0;
}

// A property that does not hold is a finding, like a crash.
#define FUZZ_CHECK(cond)                                                                 \
    do {                                                                                 \
        if (!(cond)) {                                                                   \
            fprintf(stderr, "property failed: %s (%s:%d)\n", #cond, __FILE__, __LINE__); \
            abort();                                                                     \
        }                                                                                \
    } while (0)
