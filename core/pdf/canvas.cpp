// SPDX-License-Identifier: GPL-3.0-or-later
#include "pdf/canvas.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <gdk-pixbuf/gdk-pixbuf.h>
#include <list>
#include <pango/pangocairo.h>
#include <string_view>
#include <unordered_map>

namespace dorvane::pdf {
namespace {

constexpr int kDefaultFontSize = 16;
constexpr const char* kDefaultFontName = "Arial";
// Sizes a style sheet may ask for are held to this, so a hostile one cannot make pango
// rasterise (or cairo embed) a glyph the size of a house.
constexpr int kLargestFontSize = 400;
// A text whose width is remembered per font, and how many each font remembers.
constexpr std::size_t kLongestRememberedText = 64;
constexpr std::size_t kRememberedWidths = 8192;
// Fonts (distinct face, size, weight, style) a thread keeps when no document uses them.
constexpr std::size_t kKeptFonts = 64;
// An image file is read when it is no larger than this, and decoded to at most this many
// pixels a side.
constexpr std::uintmax_t kLargestImageFile = 16 * 1024 * 1024;
constexpr int kLargestImageSide = 2048;
constexpr std::size_t kKeptImages = 8;

using ObjectDeleter = Deleter<g_object_unref>;
using DescriptionDeleter = Deleter<pango_font_description_free>;
using SurfaceDeleter = Deleter<cairo_surface_destroy>;

struct Font {
    std::unique_ptr<PangoFontDescription, DescriptionDeleter> description;
    litehtml::font_metrics metrics;
    unsigned decoration = 0;
    int lineWidth = 1;  // of underlines and strike-throughs
    int users = 0;      // documents that hold it
    std::unordered_map<std::string, int> widths;
};

// The fonts: a pango font map of their own and every font asked for, kept across documents so
// that the next document of a run finds its fonts measured. Pango's objects are not for two
// threads at once: renderPdf lets one render run at a time.
class FontShelf {
public:
    FontShelf()
        : m_map(pango_cairo_font_map_new()),
          m_context(pango_font_map_create_context(m_map.get())),
          m_layout(pango_layout_new(m_context.get())) {
        // Outlines as drawn, unhinted: widths scale with the page, and do not depend on a
        // screen's pixel grid.
        cairo_font_options_t* options = cairo_font_options_create();
        cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
        cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
        pango_cairo_context_set_font_options(m_context.get(), options);
        cairo_font_options_destroy(options);
        pango_context_set_language(m_context.get(), pango_language_from_string("en-us"));
        pango_layout_context_changed(m_layout.get());
    }

    static FontShelf& shared() {
        static FontShelf shelf;
        return shelf;
    }

    Font* font(const std::string& family, int size, int weight, bool italic, unsigned decoration) {
        size = std::clamp(size, 1, kLargestFontSize);
        weight = std::clamp(weight, 100, 1000);
        std::string key = family + '\n' + std::to_string(size) + '/' + std::to_string(weight) +
                          (italic ? "i" : "") + '/' + std::to_string(decoration);
        auto found = m_fonts.find(key);
        if (found == m_fonts.end()) {
            found = m_fonts.emplace(std::move(key), make(family, size, weight, italic)).first;
            found->second->decoration = decoration;
        }
        ++found->second->users;
        return found->second.get();
    }

    void release(Font* font) {
        if (font && font->users > 0) {
            --font->users;
        }
        if (m_fonts.size() <= kKeptFonts) {
            return;
        }
        for (auto it = m_fonts.begin(); it != m_fonts.end() && m_fonts.size() > kKeptFonts;) {
            if (it->second->users > 0) {
                ++it;
                continue;
            }
            forget(it->second.get());
            it = m_fonts.erase(it);
        }
    }

    // The layout every measuring and drawing goes through, holding `text` in `font`.
    PangoLayout* layout(const Font& font, std::string_view text) {
        PangoLayout* layout = m_layout.get();
        if (m_current != &font) {
            pango_layout_set_font_description(layout, font.description.get());
            m_current = &font;
        }
        pango_layout_set_text(layout, text.data(), static_cast<int>(text.size()));
        return layout;
    }

