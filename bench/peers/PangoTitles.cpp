#include <pango/pangocairo.h>

#include "bench/peers/Titles.h"

namespace qz::peers {
namespace {

class PangoTitles final : public TitlePeer {
public:
    PangoTitles(int width, int height)
        : surface_(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height)),
          cairo_(cairo_create(surface_)),
          layout_(pango_cairo_create_layout(cairo_)) {
        cairo_set_line_join(cairo_, CAIRO_LINE_JOIN_ROUND);
        pango_layout_set_width(layout_, width * PANGO_SCALE);
        pango_layout_set_alignment(layout_, PANGO_ALIGN_CENTER);
    }
    ~PangoTitles() override {
        g_object_unref(layout_);
        cairo_destroy(cairo_);
        cairo_surface_destroy(surface_);
    }

    void draw(const Title& title, Frame& frame) override {
        cairo_set_operator(cairo_, CAIRO_OPERATOR_CLEAR);
        cairo_paint(cairo_);
        cairo_set_operator(cairo_, CAIRO_OPERATOR_OVER);
        const double top = frame.height - 40 - layOut(title);
        cairo_set_line_width(cairo_, title.outline);
        addPath(title.offset, top + title.offset);
        cairo_set_source_rgba(cairo_, 0, 0, 0, 0.5);
        cairo_stroke_preserve(cairo_);
        cairo_fill(cairo_);
        addPath(0, top);
        cairo_set_source_rgba(cairo_, 0, 0, 0, 1);
        cairo_stroke_preserve(cairo_);
        cairo_fill_preserve(cairo_);
        cairo_set_source_rgba(cairo_, 1, 1, 1, 1);
        cairo_fill(cairo_);
        cairo_surface_flush(surface_);
        storeARGB(reinterpret_cast<const uint32_t*>(cairo_image_surface_get_data(surface_)), frame);
    }

private:
    /// Returns the height of the text.
    int layOut(const Title& title) {
        std::string text;
        for (size_t i = 0; i < title.lines.size(); ++i) text += (i ? "\n" : "") + title.lines[i];
        PangoFontDescription* font = pango_font_description_from_string("DejaVu Sans Bold");
        pango_font_description_set_absolute_size(font, title.size * PANGO_SCALE);
        pango_layout_set_font_description(layout_, font);
        pango_font_description_free(font);
        pango_layout_set_text(layout_, text.c_str(), -1);
        int width = 0, height = 0;
        pango_layout_get_pixel_size(layout_, &width, &height);
        return height;
    }
    void addPath(double x, double y) {
        cairo_new_path(cairo_);
        cairo_move_to(cairo_, x, y);
        pango_cairo_layout_path(cairo_, layout_);
    }

    cairo_surface_t* const surface_;
    cairo_t* const cairo_;
    PangoLayout* const layout_;
};

}  // namespace

std::unique_ptr<TitlePeer> pangoTitles(int width, int height) {
    return std::make_unique<PangoTitles>(width, height);
}

}  // namespace qz::peers
