#include "Parts.h"

#include "gsl_Version.h"

#include <string>

namespace {

std::string Version() {
  return std::to_string(GSL_VERSION_MAJOR) + "." + std::to_string(GSL_VERSION_MINOR) + "." +
         std::to_string(GSL_VERSION_PATCH);
}

} // namespace

/// The compiled part of the package. The Python part beside it checks arguments and describes them.
PYBIND11_MODULE(_core, module) {
  module.attr("version") = Version();
  gsl_python::AddBodies(module);
  gsl_python::AddPairs(module);
  gsl_python::AddQueries(module);
  gsl_python::AddAlgebra(module);
}
