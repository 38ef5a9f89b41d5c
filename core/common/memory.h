// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — allocator settings for a program that builds and drops large documents.
#pragma once

namespace dorvane::memory {

// A list answer becomes a tree of a million small allocations that is dropped whole at the
// next load. With glibc's fast bins, dropping it sets off a long consolidation pass; and
// returning the memory to the system only to ask for it again at the next load costs page
// faults. Called once at start-up; does nothing on other C libraries.
void tuneForLargeDocuments();

}  // namespace dorvane::memory
