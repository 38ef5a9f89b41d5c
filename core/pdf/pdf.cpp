// SPDX-License-Identifier: GPL-3.0-or-later
#include "pdf/pdf.h"

#include "common/text.h"

namespace dorvane::pdf {

bool parsePageSize(std::string_view text, PageSize& size) {
    text = text::trim(text);
    if (text::equalsIgnoreCase(text, "letter")) {
        size = PageSize::Letter;
    } else if (text::equalsIgnoreCase(text, "a4")) {
        size = PageSize::A4;
    } else {
        return false;
    }
    return true;
}

const char* pageSizeName(PageSize size) {
    return size == PageSize::A4 ? "A4" : "Letter";
}

Result<std::string> renderPdf(const std::vector<std::string>&, const PageSetup&, std::string_view) {
    return Error{0, "PDF output is not built in"};
}

Result<std::string> renderPdf(std::string_view html, const PageSetup& page,
                              std::string_view title) {
    return renderPdf(std::vector<std::string>{std::string(html)}, page, title);
}

}  // namespace dorvane::pdf
