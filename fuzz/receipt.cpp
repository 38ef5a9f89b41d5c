// SPDX-License-Identifier: GPL-3.0-or-later
// An Authorize.Net receipt pasted into the import window ("Options" → capture from the
// clipboard), and the Import button pressed as the window comes up, then once more with the
// first customer of the list chosen: the receipt document, its preview, the customer match,
// the import log's check, the new customer's and the sales receipt's add requests. QuickBooks
// refuses the adds (program.h), so nothing is booked or logged.
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzzkit.h"
#include "import/importlog.h"
#include "import/importwindow.h"
#include "program.h"

using namespace dorvane;

namespace {

// One transaction booked before, so that a receipt of it meets the import log's question.
void logBookedReceipt() {
    static const bool logged = [] {
        fuzz::writeFile(fuzz::programFolder() / imports::kBatchLogFile,
                        imports::importLogRecord("2147483790"));
        return true;
    }();
    (void)logged;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    logBookedReceipt();
    fuzz::Program program;
    imports::ImportWindow& window = program.app.importWindow();
    window.open();
    program.ui.setClipboard(std::string(fuzz::text(data, size)));
    window.runMenuEntry(imports::kCapAuthorize);
    window.importSelectedDocument();
    if (!window.counterparts().items.empty()) {
        window.itemClicked(0);
        window.importSelectedDocument();
    }
    return 0;
}
