#include <array>
#include <mutex>
#include <optional>

#include "bindings/python/Argument.h"

namespace py = pybind11;
using namespace py::literals;

namespace qz::python {
namespace {

using Picture = py::array_t<uint8_t>;

template <class Enumeration, size_t count>
Enumeration named(const char* parameter, const std::string& name,
                  const std::array<std::pair<const char*, Enumeration>, count>& known) {
    std::string names;
    for (const auto& [spelling, meaning] : known) {
        if (name == spelling) return meaning;
        names += (names.empty() ? "\"" : ", \"") + std::string(spelling) + "\"";
    }
    throw py::value_error(std::string(parameter) + " is one of " + names + ", not \"" + name + "\"");
}

qzanno_area areaOf(const std::string& name) {
    return named<qzanno_area>("area", name,
                              std::array{std::pair{"screen", QZANNO_AREA_SCREEN}, std::pair{"box", QZANNO_AREA_BOX}});
}

qzanno_alpha alphaOf(const std::string& name) {
    return named<qzanno_alpha>("alpha", name,
                               std::array{std::pair{"premultiplied", QZANNO_ALPHA_PREMULTIPLIED},
                                          std::pair{"straight", QZANNO_ALPHA_STRAIGHT}});
}

qzanno_direction directionOf(const std::string& name) {
    return named<qzanno_direction>(
        "direction", name,
        std::array{std::pair{"natural", QZANNO_DIRECTION_NATURAL}, std::pair{"ltr", QZANNO_DIRECTION_LEFT_TO_RIGHT},
                   std::pair{"rtl", QZANNO_DIRECTION_RIGHT_TO_LEFT}});
}

/// The memory of an array, which may be part of a larger one as long as the bytes of each row are contiguous.
qzanno_buffer bufferOf(const std::string& parameter, const py::array& array) {
    if (!array.dtype().is(py::dtype::of<uint8_t>()) || array.ndim() != 3 || array.shape(2) != 4)
        throw py::type_error(parameter + " must be an array of height x width x 4 of uint8");
    if (!array.writeable()) throw py::value_error(parameter + " is read-only");
    const bool isOfPixels = array.strides(2) == 1 && (array.strides(1) == 4 || array.shape(1) <= 1);
    if (!isOfPixels || array.strides(0) < 0)
        throw py::value_error(parameter + ": rows must be contiguous and ordered from the top; make a copy first");
    if (array.shape(0) > INT32_MAX || array.shape(1) > INT32_MAX || array.strides(0) > INT32_MAX)
        throw py::value_error(parameter + " is larger than a picture may be");
    return {static_cast<uint8_t*>(const_cast<void*>(array.data())), static_cast<int32_t>(array.shape(1)),
            static_cast<int32_t>(array.shape(0)), array.shape(0) > 1 ? static_cast<int32_t>(array.strides(0)) : 0};
}

using OfTitle = Argument<const Title*, "title">;
using AreaName = Argument<std::string, "area">;

class Renderer {
public:
    Renderer(const Argument<const Palette*, "palette">& palette,
             const Argument<std::pair<float, float>, "screen">& screenOf,
             const Argument<std::optional<std::pair<int32_t, int32_t>>, "frame">& frameOf,
             const Argument<const Fonts*, "fonts">& fonts, const Argument<std::string, "language">& language,
             const Argument<std::string, "direction">& direction)
        : handle_(
              make<RendererHandle>([&](auto** out) { return qzanno_renderer_new(palette.value->handle.get(), out); })) {
        const auto [width, height] = screenOf.value;
        auto frame = frameOf.value;
        if (!frame) {
            if (!(width >= 1 && width <= 1e6f && height >= 1 && height <= 1e6f))
                throw py::value_error("a screen's sides are 1 to 1000000 points; smaller ones need a frame");
            frame.emplace(static_cast<int32_t>(width), static_cast<int32_t>(height));
        }
        check(qzanno_renderer_set_screen(handle_.get(), width, height, frame->first, frame->second));
        if (fonts.value) check(qzanno_renderer_set_fonts(handle_.get(), fonts.value->handle.get()));
        check(qzanno_renderer_set_language(handle_.get(), language.value.c_str()));
        check(qzanno_renderer_set_direction(handle_.get(), directionOf(direction.value)));
    }

    py::object measure(const OfTitle& title, const AreaName& area) {
        const qzanno_place place = placeOf(*title.value, areaOf(area.value));
        return value("Place")(place.x, place.y, place.width, place.height);
    }

    py::array render(const OfTitle& title, const AreaName& areaName, const Argument<std::string, "alpha">& alphaName,
                     const Argument<std::optional<py::array>, "out">& out) {
        const qzanno_area area = areaOf(areaName.value);
        const qzanno_alpha alpha = alphaOf(alphaName.value);
        py::array picture = out.value ? *out.value : newPicture(placeOf(*title.value, area));
        const qzanno_buffer buffer = bufferOf("out", picture);
        draw("out", *title.value, area, buffer,
             [&] { return qzanno_renderer_render(handle_.get(), area, alpha, &buffer, nullptr); });
        return picture;
    }

    py::object composite(const OfTitle& title, const Argument<py::array, "frame">& frame, const AreaName& areaName) {
        const qzanno_area area = areaOf(areaName.value);
        const qzanno_buffer buffer = bufferOf("frame", frame.value);
        qzanno_pixels changed{};
        draw("frame", *title.value, area, buffer,
             [&] { return qzanno_renderer_composite(handle_.get(), area, &buffer, &changed); });
        return value("Pixels")(changed.x, changed.y, changed.width, changed.height);
    }

