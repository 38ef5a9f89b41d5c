// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — what litehtml draws through: fonts from pango, images from local files, shapes
// and text onto a cairo context. Internal to the PDF renderer.
#pragma once

#include <cairo.h>
#include <litehtml.h>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace dorvane::pdf {

// Frees a C handle (of cairo, pango, GLib) with the library's own function.
template <auto Free>
struct Deleter {
    template <class T>
    void operator()(T* handle) const {
        Free(handle);
    }
};

// The vertical band of the document a page shows. Text is drawn only on the page whose
// band holds its top, so no line is written twice into the file.
struct Band {
    int top = 0;
    int bottom = 0;
};

// The document_container of one document: lays text out with the process's cached fonts and
// draws onto whatever cairo context the page hands to `draw` (as litehtml's hdc).
class Canvas : public litehtml::document_container {
public:
    Canvas(int width, int height);
    virtual ~Canvas();
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    // The band whose text is drawn from now on.
    void setBand(Band band) { m_band = band; }

    // Text drawn in the default font, centred on `centreX` with its baseline at `baseline`
    // (device units of `cr`): the page numbers.
    static void drawCentredText(cairo_t* cr, const std::string& text, double centreX,
                                double baseline, double sizePoints);

    litehtml::uint_ptr create_font(const litehtml::tchar_t* faceName, int size, int weight,
                                   litehtml::font_style italic, unsigned int decoration,
                                   litehtml::font_metrics* fm) override;
    void delete_font(litehtml::uint_ptr hFont) override;
    int text_width(const litehtml::tchar_t* text, litehtml::uint_ptr hFont) override;
    void draw_text(litehtml::uint_ptr hdc, const litehtml::tchar_t* text, litehtml::uint_ptr hFont,
                   litehtml::web_color color, const litehtml::position& pos) override;
    int pt_to_px(int pt) const override;
    int get_default_font_size() const override;
    const litehtml::tchar_t* get_default_font_name() const override;
    void draw_list_marker(litehtml::uint_ptr hdc, const litehtml::list_marker& marker) override;
    void load_image(const litehtml::tchar_t* src, const litehtml::tchar_t* baseurl,
                    bool redraw_on_ready) override;
    void get_image_size(const litehtml::tchar_t* src, const litehtml::tchar_t* baseurl,
                        litehtml::size& sz) override;
    void draw_background(litehtml::uint_ptr hdc, const litehtml::background_paint& bg) override;
    void draw_borders(litehtml::uint_ptr hdc, const litehtml::borders& borders,
                      const litehtml::position& draw_pos, bool root) override;
    void set_caption(const litehtml::tchar_t*) override {}
    void set_base_url(const litehtml::tchar_t*) override {}
    void link(const std::shared_ptr<litehtml::document>&, const litehtml::element::ptr&) override {}
    void on_anchor_click(const litehtml::tchar_t*, const litehtml::element::ptr&) override {}
    void set_cursor(const litehtml::tchar_t*) override {}
    void transform_text(litehtml::tstring& text, litehtml::text_transform tt) override;
    void import_css(litehtml::tstring&, const litehtml::tstring&, litehtml::tstring&) override {}
    void set_clip(const litehtml::position& pos, const litehtml::border_radiuses& bdr_radius,
                  bool valid_x, bool valid_y) override;
    void del_clip() override;
    void get_client_rect(litehtml::position& client) const override;
    std::shared_ptr<litehtml::element> create_element(
        const litehtml::tchar_t*, const litehtml::string_map&,
        const std::shared_ptr<litehtml::document>&) override {
        return nullptr;
    }
    void get_media_features(litehtml::media_features& media) const override;
    void get_language(litehtml::tstring& language, litehtml::tstring& culture) const override;

    struct Image;  // a decoded picture

private:
    const Image* image(const litehtml::tchar_t* src) const;
    void applyClips(cairo_t* cr) const;

    int m_width;
    int m_height;
    Band m_band;
    std::vector<litehtml::position> m_clips;
    // The images of this document by their src; null for one that could not be read.
    std::map<std::string, std::shared_ptr<const Image>> m_images;
};

// The style sheet litehtml starts every document from: what a browser does for HTML's
// elements without being told.
const char* defaultStyleSheet();

}  // namespace dorvane::pdf
