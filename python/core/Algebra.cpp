#include "Arrays.h"
#include "Parts.h"
#include "ToleranceMutex.h"
#include "gsl_Batch.h"
#include "gsl_DepthFirstSearch.h"
#include "gsl_LinearEqnLUDSolver.h"
#include "gsl_Matrix.h"
#include "gsl_Point.h"
#include "gsl_Vector.h"

#include <algorithm>
#include <cstdint>
#include <mutex>
#include <new>
#include <shared_mutex>
#include <vector>

namespace gsl_python {

namespace {

namespace py = pybind11;
using Flags = py::array_t<bool, py::array::c_style>;

/// A matrix and its factors, for any threads.
class Lu {
public:
  explicit Lu(const Reals& matrix)
      : m_entries(matrix.data(), matrix.data() + matrix.size()),
        m_size(static_cast<unsigned>(matrix.shape(0))) {
    const py::gil_scoped_release unlocked;
    m_rows.reserve(std::size_t{m_size} + 1); // a null pointer would mean that there is no matrix
    for (unsigned row = 0; row < m_size; ++row)
      m_rows.push_back(m_entries.data() + std::size_t{row} * m_size);
    m_solver.SetMatrix(m_rows.data(), m_size);
    std::vector<double> zeros(m_size, 0.0); // any right-hand side has the matrix decomposed
    if (!m_solver.Solve(zeros.data(), zeros.data()) && !m_solver.IsSingular()) {
      throw std::bad_alloc();
    }
  }

  bool IsSingular() const { return m_solver.IsSingular(); }
  int Parity() const { return m_solver.Parity(); }

  py::array Pivots() const {
    auto pivots = MakeArray<std::int32_t>(m_size);
    if (m_solver.IsDecomposed()) {
      std::copy_n(m_solver.Pivots(), m_size, pivots.mutable_data());
    }
    return std::move(pivots);
  }

  /// Returns the factors in one matrix, without the ones on the diagonal of the lower.
  py::array Factors() const {
    py::array_t<double> factors({m_size, m_size});
    std::copy(m_entries.begin(), m_entries.end(), factors.mutable_data());
    return std::move(factors);
  }

  /// Solves for each row of `sides`, and returns the solutions as rows.
  py::array Solve(const Reals& sides) {
    const auto count = static_cast<std::size_t>(sides.shape(0));
    py::array_t<double> solutions({count, std::size_t{m_size}});
    std::copy_n(sides.data(), sides.size(), solutions.mutable_data());
    double* to = solutions.mutable_data();
    const py::gil_scoped_release unlocked;
    const std::lock_guard<std::mutex> alone(m_mutex);
    for (std::size_t k = 0; k < count; ++k, to += m_size) {
      if (!m_solver.Solve(to, to)) throw std::bad_alloc();
    }
    return std::move(solutions);
  }

private:
  std::vector<double> m_entries;
  std::vector<double*> m_rows;
  unsigned m_size;
  gsl_LinearEqnLUDSolver m_solver;
  std::mutex m_mutex; ///< one thread at a time may use a solver
};

py::tuple Label(const Flags& adjacency) {
  const auto size = static_cast<int>(adjacency.shape(0));
  auto labels = MakeArray<int>(static_cast<std::size_t>(size));
  int* const to = labels.mutable_data();
  const bool* const from = adjacency.data();
  int count = 0;
  {
    const py::gil_scoped_release unlocked;
    gsl_DepthFirstSearch(from, size, to, count);
  }
  return py::make_tuple(labels, count);
}

gsl_Matrix MatrixOf(const Reals& entries) {
  gsl_Matrix matrix;
  std::copy_n(entries.data(), 16, &matrix.m[0][0]);
  matrix.isIdentity = -1;
  return matrix;
}

py::array ArrayOf(const gsl_Matrix& matrix) {
  auto entries = MakeArray(4, 4);
  std::copy_n(&matrix.m[0][0], 16, entries.mutable_data());
  return std::move(entries);
}

py::array Rotation(const Reals& point, const Reals& axis, double angle) {
  const gsl_Point centre(point.at(0), point.at(1), point.at(2));
  const gsl_Vector along(axis.at(0), axis.at(1), axis.at(2));
  gsl_Matrix matrix;
  {
    const py::gil_scoped_release unlocked;
    const std::shared_lock<std::shared_mutex> reading(ToleranceMutex());
    matrix.AxisRotation(centre, along, angle);
  }
  return ArrayOf(matrix);
}

/// Returns the matrix that acts as `first`, then as `second`.
py::array Concatenated(const Reals& first, const Reals& second) {
  gsl_Matrix matrix = MatrixOf(first);
  matrix.Concatenate(MatrixOf(second));
  return ArrayOf(matrix);
}

py::array Inverse(const Reals& entries) {
  return ArrayOf(MatrixOf(entries).InverseRigidTransform());
}

/// Moves each row as a point.
py::array Apply(const Reals& entries, const Reals& points) {
  const gsl_Matrix matrix = MatrixOf(entries);
  const auto count = static_cast<std::size_t>(points.shape(0));
  auto moved = MakeArray(count, 3);
  const gsl_BatchPoints in = {points.data()};
  double* const to = moved.mutable_data();
  const py::gil_scoped_release unlocked;
  gsl_TransformPoints(count, matrix, in, to);
  return std::move(moved);
}

} // namespace

void AddAlgebra(py::module_& module) {
  py::class_<Lu>(module, "LU")
      .def(py::init<const Reals&>())
      .def_property_readonly("is_singular", &Lu::IsSingular)
      .def_property_readonly("parity", &Lu::Parity)
      .def("pivots", &Lu::Pivots)
      .def("factors", &Lu::Factors)
      .def("solve", &Lu::Solve);
  module.def("label", &Label);
  module.def("rotation", &Rotation);
  module.def("concatenated", &Concatenated);
  module.def("inverse", &Inverse);
  module.def("apply", &Apply);
}

} // namespace gsl_python