    int width(Font& font, std::string_view text) {
        const bool remember = text.size() <= kLongestRememberedText;
        if (remember) {
            auto found = font.widths.find(std::string(text));
            if (found != font.widths.end()) {
                return found->second;
            }
        }
        int w = 0;
        pango_layout_get_size(layout(font, text), &w, nullptr);
        const int px = static_cast<int>(std::lround(static_cast<double>(w) / PANGO_SCALE));
        if (remember) {
            if (font.widths.size() >= kRememberedWidths) {
                font.widths.clear();
            }
            font.widths.emplace(text, px);
        }
        return px;
    }

    void forget(const Font* font) {
        if (m_current == font) {
            m_current = nullptr;
        }
    }

private:
    std::unique_ptr<Font> make(const std::string& family, int size, int weight, bool italic) {
        auto font = std::make_unique<Font>();
        font->description.reset(pango_font_description_new());
        PangoFontDescription* d = font->description.get();
        pango_font_description_set_family(d, family.c_str());
        pango_font_description_set_absolute_size(d, size * PANGO_SCALE);
        pango_font_description_set_weight(d, static_cast<PangoWeight>(weight));
        pango_font_description_set_style(d, italic ? PANGO_STYLE_ITALIC : PANGO_STYLE_NORMAL);

        PangoFontMetrics* m = pango_context_get_metrics(m_context.get(), d, nullptr);
        const int ascent = PANGO_PIXELS_CEIL(pango_font_metrics_get_ascent(m));
        const int descent = PANGO_PIXELS_CEIL(pango_font_metrics_get_descent(m));
        font->lineWidth = std::max(1, PANGO_PIXELS(pango_font_metrics_get_underline_thickness(m)));
        pango_font_metrics_unref(m);
        font->metrics.ascent = ascent;
        font->metrics.descent = descent;
        font->metrics.height = ascent + descent;
        PangoRectangle ink;
        m_current = nullptr;
        pango_layout_get_pixel_extents(layout(*font, "x"), &ink, nullptr);
        font->metrics.x_height = ink.height > 0 ? ink.height : size / 2;
        font->metrics.draw_spaces = true;
        return font;
    }

