#include "bindings/python/Handles.h"

namespace py = pybind11;

namespace qz::python {
namespace {

// They live as long as the interpreter, like the module that exports them.
PyObject* anyError = nullptr;
PyObject* fileError = nullptr;
PyObject* formatError = nullptr;
PyObject* annotationError = nullptr;

PyObject* add(py::module_& module, const char* name, const char* docstring, const py::tuple& bases) {
    PyObject* const type =
        PyErr_NewExceptionWithDoc((std::string("qzanno.") + name).c_str(), docstring, bases.ptr(), nullptr);
    if (!type) throw py::error_already_set();
    module.attr(name) = py::handle(type);
    return type;
}

PyObject* exceptionOf(qzanno_result result) {
    switch (result) {
        case QZANNO_ERROR_FILE:
            return fileError;
        case QZANNO_ERROR_FORMAT:
            return formatError;
        case QZANNO_ERROR_ANNOTATION:
            return annotationError;
        case QZANNO_ERROR_ARGUMENT:
        case QZANNO_ERROR_SIZE:
            return PyExc_ValueError;
        case QZANNO_ERROR_MEMORY:
            return PyExc_MemoryError;
        default:
            return anyError;
    }
}

}  // namespace

void check(qzanno_result result) {
    if (result == QZANNO_OK) return;
    PyErr_SetString(exceptionOf(result), qzanno_last_error());
    throw py::error_already_set();
}

void addErrors(py::module_& module) {
    const auto alsoA = [](PyObject* builtin) { return py::make_tuple(py::handle(anyError), py::handle(builtin)); };
    anyError = add(module, "Error", "An error reported by the library, with its message.",
                   py::make_tuple(py::handle(PyExc_Exception)));
    fileError = add(module, "FileError", "A file or folder cannot be read.", alsoA(PyExc_OSError));
    formatError = add(module, "FormatError", "The data read are not in the expected format.", alsoA(PyExc_ValueError));
    annotationError =
        add(module, "AnnotationError", "The palette has no annotation of that name.", alsoA(PyExc_LookupError));
}

}  // namespace qz::python
