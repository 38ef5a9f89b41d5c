// SPDX-License-Identifier: GPL-3.0-or-later
#include "pdf/pdf.h"

#include <algorithm>
#include <cairo-pdf.h>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <glib.h>
#include <mutex>
#include <optional>
#include <unordered_map>

#include "common/text.h"
#include "pdf/canvas.h"

namespace dorvane::pdf {
namespace {

constexpr double kPointsPerPixel = 0.75;
// What a document may be: larger input is refused before anything is laid out.
constexpr std::size_t kLargestDocument = 4 * 1024 * 1024;
constexpr int kDeepestNesting = 256;
constexpr int kMostPages = 5000;
// litehtml walks the whole document to draw each page: a document is refused when its
// elements times its pages pass this (some seconds of work), rather than taking minutes.
constexpr double kMostElementPages = 20e6;
// A heading row is repeated only while it takes no more than this share of a page.
constexpr double kLargestHeadingShare = 1.0 / 3;
constexpr double kPageNumberPoints = 8;
constexpr int kSharedEdge = 2;

// A vertical stretch of the laid-out document, in CSS pixels from its top.
struct Span {
    int top = 0;
    int bottom = 0;
};

struct Table {
    Span span;
    Span heading;  // its first row, repeated on the pages the table continues on
};

struct Link {
    std::string uri;
    litehtml::position box;
};

// What the page breaks and the links need to know of a laid-out document.
struct Shape {
    std::vector<Span> rows;   // innermost table rows and images: never broken through
    std::vector<Span> lines;  // text: broken through only when a row is taller than a page
    std::vector<Table> headed;
    std::vector<Link> links;
    std::size_t elements = 0;
};

// A page: the band of the document it shows, and the heading row repeated above it.
struct Page {
    Span band;
    std::optional<Span> heading;
};

std::string lower(const char* s) {
    std::string out = s ? s : "";
    for (char& c : out) {
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return out;
}

// An upper bound on how deeply the HTML parser will nest the elements of `html`: every
// start tag of an element that has content opens one, an end tag closes one only when such
// an element is open. The parser's own additions (a tbody, an implied row) are a small
// multiple of that.
int nestingDepth(std::string_view html) {
    static constexpr std::string_view kVoid[] = {"area",  "base",   "br",    "col",  "embed",
                                                 "hr",    "img",    "input", "link", "meta",
                                                 "param", "source", "track", "wbr",  "!"};
    int depth = 0;
    int deepest = 0;
    for (std::size_t i = 0; i < html.size(); ++i) {
        if (html[i] != '<' || i + 1 >= html.size()) {
            continue;
        }
        const bool closing = html[i + 1] == '/';
        std::size_t start = i + (closing ? 2 : 1);
        std::size_t end = start;
        while (end < html.size() &&
               (std::isalnum(static_cast<unsigned char>(html[end])) || html[end] == '!')) {
            ++end;
        }
        if (end == start) {
            continue;
        }
        std::string name(html.substr(start, end - start));
        for (char& c : name) {
            c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        }
        if (name[0] == '!' ||
            std::find(std::begin(kVoid), std::end(kVoid), name) != std::end(kVoid)) {
            continue;
        }
        if (closing) {
            depth = std::max(0, depth - 1);
        } else {
            deepest = std::max(deepest, ++depth);
        }
    }
    return deepest;
}

bool isHeadingRow(const litehtml::element::ptr& row) {
    if (row->parent() && lower(row->parent()->get_tagName()) == "thead") {
        return true;
    }
    if (row->get_attr("bgcolor") ||
        lower(row->get_attr("style", "")).find("background") != std::string::npos) {
        return true;
    }
    int cells = 0;
    for (std::size_t i = 0; i < row->get_children_count(); ++i) {
        const std::string tag = lower(row->get_child(static_cast<int>(i))->get_tagName());
        if (tag == "td") {
            return false;
        }
        cells += tag == "th";
    }
    return cells > 0;
}

bool linkable(std::string_view uri) {
    const std::string l = lower(std::string(uri).c_str());
    return l.rfind("http://", 0) == 0 || l.rfind("https://", 0) == 0 || l.rfind("mailto:", 0) == 0;
}

// Collects the shape of a laid-out document. litehtml places a table's cells relative to
// the table and leaves its rows without a box of their own: a row is where its cells are.
class Walker {
public:
    explicit Walker(Shape& shape) : m_shape(shape) {}

    // Answers whether `el` holds a table.
    bool walk(const litehtml::element::ptr& el, int x, int y, int depth) {
        if (depth > 4 * kDeepestNesting || el->get_display() == litehtml::display_none) {
            return false;
        }
        ++m_shape.elements;
        const litehtml::position& pos = el->get_position();
        const litehtml::position box(x + pos.x, y + pos.y, pos.width, pos.height);
        const std::string tag = lower(el->get_tagName());
        if (tag.empty()) {
            if (!el->is_white_space() && box.height > 0) {
                m_shape.lines.push_back({box.y, box.bottom()});
            }
            return false;
        }
        bool table = tag == "table";
        for (std::size_t i = 0; i < el->get_children_count(); ++i) {
            table |= walk(el->get_child(static_cast<int>(i)), box.x, box.y, depth + 1);
        }
        if (tag == "tr") {
            const Span row = rowSpan(el, box);
            m_rows[el.get()] = row;
            if (!table && row.bottom > row.top) {
                m_shape.rows.push_back(row);
            }
        } else if (tag == "img" && box.height > 0) {
            m_shape.rows.push_back({box.y, box.bottom()});
        } else if (tag == "table") {
            litehtml::element::ptr row = firstRow(el);
            auto span = row ? m_rows.find(row.get()) : m_rows.end();
            if (span != m_rows.end() && span->second.bottom > span->second.top &&
                isHeadingRow(row) && !row->select_one("table")) {
                m_shape.headed.push_back({{box.y, box.bottom()}, span->second});
            }
        } else if (tag == "a") {
            addLink(el, box);
        }
        return table;
    }

private:
    static Span rowSpan(const litehtml::element::ptr& row, const litehtml::position& box) {
        Span span{box.y, box.y};
        bool first = true;
        for (std::size_t i = 0; i < row->get_children_count(); ++i) {
            litehtml::element::ptr cell = row->get_child(static_cast<int>(i));
            if (cell->get_display() != litehtml::display_table_cell) {
                continue;
            }
            const litehtml::position& p = cell->get_position();
            const int top = box.y + p.y - cell->content_margins_top();
            const int bottom = box.y + p.bottom() + cell->content_margins_bottom();
            span.top = first ? top : std::min(span.top, top);
            span.bottom = first ? bottom : std::max(span.bottom, bottom);
            first = false;
        }
        return span;
    }

    // The first row of `table`, directly or in its first row group.
    static litehtml::element::ptr firstRow(const litehtml::element::ptr& table) {
        for (std::size_t i = 0; i < table->get_children_count(); ++i) {
            litehtml::element::ptr child = table->get_child(static_cast<int>(i));
            const std::string tag = lower(child->get_tagName());
            if (tag == "tr") {
                return child;
            }
            if (tag == "thead" || tag == "tbody" || tag == "tfoot") {
                for (std::size_t j = 0; j < child->get_children_count(); ++j) {
                    litehtml::element::ptr row = child->get_child(static_cast<int>(j));
                    if (lower(row->get_tagName()) == "tr") {
                        return row;
                    }
                }
            }
        }
        return nullptr;
    }

    // An anchor's clickable area: its line boxes (an inline anchor broken over lines has
    // several), placed like its own box; its padded box when it has none.
    void addLink(const litehtml::element::ptr& el, const litehtml::position& box) {
        const char* href = el->get_attr("href");
        if (!href || !linkable(text::trim(href))) {
            return;
        }
        const std::string uri(text::trim(href));
        litehtml::position::vector boxes;
        el->get_inline_boxes(boxes);
        if (boxes.empty()) {
            boxes.emplace_back(-el->padding_left(), -el->padding_top(),
                               box.width + el->padding_left() + el->padding_right(),
                               box.height + el->padding_top() + el->padding_bottom());
        }
        for (litehtml::position b : boxes) {
            b.x += box.x;
            b.y += box.y;
            if (b.width > 0 && b.height > 0) {
                m_shape.links.push_back({uri, b});
            }
        }
    }

    Shape& m_shape;
    std::unordered_map<const litehtml::element*, Span> m_rows;
};

// The top of the last stretch of `spans` (sorted by top) that `y` falls inside, when it
// starts below `floor`; `y` otherwise. Rows of a table with collapsed borders share the
// border between them: a break there is between them.
int backOff(const std::vector<Span>& spans, int y, int floor) {
    bool moved = true;
    while (moved) {
        moved = false;
        auto it = std::lower_bound(spans.begin(), spans.end(), y,
                                   [](const Span& s, int v) { return s.top < v; });
        while (it != spans.begin()) {
            --it;
            if (it->top <= floor) {
                break;
            }
            if (it->bottom > y + kSharedEdge) {
                y = it->top;
                moved = true;
            }
        }
    }
    return y;
}

void sortByTop(std::vector<Span>& spans) {
    std::sort(spans.begin(), spans.end(), [](const Span& a, const Span& b) {
        return a.top < b.top || (a.top == b.top && a.bottom < b.bottom);
    });
}

// The heading repeated on a page that starts at `y`: that of the innermost headed table the
// page continues, when the heading itself lies above.
std::optional<Span> headingAt(const std::vector<Table>& headed, int y, int pageHeight) {
    const Table* best = nullptr;
    for (const Table& t : headed) {
        if (t.span.top < y && y < t.span.bottom && t.heading.bottom <= y &&
            t.heading.bottom - t.heading.top <= pageHeight * kLargestHeadingShare &&
            (!best || t.span.top >= best->span.top)) {
            best = &t;
        }
    }
    return best ? std::optional<Span>(best->heading) : std::nullopt;
}

std::vector<Page> paginate(Shape& shape, int height, int pageHeight) {
    sortByTop(shape.rows);
    sortByTop(shape.lines);
    std::vector<Page> pages;
    int top = 0;
    while (top < height || pages.empty()) {
        Page page;
        page.heading = top > 0 ? headingAt(shape.headed, top, pageHeight) : std::nullopt;
        const int room = pageHeight - (page.heading ? page.heading->bottom - page.heading->top : 0);
        const int limit = top + room;
        int y = std::min(limit, height);
        if (y < height) {
            y = backOff(shape.rows, y, top);
            y = backOff(shape.lines, y, top);
            y = backOff(shape.rows, y, top);
            // not a heading alone at the foot of a page
            for (const Table& t : shape.headed) {
                if (t.heading.bottom == y && t.span.bottom > y && t.heading.top > top) {
                    y = t.heading.top;
                }
            }
            if (y <= top) {
                y = limit;  // a row taller than a page: cut
            }
        }
        page.band = {top, y};
        pages.push_back(page);
        top = y;
    }
    return pages;
}

void writeLink(cairo_t* cr, const std::string& uri, double x, double y, double w, double h) {
    std::string escaped;
    for (char c : uri) {
        if (c == '\'' || c == '\\') {
            escaped += '\\';
        }
        escaped += c;
    }
    char rect[128];
    std::snprintf(rect, sizeof rect, "rect=[%.2f %.2f %.2f %.2f]", x, y, w, h);
    const std::string attributes = "uri='" + escaped + "' " + rect;
    cairo_tag_begin(cr, CAIRO_TAG_LINK, attributes.c_str());
    cairo_tag_end(cr, CAIRO_TAG_LINK);
}

cairo_status_t append(void* closure, const unsigned char* data, unsigned int length) {
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

using SurfaceDeleter = Deleter<cairo_surface_destroy>;
using CairoDeleter = Deleter<cairo_destroy>;

litehtml::context& sharedContext() {
    static litehtml::context context = [] {
        litehtml::context c;
        c.load_master_stylesheet(defaultStyleSheet());
        return c;
    }();
    return context;
}

// The pages of one document drawn onto the PDF behind `cr`.
class DocumentPrinter {
public:
    DocumentPrinter(const PageSetup& setup, double widthPoints, double heightPoints)
        : m_setup(setup), m_widthPoints(widthPoints), m_heightPoints(heightPoints) {}

    Status print(cairo_surface_t* surface, cairo_t* cr, const std::string& html) {
        const double margin = m_setup.marginPoints;
        const int width = static_cast<int>((m_widthPoints - 2 * margin) / kPointsPerPixel);
        const int height = static_cast<int>((m_heightPoints - 2 * margin) / kPointsPerPixel);
        if (html.size() > kLargestDocument) {
            return Error{EFBIG, "The document is larger than " +
                                    std::to_string(kLargestDocument / (1024 * 1024)) +
                                    " MB; a PDF copy is made of smaller documents only."};
        }
        if (text::trim(html).empty()) {
            return Error{EINVAL, "The document is empty; there is nothing to put into a PDF."};
        }
        if (nestingDepth(html) > kDeepestNesting) {
            return Error{EINVAL, "The document nests its elements more than " +
                                     std::to_string(kDeepestNesting) +
                                     " deep; a PDF copy cannot be laid out."};
        }
        Canvas canvas(width, height);
        auto doc = litehtml::document::createFromUTF8(html.c_str(), &canvas, &sharedContext());
        if (!doc) {
            return Error{EINVAL, "The document could not be read as HTML."};
        }
        doc->render(width);
        const int docWidth = std::max(doc->width(), 1);
        const int docHeight = std::max(doc->height(), 0);
        // A document wider than the page is shrunk to fit its width.
        const double shrink = docWidth > width ? static_cast<double>(width) / docWidth : 1.0;
        const int pageHeight = std::max(1, static_cast<int>(height / shrink));
        if (static_cast<double>(docHeight) / pageHeight > kMostPages) {
            return Error{EFBIG, "The document would take more than " + std::to_string(kMostPages) +
                                    " pages."};
        }
        Shape shape;
        Walker(shape).walk(doc->root(), 0, 0, 0);
        const std::vector<Page> pages = paginate(shape, docHeight, pageHeight);
        if (static_cast<double>(pages.size()) * static_cast<double>(shape.elements) >
            kMostElementPages) {
            return Error{EFBIG, "The document is too long for a PDF copy (" +
                                    std::to_string(pages.size()) + " pages of " +
                                    std::to_string(shape.elements) + " elements)."};
        }
        const int contentWidth = std::max(width, docWidth);

        for (std::size_t n = 0; n < pages.size(); ++n) {
            const Page& page = pages[n];
            cairo_pdf_surface_set_size(surface, m_widthPoints, m_heightPoints);
            const int headingHeight = page.heading ? page.heading->bottom - page.heading->top : 0;

            cairo_save(cr);
            cairo_translate(cr, margin, margin);
            cairo_scale(cr, kPointsPerPixel * shrink, kPointsPerPixel * shrink);
            if (page.heading) {
                drawBand(*doc, canvas, cr, *page.heading, 0, contentWidth);
            }
            drawBand(*doc, canvas, cr, page.band, headingHeight, contentWidth);
            cairo_restore(cr);

            const double scale = kPointsPerPixel * shrink;
            for (const Link& link : shape.links) {
                const int top = std::max(link.box.top(), page.band.top);
                const int bottom = std::min(link.box.bottom(), page.band.bottom);
                if (bottom > top && link.box.width > 0) {
                    writeLink(cr, link.uri, margin + link.box.x * scale,
                              margin + (top - page.band.top + headingHeight) * scale,
                              link.box.width * scale, (bottom - top) * scale);
                }
            }
            cairo_save(cr);
            cairo_set_source_rgb(cr, 0.45, 0.45, 0.45);
            Canvas::drawCentredText(
                cr, "Page " + std::to_string(n + 1) + " of " + std::to_string(pages.size()),
                m_widthPoints / 2, m_heightPoints - margin / 2 + kPageNumberPoints / 3,
                kPageNumberPoints);
            cairo_restore(cr);
            cairo_show_page(cr);
        }
        return {};
    }

private:
    // The band of the document drawn with its top at `at` (pixels below the page's top).
    static void drawBand(litehtml::document& doc, Canvas& canvas, cairo_t* cr, Span band, int at,
                         int width) {
        const int height = band.bottom - band.top;
        cairo_save(cr);
        cairo_rectangle(cr, 0, at, width, height);
        cairo_clip(cr);
        canvas.setBand({at, at + height});
        const litehtml::position clip(0, at, width, height);
        doc.draw(reinterpret_cast<litehtml::uint_ptr>(cr), 0, at - band.top, &clip);
        cairo_restore(cr);
    }

    const PageSetup& m_setup;
    double m_widthPoints;
    double m_heightPoints;
};

}  // namespace

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

Result<std::string> renderPdf(const std::vector<std::string>& documents, const PageSetup& page,
                              std::string_view title) {
    const double width = page.size == PageSize::A4 ? 595.276 : 612;
    const double height = page.size == PageSize::A4 ? 841.89 : 792;
    if (documents.empty()) {
        return Error{EINVAL, "There is no document to put into a PDF."};
    }
    if (!(page.marginPoints >= 0) || width - 2 * page.marginPoints < 72 ||
        height - 2 * page.marginPoints < 72) {
        return Error{EINVAL,
                     "The page margins leave no room for the document; make them "
                     "smaller."};
    }
    // The fonts, images and style context are shared by every render: one at a time.
    static std::mutex turn;
    const std::lock_guard<std::mutex> myTurn(turn);
    std::string out;
    std::unique_ptr<cairo_surface_t, SurfaceDeleter> surface(
        cairo_pdf_surface_create_for_stream(append, &out, width, height));
    cairo_pdf_surface_set_metadata(surface.get(), CAIRO_PDF_METADATA_CREATOR, "Dorvane");
    if (!title.empty()) {
        // cairo takes UTF-8 only; anything else becomes replacement characters
        gchar* valid = g_utf8_make_valid(title.data(), static_cast<gssize>(title.size()));
        cairo_pdf_surface_set_metadata(surface.get(), CAIRO_PDF_METADATA_TITLE, valid);
        g_free(valid);
    }
    std::unique_ptr<cairo_t, CairoDeleter> cr(cairo_create(surface.get()));
    DocumentPrinter printer(page, width, height);
    for (const std::string& html : documents) {
        if (auto printed = printer.print(surface.get(), cr.get(), html); !printed) {
            return printed.error();
        }
    }
    cr.reset();
    cairo_surface_finish(surface.get());
    if (const cairo_status_t status = cairo_surface_status(surface.get());
        status != CAIRO_STATUS_SUCCESS) {
        return Error{
            static_cast<std::int32_t>(status),
            std::string("The PDF could not be written: ") + cairo_status_to_string(status)};
    }
    return out;
}

Result<std::string> renderPdf(std::string_view html, const PageSetup& page,
                              std::string_view title) {
    return renderPdf(std::vector<std::string>{std::string(html)}, page, title);
}

}  // namespace dorvane::pdf