    std::unique_ptr<PangoFontMap, ObjectDeleter> m_map;
    std::unique_ptr<PangoContext, ObjectDeleter> m_context;
    std::unique_ptr<PangoLayout, ObjectDeleter> m_layout;
    const Font* m_current = nullptr;
    std::unordered_map<std::string, std::unique_ptr<Font>> m_fonts;
};

// The family list of a CSS font-family value, as pango reads it: "Arial, 'Helvetica Neue'"
// becomes "Arial,Helvetica Neue". Empty means the default.
std::string familyList(const char* faceName) {
    std::string out;
    std::string_view face = faceName ? faceName : "";
    std::size_t start = 0;
    while (start <= face.size()) {
        std::size_t end = face.find(',', start);
        if (end == std::string_view::npos) {
            end = face.size();
        }
        std::string_view name = face.substr(start, end - start);
        while (!name.empty() && (name.front() == ' ' || name.front() == '"' ||
                                 name.front() == '\'' || name.front() == '\t')) {
            name.remove_prefix(1);
        }
        while (!name.empty() && (name.back() == ' ' || name.back() == '"' || name.back() == '\'' ||
                                 name.back() == '\t')) {
            name.remove_suffix(1);
        }
        if (!name.empty()) {
            if (!out.empty()) {
                out += ',';
            }
            out += name;
        }
        start = end + 1;
    }
    return out.empty() ? kDefaultFontName : out;
}

void setColor(cairo_t* cr, const litehtml::web_color& c) {
    cairo_set_source_rgba(cr, c.red / 255.0, c.green / 255.0, c.blue / 255.0, c.alpha / 255.0);
}

void rectangle(cairo_t* cr, const litehtml::position& p) {
    cairo_rectangle(cr, p.x, p.y, p.width, p.height);
}

// The local file an image's src names: a file:// address or an absolute path. Anything
// else (http, https, data, a relative name) names nothing here: the renderer never reaches
// the network.
std::string localFile(std::string_view src) {
    while (!src.empty() && (src.front() == ' ' || src.front() == '\t' || src.front() == '\n')) {
        src.remove_prefix(1);
    }
    while (!src.empty() && (src.back() == ' ' || src.back() == '\t' || src.back() == '\n')) {
        src.remove_suffix(1);
    }
    if (src.size() > 7 && g_ascii_strncasecmp(src.data(), "file://", 7) == 0) {
        const std::string uri(src);
        gchar* path = g_filename_from_uri(uri.c_str(), nullptr, nullptr);
        if (!path) {
            return {};
        }
        std::string out(path);
        g_free(path);
        return out;
    }
    if (!src.empty() && src.front() == '/') {
        return std::string(src);
    }
    return {};
}

}  // namespace

struct Canvas::Image {
    std::unique_ptr<cairo_surface_t, SurfaceDeleter> surface;
    int width = 0;
    int height = 0;
};

namespace {

using ImagePtr = std::shared_ptr<const Canvas::Image>;

// A decoded picture as a cairo surface: gdk-pixbuf's RGB(A) rows turned into cairo's
// premultiplied native-endian ARGB words.
std::unique_ptr<cairo_surface_t, SurfaceDeleter> toSurface(GdkPixbuf* pixbuf) {
    const int w = gdk_pixbuf_get_width(pixbuf);
    const int h = gdk_pixbuf_get_height(pixbuf);
    const int channels = gdk_pixbuf_get_n_channels(pixbuf);
    const bool alpha = gdk_pixbuf_get_has_alpha(pixbuf);
    if (gdk_pixbuf_get_bits_per_sample(pixbuf) != 8 || channels < (alpha ? 4 : 3)) {
        return nullptr;
    }
    std::unique_ptr<cairo_surface_t, SurfaceDeleter> surface(
        cairo_image_surface_create(alpha ? CAIRO_FORMAT_ARGB32 : CAIRO_FORMAT_RGB24, w, h));
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) {
        return nullptr;
    }
    cairo_surface_flush(surface.get());
    const guchar* from = gdk_pixbuf_read_pixels(pixbuf);
    const int fromStride = gdk_pixbuf_get_rowstride(pixbuf);
    unsigned char* to = cairo_image_surface_get_data(surface.get());
    const int toStride = cairo_image_surface_get_stride(surface.get());
    for (int y = 0; y < h; ++y) {
        const guchar* in = from + static_cast<std::ptrdiff_t>(y) * fromStride;
        auto* out =
            reinterpret_cast<std::uint32_t*>(to + static_cast<std::ptrdiff_t>(y) * toStride);
        for (int x = 0; x < w; ++x, in += channels) {
            const std::uint32_t a = alpha ? in[3] : 255;
            auto premultiply = [a](std::uint32_t c) { return (c * a + 127) / 255; };
            out[x] = (a << 24) | (premultiply(in[0]) << 16) | (premultiply(in[1]) << 8) |
                     premultiply(in[2]);
        }
    }
    cairo_surface_mark_dirty(surface.get());
    return surface;
}

ImagePtr readImage(const std::string& path) {
    std::error_code ec;
    const auto size = std::filesystem::file_size(path, ec);
    if (ec || size == 0 || size > kLargestImageFile) {
        return nullptr;
    }
    int w = 0;
    int h = 0;
    if (!gdk_pixbuf_get_file_info(path.c_str(), &w, &h) || w <= 0 || h <= 0) {
        return nullptr;
    }
    GError* error = nullptr;
    std::unique_ptr<GdkPixbuf, ObjectDeleter> pixbuf(
        w > kLargestImageSide || h > kLargestImageSide
            ? gdk_pixbuf_new_from_file_at_size(path.c_str(), kLargestImageSide, kLargestImageSide,
                                               &error)
            : gdk_pixbuf_new_from_file(path.c_str(), &error));
    if (error) {
        g_error_free(error);
    }
    if (!pixbuf) {
        return nullptr;
    }
    auto image = std::make_shared<Canvas::Image>();
    image->surface = toSurface(pixbuf.get());
    if (!image->surface) {
        return nullptr;
    }
    // The size the page gives it is that of the file, as a browser does.
    image->width = w;
    image->height = h;
    return image;
}

// The last few images, so that the logo of a run is decoded once; a file that
// changed (size or time) is read again.
ImagePtr cachedImage(const std::string& path) {
    struct Entry {
        std::string path;
        std::uintmax_t size;
        std::filesystem::file_time_type time;
        ImagePtr image;
    };
    static std::list<Entry> kept;
    std::error_code ec;
    const auto size = std::filesystem::file_size(path, ec);
    if (ec) {
        return nullptr;
    }
    const auto time = std::filesystem::last_write_time(path, ec);
    for (auto it = kept.begin(); it != kept.end(); ++it) {
        if (it->path == path && it->size == size && it->time == time) {
            kept.splice(kept.begin(), kept, it);
            return it->image;
        }
    }
    ImagePtr image = readImage(path);
    if (image) {
        kept.push_front({path, size, time, image});
        if (kept.size() > kKeptImages) {
            kept.pop_back();
        }
    }
    return image;
}

}  // namespace

