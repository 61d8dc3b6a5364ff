// module.cpp - zmxjpx.raw: every function of the library under its own name.
//
// The functions themselves are what python/generate.py makes of the public headers. Here is how they are called:
// arguments by place or by name, in an array by the places of the parameters. SPDX-License-Identifier: BSD-2-Clause
#include "python/src/raw/call.h"

#include <cstring>

namespace binding::raw {
namespace {

int placeOf(const Function& f, const std::string& name) {
    for (std::size_t i = 0; i < f.parameters.size(); ++i)
        if (name == f.parameters[i]) return int(i);
    throw py::type_error(std::string(f.name) + "() has no argument " + name);
}

std::vector<PyObject*> placed(const Function& f, PyObject* const* args, Py_ssize_t given, PyObject* names) {
    std::vector<PyObject*> values(f.parameters.size(), nullptr);
    if (given > f.required)
        throw py::type_error(std::string(f.name) + "() takes " + std::to_string(f.required) +
                             " arguments by place; the others go by name");
    for (Py_ssize_t i = 0; i < given; ++i) values[std::size_t(i)] = args[i];
    for (Py_ssize_t i = 0; names && i < PyTuple_GET_SIZE(names); ++i) {
        const int place = placeOf(f, py::cast<std::string>(py::handle(PyTuple_GET_ITEM(names, i))));
        if (values[std::size_t(place)])
            throw py::type_error(std::string(f.name) + "() got " + f.parameters[std::size_t(place)] + " twice");
        values[std::size_t(place)] = args[given + i];
    }
    for (int i = 0; i < f.required; ++i)
        if (!values[std::size_t(i)] || values[std::size_t(i)] == Py_Ellipsis)
            throw py::type_error(std::string(f.name) + "() misses " + f.parameters[std::size_t(i)]);
    return values;
}

const Function& functionOf(PyObject* self) {
    return *static_cast<const Function*>(PyCapsule_GetPointer(self, "zmxjpx.raw"));
}

// What CPython calls for each of them.
PyObject* call(PyObject* self, PyObject* const* args, Py_ssize_t given, PyObject* names) {
    try {
        const Function& f = functionOf(self);
        Arguments arguments(f, placed(f, args, given, names));
        return f.call(arguments).release().ptr();
    } catch (py::error_already_set& e) {
        e.restore();
    } catch (const py::type_error& e) {
        PyErr_SetString(PyExc_TypeError, e.what());
    } catch (const py::value_error& e) {
        PyErr_SetString(PyExc_ValueError, e.what());
    } catch (const std::bad_alloc&) {
        PyErr_NoMemory();
    } catch (const std::exception& e) {
        PyErr_SetString(PyExc_RuntimeError, e.what());
    }
    return nullptr;
}

py::dict version() {
    const ZmxLibraryVersion& v = *zmxjGetLibVersion();
    py::dict record;
    record["major"] = v.major;
    record["minor"] = v.minor;
    record["majorBuild"] = v.majorBuild;
    record["build"] = v.build;
    record["targetCpu"] = py::bytes(v.targetCpu, sizeof v.targetCpu);
    record["Name"] = v.Name;
    record["Version"] = v.Version;
    record["BuildDate"] = v.BuildDate;
    return record;
}

void addFunctions(py::module_& module) {
    static std::vector<PyMethodDef> definitions; // as long as the interpreter
    definitions.reserve(functions().size());
    const py::str name = module.attr("__name__");
    for (const Function& f : functions()) {
        // By way of a pointer to any function: the flags tell which one it is.
        definitions.push_back({f.name, reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(call)),
                               METH_FASTCALL | METH_KEYWORDS, f.doc});
        const py::capsule self(&f, "zmxjpx.raw");
        module.attr(f.name) =
            py::reinterpret_steal<py::object>(PyCFunction_NewEx(&definitions.back(), self.ptr(), name.ptr()));
    }
}

} // namespace
} // namespace binding::raw

PYBIND11_MODULE(raw, module) {
    namespace py = pybind11;
    module.doc() =
        "The functions of libzmxjpx on buffers, under their own names.\n\n"
        "Parameters are those of C without steps, which come from the strides, and without results, which are\n"
        "returned; names lose the p of a pointer. Arrays are never copied or converted: they are of the type that\n"
        "the function takes, and of each row the elements lie side by side. What a call may touch is tested\n"
        "against the arrays first (ValueError). None is a null pointer. Numbers that go in and come out are\n"
        "arrays of one element. A status below 0 is a StatusError, one above 0 a StatusWarning.";
    binding::raw::addStates(module);
    binding::raw::addFunctions(module);
    module.def("zmxjGetLibVersion", binding::raw::version,
               "The version record of the library, by the names of its fields.");
    const py::module_ status = py::module_::import("zmxjpx._status");
    module.attr("StatusError") = status.attr("StatusError");
    module.attr("StatusWarning") = status.attr("StatusWarning");
}
