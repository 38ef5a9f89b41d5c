// SPDX-License-Identifier: GPL-3.0-or-later
// An exchange file opened in the import window ("Select DVX file"), and the Import button
// pressed as the window comes up, then once more with the first vendor (or customer) of the
// list chosen: the size cap and the safe parse, the kind, the preview sheet, the counterpart
// match, the paying accounts, the check of the import preferences against QuickBooks' lists,
// the new vendor's add request, the conversion sheet rewritten onto the import settings, the
// duplicate query, and for a handheld file the time import's conversion. QuickBooks refuses
// the adds (program.h), so nothing is booked.
#include <cstddef>
#include <cstdint>

#include "fuzzkit.h"
#include "import/importwindow.h"
#include "program.h"

using namespace dorvane;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Program program;
    const auto file = fuzz::scratch() / "document.dvx";
    fuzz::writeFile(file, fuzz::text(data, size));
    imports::ImportWindow& window = program.app.importWindow();
    window.open();
    window.openExchangeFile(file.string());
    window.importSelectedDocument();
    if (!window.counterparts().items.empty()) {
        window.itemClicked(0);
        window.importSelectedDocument();
    }
    return 0;
}
