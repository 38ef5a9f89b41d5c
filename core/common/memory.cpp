// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/memory.h"

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace dorvane::memory {

void tuneForLargeDocuments() {
#if defined(__GLIBC__)
    mallopt(M_MXFAST, 0);
    mallopt(M_TRIM_THRESHOLD, 256 << 20);
#endif
}

}  // namespace dorvane::memory
