#include "bindings/python/Handles.h"

namespace py = pybind11;

namespace qz::python {

py::object value(const char* name) {
    return py::module_::import("qzanno._values").attr(name);
}

}  // namespace qz::python

PYBIND11_MODULE(_qzanno, module) {
    module.doc() = "The compiled part of qzanno.";
    module.attr("__version__") = qzanno_version();
    qz::python::addErrors(module);
    qz::python::addTitles(module);
    qz::python::addRendering(module);
}