Canvas::Canvas(int width, int height) : m_width(width), m_height(height) {}

Canvas::~Canvas() = default;

litehtml::uint_ptr Canvas::create_font(const litehtml::tchar_t* faceName, int size, int weight,
                                       litehtml::font_style italic, unsigned int decoration,
                                       litehtml::font_metrics* fm) {
    Font* font = FontShelf::shared().font(familyList(faceName), size, weight,
                                          italic == litehtml::fontStyleItalic, decoration);
    if (fm) {
        *fm = font->metrics;
    }
    return reinterpret_cast<litehtml::uint_ptr>(font);
}

void Canvas::delete_font(litehtml::uint_ptr hFont) {
    FontShelf::shared().release(reinterpret_cast<Font*>(hFont));
}

int Canvas::text_width(const litehtml::tchar_t* text, litehtml::uint_ptr hFont) {
    auto* font = reinterpret_cast<Font*>(hFont);
    return font && text ? FontShelf::shared().width(*font, text) : 0;
}

void Canvas::draw_text(litehtml::uint_ptr hdc, const litehtml::tchar_t* text,
                       litehtml::uint_ptr hFont, litehtml::web_color color,
                       const litehtml::position& pos) {
    auto* cr = reinterpret_cast<cairo_t*>(hdc);
    auto* font = reinterpret_cast<Font*>(hFont);
    if (!cr || !font || !text || pos.y < m_band.top || pos.y >= m_band.bottom) {
        return;
    }
    const std::string_view view(text);
    const bool blank = view.find_first_not_of(" \t\r\n") == std::string_view::npos;
    if (blank && !font->decoration) {
        return;
    }
    cairo_save(cr);
    applyClips(cr);
    setColor(cr, color);
    const int baseline = pos.bottom() - font->metrics.descent;
    if (!blank) {
        PangoLayout* layout = FontShelf::shared().layout(*font, view);
        cairo_move_to(cr, pos.x, baseline);
        pango_cairo_show_layout_line(cr, pango_layout_get_line_readonly(layout, 0));
    }
    const int thickness = font->lineWidth;
    auto line = [&](double y) {
        cairo_rectangle(cr, pos.x, y, pos.width, thickness);
        cairo_fill(cr);
    };
    if (font->decoration & litehtml::font_decoration_underline) {
        line(baseline + std::max(1, font->metrics.descent / 3));
    }
    if (font->decoration & litehtml::font_decoration_linethrough) {
        line(baseline - font->metrics.x_height / 2.0);
    }
    if (font->decoration & litehtml::font_decoration_overline) {
        line(pos.y);
    }
    cairo_restore(cr);
}

void Canvas::drawCentredText(cairo_t* cr, const std::string& text, double centreX, double baseline,
                             double sizePoints) {
    FontShelf& shelf = FontShelf::shared();
    Font* font =
        shelf.font(kDefaultFontName, static_cast<int>(std::lround(sizePoints)), 400, false, 0);
    const int width = shelf.width(*font, text);
    PangoLayout* layout = shelf.layout(*font, text);
    cairo_move_to(cr, centreX - width / 2.0, baseline);
    pango_cairo_show_layout_line(cr, pango_layout_get_line_readonly(layout, 0));
    shelf.release(font);
}

int Canvas::pt_to_px(int pt) const {
    return static_cast<int>(std::lround(pt * 96.0 / 72.0));
}

int Canvas::get_default_font_size() const {
    return kDefaultFontSize;
}

const litehtml::tchar_t* Canvas::get_default_font_name() const {
    return kDefaultFontName;
}

