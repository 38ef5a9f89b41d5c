// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — a PDF copy of a rendered document.
//
// The HTML the style sheets produce is laid out by litehtml and drawn with cairo and pango
// onto PDF pages, in-process: no browser, no process per document. The fonts the document
// names are found through fontconfig and embedded (as subsets); images are read from local
// files only ("file://" addresses and absolute paths), never from the network.
//
// A document taller than a page breaks between table rows, never through one, and a table
// whose first row is a heading (a <thead>, a row of <th> cells, or a shaded row) repeats that
// row at the top of every page it continues on. Each page carries "Page N of M" at its foot.
// Links (<a href>) stay clickable in the PDF.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "common/result.h"

namespace dorvane::pdf {

enum class PageSize {
    Letter,  // 8.5 × 11 in, what a US company prints on
    A4,      // 210 × 297 mm
};

struct PageSetup {
    PageSize size = PageSize::Letter;
    double marginPoints = 36;  // on every side; the page number sits in the bottom margin
};

// "Letter", "A4" (any case); false for anything else.
bool parsePageSize(std::string_view text, PageSize& size);
const char* pageSizeName(PageSize size);

// One PDF of the given documents (HTML, as mailed), each starting on a new page and numbered
// on its own. The answer is the file's bytes. Fails only when a document cannot be laid out
// at all (empty input, a page too small for its margins); broken markup is drawn as a
// browser would draw it.
Result<std::string> renderPdf(const std::vector<std::string>& documents, const PageSetup& page,
                              std::string_view title = {});

// The same for one document.
Result<std::string> renderPdf(std::string_view html, const PageSetup& page,
                              std::string_view title = {});

}  // namespace dorvane::pdf
