// SPDX-License-Identifier: GPL-3.0-or-later
// A handheld's time-tracking file as the sync fetches it ("Synchronize Handheld" for the first
// employee QuickBooks lists): the transfer's read of at most 16 KB, the safe parse, the copy
// the import window then opens with its kind and preview, and the Import button's time import:
// the conversion sheet and the check of what it made. QuickBooks refuses the time entries
// (program.h), so nothing is booked.
#include <cstddef>
#include <cstdint>

#include "fuzzkit.h"
#include "handheld/timetracksync.h"
#include "import/importwindow.h"
#include "program.h"

using namespace dorvane;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Program program;
    // The sync replaced the handheld's file with the lists for the handheld: written afresh.
    fuzz::writeFile(fuzz::handheldFolder() / "Program Files" / "TimeTrack" / "data.xml",
                    fuzz::text(data, size));
    program.app.importWindow().open();
    if (program.app.handheld().synchronizePDA({fuzz::firstEmployee()}) ==
        handheld::SyncOutcome::Synchronized) {
        program.app.importWindow().importSelectedDocument();
    }
    return 0;
}
