#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include <pybind11/pybind11.h>

#include "bindings/c/qzanno.h"

namespace qz::python {

template <auto free>
struct Free {
    template <class T>
    void operator()(T* object) const {
        free(object);
    }
};

using PaletteHandle = std::unique_ptr<qzanno_palette, Free<qzanno_palette_free>>;
using FontsHandle = std::unique_ptr<qzanno_fonts, Free<qzanno_fonts_free>>;
using TitleHandle = std::unique_ptr<qzanno_title, Free<qzanno_title_free>>;
using CaptionsHandle = std::unique_ptr<qzanno_captions, Free<qzanno_captions_free>>;
using RendererHandle = std::unique_ptr<qzanno_renderer, Free<qzanno_renderer_free>>;
using ReportHandle = std::unique_ptr<qzanno_report, Free<qzanno_report_free>>;

/// Raises the Python exception for a failed result, with the message of this thread's last failed call. Call with the
/// interpreter lock held.
void check(qzanno_result result);
void addErrors(pybind11::module_& module);

/// Makes an object through a call with an `out` parameter, releasing the interpreter lock meanwhile.
template <class Handle, class Call>
Handle make(Call&& call) {
    typename Handle::pointer object = nullptr;
    qzanno_result result = QZANNO_OK;
    {
        const pybind11::gil_scoped_release letGo;
        result = call(&object);
    }
    check(result);
    return Handle(object);
}

/// A named tuple of _values.py.
pybind11::object value(const char* name);

/// The number of characters in a UTF-8 text, and the byte at which one begins; `character` is at most that number.
size_t charactersOf(std::string_view utf8);
size_t byteOfCharacter(std::string_view utf8, size_t character);

/// The Python object of a handle.
struct Palette {
    PaletteHandle handle;
};

struct Fonts {
    FontsHandle handle;
};

struct Captions {
    CaptionsHandle handle;
};

struct Title {
    TitleHandle handle;

    std::string_view text() const { return qzanno_title_text(handle.get()); }
};

void addTitles(pybind11::module_& module);
void addRendering(pybind11::module_& module);

}  // namespace qz::python
