#include <algorithm>
#include <tuple>

#include "bindings/python/Argument.h"

namespace py = pybind11;
using namespace py::literals;

namespace qz::python {
namespace {

bool beginsCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
}

// The parameter names shared by all functions.
using Path = Argument<std::filesystem::path, "path">;
using Data = Argument<py::bytes, "data">;
using OfPalette = Argument<const Palette*, "palette">;
using LooksName = Argument<std::string, "looks">;

/// A C string ends at a null character, so the rest would be lost silently.
std::string checkedText(const char* parameter, std::string text) {
    if (text.find('\0') != text.npos)
        throw py::value_error(std::string(parameter) + " has a null character; remove it");
    return text;
}

Palette loadPalette(const Path& path) {
    const std::string file = checkedText("path", path.value.string());
    return {make<PaletteHandle>([&](auto** out) { return qzanno_palette_load(file.c_str(), out); })};
}

Palette paletteOfBytes(const Data& bytes) {
    const std::string_view data = bytes.value;
    return {make<PaletteHandle>([&](auto** out) { return qzanno_palette_load_memory(data.data(), data.size(), out); })};
}

std::vector<std::string> annotationsOf(const Palette& palette) {
    std::vector<std::string> names;
    while (const char* name = qzanno_palette_annotation_name(palette.handle.get(), names.size()))
        names.emplace_back(name);
    return names;
}

Fonts openFonts(const Argument<std::vector<std::filesystem::path>, "folders">& folders) {
    std::vector<std::string> paths;
    for (const std::filesystem::path& folder : folders.value) paths.push_back(folder.string());
    std::vector<const char*> pointers;
    for (const std::string& path : paths) pointers.push_back(path.c_str());
    // An empty vector may have a null pointer.
    pointers.push_back(nullptr);
    return {make<FontsHandle>([&](auto** out) { return qzanno_fonts_open(pointers.data(), paths.size(), out); })};
}

std::vector<std::string> problemsOf(const Fonts& fonts) {
    std::vector<std::string> problems;
    while (const char* line = qzanno_fonts_problem(fonts.handle.get(), problems.size())) problems.emplace_back(line);
    return problems;
}

Title titleOf(const std::string& text) {
    return {make<TitleHandle>([&](auto** out) { return qzanno_title_new(text.c_str(), out); })};
}

Title newTitle(const Argument<std::string, "text">& text,
               const Argument<std::vector<std::string>, "annotations">& annotations) {
    Title title = titleOf(checkedText("text", text.value));
    for (const std::string& name : annotations.value)
        check(qzanno_title_annotate_all(title.handle.get(), checkedText("an annotation", name).c_str()));
    return title;
}

// A copy that may be annotated further.
Title copyOf(const qzanno_title* title) {
    return {make<TitleHandle>([&](auto** out) { return qzanno_title_copy(title, out); })};
}

void annotateRange(Title& title, const std::string& annotation, py::ssize_t start, std::optional<py::ssize_t> stop) {
    const std::string_view text = title.text();
    const auto length = static_cast<py::ssize_t>(charactersOf(text));
    const py::ssize_t end = stop.value_or(length);
    checkedText("annotation", annotation);
    if (start < 0 || start > end || end > length)
        throw py::value_error("\"" + annotation + "\": characters " + std::to_string(start) + " to " +
                              std::to_string(end) + " are not within a text of " + std::to_string(length));
    const size_t first = byteOfCharacter(text, static_cast<size_t>(start));
    const size_t last = byteOfCharacter(text, static_cast<size_t>(end));
    check(qzanno_title_annotate(title.handle.get(), annotation.c_str(), first, last - first));
}

void annotate(Title& title, const Argument<std::string, "annotation">& annotation,
              const Argument<py::ssize_t, "start">& start, const Argument<std::optional<py::ssize_t>, "stop">& stop) {
    annotateRange(title, annotation.value, start.value, stop.value);
}

/// An annotation and its range of characters.
using SpanOf = std::tuple<std::string, py::ssize_t, py::ssize_t>;

std::vector<SpanOf> spansOf(const Title& title) {
    const std::string_view text = title.text();
    std::vector<SpanOf> spans;
    qzanno_span span;
    for (size_t i = 0; i < qzanno_title_span_count(title.handle.get()); ++i) {
        check(qzanno_title_span(title.handle.get(), i, &span));
        spans.emplace_back(span.annotation, charactersOf(text.substr(0, span.start)),
                           charactersOf(text.substr(0, span.start + span.length)));
    }
    return spans;
}

py::list namedSpansOf(const Title& title) {
    const py::object type = value("Span");
    py::list spans;
    for (const auto& [annotation, start, stop] : spansOf(title)) spans.append(type(annotation, start, stop));
    return spans;
}

/// The order of annotating has no effect.
bool areEqual(const Title& a, const Title& b) {
    auto spansOfA = spansOf(a), spansOfB = spansOf(b);
    std::ranges::sort(spansOfA);
    std::ranges::sort(spansOfB);
    return a.text() == b.text() && spansOfA == spansOfB;
}

Title restored(const std::string& text, const std::vector<SpanOf>& spans) {
    Title title = titleOf(text);
    for (const auto& [annotation, start, stop] : spans) annotateRange(title, annotation, start, stop);
    return title;
}

qzanno_looks looksNamed(const std::string& name) {
    if (name == "both") return QZANNO_LOOKS_BOTH;
    if (name == "house") return QZANNO_LOOKS_HOUSE;
    if (name == "file") return QZANNO_LOOKS_FILE;
    throw py::value_error("looks is \"house\", \"file\" or \"both\", not \"" + name + "\"");
}

qzanno_caption_format formatNamed(const std::string& name) {
    qzanno_caption_format format{};
    check(qzanno_caption_format_named(checkedText("format", name).c_str(), &format));
    return format;
}

Captions loadCaptions(const Path& path, const OfPalette& palette, const LooksName& looks) {
    const qzanno_looks which = looksNamed(looks.value);
    const std::string file = checkedText("path", path.value.string());
    return {make<CaptionsHandle>(
        [&](auto** out) { return qzanno_captions_load_looks(file.c_str(), palette.value->handle.get(), which, out); })};
}

Captions captionsOfBytes(const Data& bytes, const Argument<std::string, "format">& format, const OfPalette& palette,
                         const LooksName& looks) {
    const qzanno_caption_format kind = formatNamed(format.value);
    const qzanno_looks which = looksNamed(looks.value);
    const std::string_view data = bytes.value;
    return {make<CaptionsHandle>([&](auto** out) {
        return qzanno_captions_load_memory_looks(data.data(), data.size(), kind, palette.value->handle.get(), which,
                                                 out);
    })};
}

py::object cueAt(const Captions& captions, py::ssize_t index) {
    qzanno_cue cue;
    check(qzanno_captions_cue(captions.handle.get(), static_cast<size_t>(index), &cue));
    return value("Cue")(cue.start, cue.end, cue.identifier, copyOf(cue.title));
}

py::object cuesAt(const Captions& captions, const py::object& index) {
    const auto count = static_cast<py::ssize_t>(qzanno_captions_count(captions.handle.get()));
    if (py::isinstance<py::slice>(index)) {
        py::ssize_t start = 0, stop = 0, step = 0, length = 0;
        if (!index.cast<py::slice>().compute(count, &start, &stop, &step, &length)) throw py::error_already_set();
        py::list cues;
        for (py::ssize_t i = 0; i < length; ++i) cues.append(cueAt(captions, start + i * step));
        return cues;
    }
    if (!PyIndex_Check(index.ptr()))
        throw py::type_error(std::string("captions indices must be integers or slices, not ") +
                             Py_TYPE(index.ptr())->tp_name);
    py::ssize_t number = PyNumber_AsSsize_t(index.ptr(), PyExc_IndexError);
    if (number == -1 && PyErr_Occurred()) throw py::error_already_set();
    if (number < 0) number += count;
    if (number < 0 || number >= count) throw py::index_error("there are " + std::to_string(count) + " cues");
    return cueAt(captions, number);
}

py::list problemsOf(const Captions& captions) {
    const py::object type = value("Problem");
    py::list problems;
    qzanno_caption_problem problem;
    for (size_t i = 0; i < qzanno_captions_problem_count(captions.handle.get()); ++i) {
        check(qzanno_captions_problem(captions.handle.get(), i, &problem));
        problems.append(type(problem.line, problem.message));
    }
    return problems;
}

}  // namespace