void Canvas::draw_list_marker(litehtml::uint_ptr hdc, const litehtml::list_marker& marker) {
    auto* cr = reinterpret_cast<cairo_t*>(hdc);
    const litehtml::position& p = marker.pos;
    if (!cr || p.y < m_band.top || p.y >= m_band.bottom || p.width <= 0) {
        return;
    }
    cairo_save(cr);
    applyClips(cr);
    setColor(cr, marker.color);
    switch (marker.marker_type) {
        case litehtml::list_style_type_disc:
        case litehtml::list_style_type_circle:
            cairo_arc(cr, p.x + p.width / 2.0, p.y + p.height / 2.0, p.width / 2.0, 0, 2 * M_PI);
            if (marker.marker_type == litehtml::list_style_type_disc) {
                cairo_fill(cr);
            } else {
                cairo_set_line_width(cr, 1);
                cairo_stroke(cr);
            }
            break;
        default:
            rectangle(cr, p);
            cairo_fill(cr);
            break;
    }
    cairo_restore(cr);
}

const Canvas::Image* Canvas::image(const litehtml::tchar_t* src) const {
    auto found = m_images.find(src ? src : "");
    return found == m_images.end() ? nullptr : found->second.get();
}

void Canvas::load_image(const litehtml::tchar_t* src, const litehtml::tchar_t*, bool) {
    if (!src || m_images.count(src)) {
        return;
    }
    const std::string path = localFile(src);
    m_images.emplace(src, path.empty() ? nullptr : cachedImage(path));
}

void Canvas::get_image_size(const litehtml::tchar_t* src, const litehtml::tchar_t*,
                            litehtml::size& sz) {
    const Image* img = image(src);
    sz.width = img ? img->width : 0;
    sz.height = img ? img->height : 0;
}

void Canvas::draw_background(litehtml::uint_ptr hdc, const litehtml::background_paint& bg) {
    auto* cr = reinterpret_cast<cairo_t*>(hdc);
    if (!cr) {
        return;
    }
    cairo_save(cr);
    applyClips(cr);
    rectangle(cr, bg.clip_box);
    cairo_clip(cr);
    if (bg.color.alpha) {
        setColor(cr, bg.color);
        cairo_paint(cr);
    }
    const Image* img = bg.image.empty() ? nullptr : image(bg.image.c_str());
    if (img && bg.image_size.width > 0 && bg.image_size.height > 0) {
        const double x = bg.position_x;
        const double y = bg.position_y;
        cairo_translate(cr, x, y);
        cairo_scale(cr, static_cast<double>(bg.image_size.width) / img->width,
                    static_cast<double>(bg.image_size.height) / img->height);
        cairo_set_source_surface(cr, img->surface.get(), 0, 0);
        if (bg.repeat == litehtml::background_repeat_repeat) {
            cairo_pattern_set_extend(cairo_get_source(cr), CAIRO_EXTEND_REPEAT);
        }
        cairo_paint(cr);
    }
    cairo_restore(cr);
}

void Canvas::draw_borders(litehtml::uint_ptr hdc, const litehtml::borders& borders,
                          const litehtml::position& draw_pos, bool) {
    auto* cr = reinterpret_cast<cairo_t*>(hdc);
    if (!cr) {
        return;
    }
    auto visible = [](const litehtml::border& b) {
        return b.width > 0 && b.style != litehtml::border_style_none &&
               b.style != litehtml::border_style_hidden && b.color.alpha > 0;
    };
    cairo_save(cr);
    applyClips(cr);
    const litehtml::position& p = draw_pos;
    auto side = [&](const litehtml::border& b, double x, double y, double w, double h) {
        if (visible(b)) {
            setColor(cr, b.color);
            cairo_rectangle(cr, x, y, w, h);
            cairo_fill(cr);
        }
    };
    side(borders.top, p.x, p.y, p.width, borders.top.width);
    side(borders.bottom, p.x, p.bottom() - borders.bottom.width, p.width, borders.bottom.width);
    side(borders.left, p.x, p.y, borders.left.width, p.height);
    side(borders.right, p.right() - borders.right.width, p.y, borders.right.width, p.height);
    cairo_restore(cr);
}

void Canvas::transform_text(litehtml::tstring& text, litehtml::text_transform tt) {
    gchar* out = nullptr;
    switch (tt) {
        case litehtml::text_transform_uppercase:
            out = g_utf8_strup(text.c_str(), static_cast<gssize>(text.size()));
            break;
        case litehtml::text_transform_lowercase:
            out = g_utf8_strdown(text.c_str(), static_cast<gssize>(text.size()));
            break;
        case litehtml::text_transform_capitalize:
            if (!text.empty() && g_ascii_islower(text[0])) {
                text[0] = g_ascii_toupper(text[0]);
            }
            break;
        default:
            break;
    }
    if (out) {
        text = out;
        g_free(out);
    }
}

