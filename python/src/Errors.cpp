#include "python/src/Errors.h"

#include <pybind11/pybind11.h>

#include "tools/support/Failure.h"

namespace py = pybind11;

namespace Quorvan::Python {

void RegisterErrors() {
    // NOLINTNEXTLINE(performance-unnecessary-value-param): the binding's type of function
    py::register_exception_translator([](std::exception_ptr pointer) {
        try {
            if (pointer)
                std::rethrow_exception(pointer);
        } catch (const Tools::Failure& failure) {
            const bool isFile = failure.Code() == Tools::ExitCode::Input ||
                                failure.Code() == Tools::ExitCode::Output;
            PyErr_SetString(isFile ? PyExc_OSError : PyExc_ValueError, failure.what());
        }
    });
}

void RefuseName(const std::string& sentence) { throw py::key_error(sentence); }

void RefuseValue(const std::string& sentence) { throw py::value_error(sentence); }

}  // namespace Quorvan::Python
