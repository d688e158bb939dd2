#ifndef GSL_PYTHON_PARTS_H
#define GSL_PYTHON_PARTS_H

#include <pybind11/pybind11.h>

/// The parts of the compiled module.
namespace gsl_python {

void AddBodies(pybind11::module_& module);
/// Requires AddBodies first.
void AddPairs(pybind11::module_& module);
/// Adds distances, the sweep of triangles, and the tolerances that they read.
void AddQueries(pybind11::module_& module);
/// Adds the solver, the labelling and the matrix.
void AddAlgebra(pybind11::module_& module);

} // namespace gsl_python

#endif
