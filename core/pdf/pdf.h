// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — a PDF copy of a rendered document.
//
// The HTML the style sheets produce is laid out by litehtml and drawn with cairo and pango
// onto PDF pages, in-process: no browser, no process per document. The fonts the document
// names are found through fontconfig (Arial and Helvetica as Liberation Sans, DejaVu when
// nothing closer is installed) and embedded as subsets; images are read from local files
// only ("file://" addresses and absolute paths; GIF, JPEG, PNG), never from the network: an
// image that cannot be read leaves its place empty.
//
// The document is laid out as wide as the page inside its margins (a CSS pixel is 0.75 pt;
// a wider document is shrunk to fit). A document taller than a page breaks between table
// rows (rows that hold no table of their own), never through a row or an image, and only
// through a row taller than a page; a table whose first row is a heading (a <thead>, a row
// of <th> cells, or a shaded row: bgcolor or a background style) repeats that row at the top
// of every page it continues on. Each page carries "Page N of M" at its foot. Links to
// http, https and mailto addresses (<a href>) stay clickable in the PDF.
//
// Safe to call from any thread. Renders take turns: the fonts (measured once, kept across
// documents) and the last few images are the process's, so that a send run that renders each
// next document on a fresh thread does not load its fonts again every time.
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
// on its own; `title` goes into the file's information. The answer is the file's bytes.
// Fails when a document cannot be laid out (no documents, an empty one, margins that leave
// less than an inch, markup nested more than 256 deep, more than 4 MB or far too many
// pages); broken markup is drawn as a browser would draw it.
Result<std::string> renderPdf(const std::vector<std::string>& documents, const PageSetup& page,
                              std::string_view title = {});

// The same for one document.
Result<std::string> renderPdf(std::string_view html, const PageSetup& page,
                              std::string_view title = {});

}  // namespace dorvane::pdf