    py::list report(const OfTitle& ofTitle, const AreaName& areaName) {
        static constexpr std::array kKinds = {"font missing",    "font substituted", "glyph missing",
                                              "text clipped",    "glyphs clipped",   "layer 1 clipped",
                                              "layer 2 clipped", "bold synthesised", "italic synthesised",
                                              "regular missing", "upright missing"};
        const Title& title = *ofTitle.value;
        const qzanno_area area = areaOf(areaName.value);
        qzanno_report* made = nullptr;
        withTitle(title, [&] { return qzanno_renderer_report(handle_.get(), area, &made); });
        const ReportHandle report(made);
        const py::object type = value("ReportItem");
        const std::string_view text = title.text();
        py::list items;
        qzanno_report_item item;
        for (size_t i = 0; i < qzanno_report_count(made); ++i) {
            check(qzanno_report_item_at(made, i, &item));
            items.append(type(kKinds.at(static_cast<size_t>(item.kind) - 1), charactersOf(text.substr(0, item.start)),
                              charactersOf(text.substr(0, item.start + item.length)), item.font_asked, item.font_used));
        }
        return items;
    }

private:
    static py::array newPicture(const qzanno_place& place) {
        return Picture({py::ssize_t{place.height}, py::ssize_t{place.width}, py::ssize_t{4}});
    }

    qzanno_place placeOf(const Title& title, qzanno_area area) {
        qzanno_place place{};
        withTitle(title, [&] { return qzanno_renderer_measure(handle_.get(), area, &place); });
        return place;
    }

    template <class Call>
    void draw(const std::string& parameter, const Title& title, qzanno_area area, const qzanno_buffer& buffer,
              Call&& call) {
        const qzanno_result result = resultWithTitle(title, call);
        if (result == QZANNO_ERROR_ARGUMENT) {
            const auto size = [](int32_t width, int32_t height) {
                return std::to_string(width) + " x " + std::to_string(height);
            };
            const qzanno_place due = placeOf(title, area);
            if (buffer.width != due.width || buffer.height != due.height)
                throw py::value_error(parameter + " is of " + size(buffer.width, buffer.height) +
                                      " pixels, the picture of " + size(due.width, due.height) +
                                      ", as measure() tells");
        }
        check(result);
    }

    template <class Call>
    void withTitle(const Title& title, Call&& call) {
        check(resultWithTitle(title, call));
    }

    /// Calls the renderer for a title, one thread at a time, with the interpreter lock released. Copies the title
    /// first, since another thread may annotate it meanwhile.
    template <class Call>
    qzanno_result resultWithTitle(const Title& title, Call&& call) {
        qzanno_title* made = nullptr;
        check(qzanno_title_copy(title.handle.get(), &made));
        const TitleHandle copy(made);
        qzanno_result result = QZANNO_OK;
        {
            const py::gil_scoped_release letGo;
            const std::lock_guard lock(mutex_);
            result = qzanno_renderer_set_title(handle_.get(), copy.get());
            if (result == QZANNO_OK) result = call();
        }
        return result;
    }

    const RendererHandle handle_;
    std::mutex mutex_;
};

}  // namespace

void addRendering(py::module_& module) {
    // pybind11 imports NumPy on first use and releases the interpreter lock meanwhile, so two threads could deadlock.
    py::dtype::of<uint8_t>();

    py::class_<Renderer>(
        module, "Renderer", py::is_final(),
        "Lays out and draws titles for one screen. Caches drawn glyphs for later titles, so reuse the renderer.")
        .def(py::init<const Argument<const Palette*, "palette">&, const Argument<std::pair<float, float>, "screen">&,
                      const Argument<std::optional<std::pair<int32_t, int32_t>>, "frame">&,
                      const Argument<const Fonts*, "fonts">&, const Argument<std::string, "language">&,
                      const Argument<std::string, "direction">&>(),
             "palette"_a, py::kw_only(), "screen"_a = std::pair(1920.0f, 1080.0f), "frame"_a = py::none(),
             "fonts"_a = py::none(), "language"_a = "", "direction"_a = "natural",
             "The screen's size is in points, the unit of the palette; the frame's is in pixels, by default one per "
             "point. The language is a tag such as \"ja\"; the direction is \"natural\", \"ltr\" or \"rtl\". Raises "
             "ValueError.")
        .def("measure", &Renderer::measure, "title"_a, py::kw_only(), "area"_a = "box",
             "Returns the Place of the picture that `render` makes for an area: \"screen\", or \"box\" for the text's "
             "box with 10 points around it.")
        .def("render", &Renderer::render, "title"_a, py::kw_only(), "area"_a = "screen", "alpha"_a = "premultiplied",
             "out"_a = py::none(),
             "Returns the picture as a new array, premultiplied or \"straight\". Given `out`, which must have the size "
             "that `measure` returns and may be part of a larger array, clears it, draws into it and returns it. "
             "Raises AnnotationError for a name that the palette does not have.")
        .def("composite", &Renderer::composite, "title"_a, "frame"_a, py::kw_only(), "area"_a = "screen",
             "Draws the title over an array that holds an opaque frame or premultiplied pixels. Returns the Pixels "
             "that may have changed.")
        .def("report", &Renderer::report, "title"_a, py::kw_only(), "area"_a = "screen",
             "Returns a ReportItem for each way in which the title is not shown as requested.");
}

}  // namespace qz::python
