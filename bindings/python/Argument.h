#pragma once

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <pybind11/numpy.h>
#include <pybind11/stl.h>
#include <pybind11/stl/filesystem.h>

#include "bindings/python/Handles.h"

namespace qz::python {

/// The name of a parameter.
template <size_t size>
struct ParameterName {
    constexpr ParameterName(const char (&name)[size]) { std::copy_n(name, size, text); }
    char text[size];
};

/// An argument with Python's error for a wrong type: "argument 'start' must be int, not str". Without it, pybind11
/// shows the C++ signature.
template <class T, ParameterName name>
struct Argument {
    T value{};
};

template <class T>
inline constexpr bool isList = false;
template <class Element>
inline constexpr bool isList<std::vector<Element>> = true;

/// The Python name of an argument's type.
///@{
template <class T>
inline constexpr const char* typeOf = nullptr;
template <>
inline constexpr const char* typeOf<std::string> = "str";
template <>
inline constexpr const char* typeOf<pybind11::ssize_t> = "int";
template <>
inline constexpr const char* typeOf<std::optional<pybind11::ssize_t>> = "int or None";
template <>
inline constexpr const char* typeOf<pybind11::bytes> = "bytes";
template <>
inline constexpr const char* typeOf<std::filesystem::path> = "str or os.PathLike";
template <>
inline constexpr const char* typeOf<std::vector<std::string>> = "an iterable of str";
template <>
inline constexpr const char* typeOf<std::vector<std::filesystem::path>> = "an iterable of str or os.PathLike";
template <>
inline constexpr const char* typeOf<std::pair<float, float>> = "two numbers";
template <>
inline constexpr const char* typeOf<std::optional<std::pair<int32_t, int32_t>>> = "two ints or None";
template <>
inline constexpr const char* typeOf<pybind11::array> = "numpy.ndarray";
template <>
inline constexpr const char* typeOf<std::optional<pybind11::array>> = "numpy.ndarray or None";
template <>
inline constexpr const char* typeOf<const Palette*> = "qzanno.Palette";
template <>
inline constexpr const char* typeOf<const Fonts*> = "qzanno.Fonts or None";
template <>
inline constexpr const char* typeOf<const Title*> = "qzanno.Title";
///@}

}  // namespace qz::python

namespace pybind11::detail {

template <class T, qz::python::ParameterName parameter>
struct type_caster<qz::python::Argument<T, parameter>> {
    using Inner = make_caster<T>;
    PYBIND11_TYPE_CASTER(PYBIND11_TYPE(qz::python::Argument<T, parameter>), Inner::name);

    bool load(handle source, bool /*convert*/) {
        Inner inner;
        list elements;
        // A str is an iterable of str, but never meant as one.
        const bool isText = isinstance<str>(source) || isinstance<bytes>(source);
        if constexpr (qz::python::isList<T>) {
            if (!isText && isinstance<iterable>(source)) source = elements = list(reinterpret_borrow<object>(source));
        }
        // None becomes a null pointer, which only `fonts` may be.
        const bool isMissing = std::is_pointer_v<T> && !std::is_same_v<T, const qz::python::Fonts*> && source.is_none();
        if (isMissing || !inner.load(source, true))
            throw type_error("argument '" + std::string(parameter.text) + "' must be " + qz::python::typeOf<T> +
                             found(source, isText));
        value.value = cast_op<T>(std::move(inner));
        return true;
    }

private:
    static std::string found(handle source, bool isText) {
        if constexpr (qz::python::isList<T>) {
            if (isinstance<list>(source)) return " alone";
        }
        if (isText && std::string_view(qz::python::typeOf<T>).starts_with("str"))
            return " that files and UTF-8 can hold, without lone surrogates and null characters";
        return std::string(", not ") + Py_TYPE(source.ptr())->tp_name;
    }
};

}  // namespace pybind11::detail