size_t charactersOf(std::string_view utf8) {
    size_t count = 0;
    for (const char byte : utf8) count += beginsCharacter(byte);
    return count;
}

size_t byteOfCharacter(std::string_view utf8, size_t character) {
    for (size_t i = 0; i < utf8.size(); ++i) {
        if (!beginsCharacter(utf8[i])) continue;
        if (character == 0) return i;
        --character;
    }
    return utf8.size();
}

void addTitles(py::module_& module) {
    py::class_<Palette>(module, "Palette", py::is_final(),
                        "The looks of annotations. Immutable; may be used by any number of threads.")
        .def_static("load", &loadPalette, "path"_a,
                    "Reads a palette from an XML property list or an archive, told apart by the first bytes. Raises "
                    "FileError or FormatError.")
        .def_static("from_bytes", &paletteOfBytes, "data"_a, "The same for the contents of such a file.")
        .def_property_readonly("annotations", &annotationsOf,
                               "The names of the annotations except the global one, highest priority first.");

    py::class_<Fonts>(module, "Fonts", py::is_final(),
                      "The system's fonts and those in folders. May be used by any number of threads.")
        .def(py::init(&openFonts), "folders"_a,
             "Reads every font file in the folders and their subfolders, without installing anything. Raises FileError "
             "if a folder cannot be read.")
        .def_property_readonly("problems", py::overload_cast<const Fonts&>(&problemsOf),
                               "One line for each file left out because it is not a font, path first.");

    py::class_<Title>(module, "Title", py::is_final(),
                      "A text with named annotations on stretches of it. Works with any palette that has those names. "
                      "Titles compare, copy and pickle.")
        .def(py::init(&newTitle), "text"_a, "annotations"_a = std::vector<std::string>(),
             "Takes a text, with line feeds between lines, and annotations for the whole text.")
        .def("annotate", &annotate, "annotation"_a, "start"_a = 0, "stop"_a = py::none(),
             "Adds an annotation from character `start` up to `stop`, by default to the whole text. An annotation of "
             "the whole text also gives the title its margins, placement and box. Raises ValueError for positions "
             "outside the text.")
        .def_property_readonly("text", &Title::text)
        .def_property_readonly("spans", &namedSpansOf, "A Span for each annotated stretch, in the order of creation.")
        .def("__eq__", &areEqual, py::is_operator(), "Whether text and stretches are equal.")
        .def("__copy__", [](const Title& title) { return copyOf(title.handle.get()); })
        .def("__deepcopy__", [](const Title& title, const py::object&) { return copyOf(title.handle.get()); })
        .def(py::pickle([](const Title& title) { return py::make_tuple(std::string(title.text()), spansOf(title)); },
                        [](const py::tuple& state) {
                            return restored(state[0].cast<std::string>(), state[1].cast<std::vector<SpanOf>>());
                        }))
        .def("__repr__",
             [](const Title& title) { return "Title(" + py::repr(py::str(title.text())).cast<std::string>() + ")"; });

    py::class_<Captions>(module, "Captions", py::is_final(),
                         "The cues of a SubRip, WebVTT or SubStation Alpha file, a sequence of Cue.")
        .def_static("load", &loadCaptions, "path"_a, "palette"_a, py::kw_only(), "looks"_a = "both",
                    "Reads a .srt, .vtt, .ass or .ssa file, with its markup as annotations of the palette. `looks` "
                    "selects the styles, colours and italics: \"house\" for the palette's, \"file\" for the file's, or "
                    "\"both\" for the palette's and, for names that it does not have, the file's. Raises FileError, "
                    "FormatError, or ValueError for another ending.")
        .def_static("from_bytes", &captionsOfBytes, "data"_a, "format"_a, "palette"_a, py::kw_only(),
                    "looks"_a = "both",
                    "The same for the contents of such a file; `format` is the ending of its name, such as \"srt\".")
        .def("__len__", [](const Captions& captions) { return qzanno_captions_count(captions.handle.get()); })
        .def("__getitem__", &cuesAt, "index"_a, "A Cue, or a list of Cues for a slice.")
        .def_property_readonly("problems", py::overload_cast<const Captions&>(&problemsOf),
                               "A Problem for each piece of markup that has no effect or is malformed.");
}

}  // namespace qz::python
