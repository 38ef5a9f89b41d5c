// SPDX-License-Identifier: GPL-3.0-or-later
// The PDF copy of a mailed document: the HTML laid out and drawn, as one document and as the
// second of two (the preview's form), on both page sizes.
#include "pdf/pdf.h"

#include <cstddef>
#include <cstdint>

#include "fuzzkit.h"

using namespace dorvane;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string html(fuzz::text(data, size));
    (void)pdf::renderPdf(html, pdf::PageSetup{}, html.substr(0, 40));
    (void)pdf::renderPdf({"<p>first</p>", html}, pdf::PageSetup{pdf::PageSize::A4, 20});
    return 0;
}