void Canvas::set_clip(const litehtml::position& pos, const litehtml::border_radiuses&, bool valid_x,
                      bool valid_y) {
    litehtml::position clip = pos;
    if (!valid_x) {
        clip.x = -1000000;
        clip.width = 2000000;
    }
    if (!valid_y) {
        clip.y = -1000000;
        clip.height = 2000000;
    }
    m_clips.push_back(clip);
}

void Canvas::del_clip() {
    if (!m_clips.empty()) {
        m_clips.pop_back();
    }
}

void Canvas::applyClips(cairo_t* cr) const {
    for (const litehtml::position& clip : m_clips) {
        rectangle(cr, clip);
        cairo_clip(cr);
    }
}

void Canvas::get_client_rect(litehtml::position& client) const {
    client = litehtml::position(0, 0, m_width, m_height);
}

void Canvas::get_media_features(litehtml::media_features& media) const {
    media.type = litehtml::media_type_print;
    media.width = m_width;
    media.height = m_height;
    media.device_width = m_width;
    media.device_height = m_height;
    media.color = 8;
    media.color_index = 0;
    media.monochrome = 0;
    media.resolution = 96;
}

void Canvas::get_language(litehtml::tstring& language, litehtml::tstring& culture) const {
    language = "en";
    culture = "en-US";
}

}  // namespace dorvane::pdf

namespace dorvane::pdf {

const char* defaultStyleSheet() {
    // HTML's own presentation of its elements, as far as the mailed documents use them, and
    // the attributes older markup styles with (litehtml maps bgcolor, width and align itself).
    return R"css(
html, address, blockquote, body, center, dd, div, dl, dt, form, h1, h2, h3, h4, h5, h6, hr,
li, ol, p, pre, ul, article, aside, footer, header, nav, section { display: block }
head, meta, title, link, style, script, option, input[type="hidden"] { display: none }
html { position: relative }
body { margin: 8px }
p, blockquote, ul, ol, dl { margin-top: 1em; margin-bottom: 1em }
blockquote { margin-left: 40px; margin-right: 40px }
h1 { font-size: 2em; margin: .67em 0; font-weight: bold }
h2 { font-size: 1.5em; margin: .83em 0; font-weight: bold }
h3 { font-size: 1.17em; margin: 1em 0; font-weight: bold }
h4 { margin: 1.33em 0; font-weight: bold }
h5 { font-size: .83em; margin: 1.67em 0; font-weight: bold }
h6 { font-size: .67em; margin: 2.33em 0; font-weight: bold }
b, strong, th { font-weight: bold }
i, em, cite, var, address { font-style: italic }
u, ins { text-decoration: underline }
s, strike, del { text-decoration: line-through }
small { font-size: smaller }
big { font-size: larger }
sub { vertical-align: sub; font-size: smaller }
sup { vertical-align: super; font-size: smaller }
center { text-align: center }
span, a, font, label { display: inline }
a:link { color: #0000ee; text-decoration: underline }
br { display: inline-block }
img { display: inline-block }
img[align="left"] { float: left }
img[align="right"] { float: right }
hr { margin: .5em auto; border-style: inset; border-width: 1px }
pre, tt, code, kbd, samp { font-family: monospace }
pre { white-space: pre; margin: 1em 0 }
ul, ol { padding-left: 40px }
ul { list-style-type: disc }
ol { list-style-type: decimal }
li { display: list-item }
dd { margin-left: 40px }
table { display: table; border-collapse: separate; border-spacing: 2px;
        border-color: gray }
thead, tbody, tfoot { display: table-row-group; vertical-align: middle }
tr { display: table-row; vertical-align: inherit }
td, th { display: table-cell; vertical-align: inherit; padding: 1px }
th { text-align: center }
caption { display: table-caption; text-align: center }
table[border] { border-style: solid }
table[border|=0] { border-style: none }
table[border] td, table[border] th { border-style: solid; border-width: 1px;
                                     border-color: gray }
table[border|=0] td, table[border|=0] th { border-style: none }
td[nowrap], th[nowrap] { white-space: nowrap }
td[align="right"] > table, th[align="right"] > table { margin-left: auto }
td[align="center"] > table, th[align="center"] > table { margin-left: auto; margin-right: auto }
)css";
}

}  // namespace dorvane::pdf
