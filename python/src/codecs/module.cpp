// module.cpp - zmxjpx._codecs: the whole codecs on arrays. zmxjpx/codecs.py gives each function its Python form.
//
// A decoder returns the array and what was wrong with the file, a line each. codecs::Error becomes zmxjpx.CodecError.
// SPDX-License-Identifier: BSD-2-Clause
#include "python/src/codecs/arrays.h"

PYBIND11_MODULE(_codecs, module) {
    namespace py = pybind11;
    module.doc() = "Whole codecs on arrays; use zmxjpx, which stands before it.";
    py::object error = py::register_exception<codecs::Error>(module, "CodecError", PyExc_ValueError);
    error.attr("__module__") = "zmxjpx";
    error.attr("__doc__") = "What a codec cannot do with a file or a picture, and where in it, in one line.";
    binding::addJpeg(module);
    binding::addJpeg2000(module);
    binding::addTextures(module);
    binding::addPackBits(module);
}
