#include "Arrays.h"
#include "MeshRead.h"
#include "Parts.h"
#include "SharedBody.h"
#include "WatchedRun.h"
#include "gsl_Matrix.h"

#include <algorithm>
#include <cstdint>
#include <exception>
#include <optional>
#include <stdexcept>
#include <string>

#include <pybind11/stl.h>

namespace gsl_python {

namespace {

namespace py = pybind11;
using gsl_sweep::Body;
using gsl_sweep::TriangleView;
using Indices = py::array_t<std::uint32_t, py::array::c_style>;

/// Ends the reading of a file that somebody has cancelled.
struct Cancelled {};

/// `faces` may be missing; each three vertices in turn are then a triangle.
BodyPointer MakeBody(const Reals& vertices, const std::optional<Indices>& faces) {
  // A damaged pickle comes here without the checks of the package.
  const auto isTable = [](const py::array& array) {
    return array.ndim() == 2 && array.shape(1) == 3;
  };
  if (!isTable(vertices) || (faces && !isTable(*faces))) {
    throw std::invalid_argument("vertices and faces: expected the shapes (n, 3) and (m, 3)");
  }
  TriangleView view;
  view.vertices = vertices.data();
  view.vertexCount = static_cast<std::size_t>(vertices.shape(0));
  view.triangleCount = view.vertexCount / 3;
  if (faces) {
    view.corners = faces->data();
    view.triangleCount = static_cast<std::size_t>(faces->shape(0));
  }
  const py::gil_scoped_release unlocked;
  return std::make_shared<SharedBody>(Body(view));
}

gsl_Matrix MatrixOf(const Reals& numbers) {
  gsl_Matrix matrix;
  std::copy_n(numbers.data(), 16, &matrix.m[0][0]);
  matrix.isIdentity = -1;
  return matrix;
}

BodyPointer Moved(const SharedBody& from, const Reals& numbers) {
  const gsl_Matrix matrix = MatrixOf(numbers);
  const py::gil_scoped_release unlocked;
  return std::make_shared<SharedBody>(from.body.Moved(matrix));
}

/// Returns the body and the greatest deviation of its growing.
py::tuple Grown(const SharedBody& from, double e) {
  double deviation = 0.0;
  BodyPointer grown;
  {
    const py::gil_scoped_release unlocked;
    grown = std::make_shared<SharedBody>(from.body.Grown(e, &deviation));
  }
  return py::make_tuple(grown, deviation);
}

/// Returns the corners of the triangles, three rows for each.
py::array TrianglesOf(const SharedBody& shared) {
  auto corners = MakeArray(3 * shared.body.TriangleCount(), 3);
  double* const to = corners.mutable_data();
  const py::gil_scoped_release unlocked;
  shared.body.GetTriangles(to);
  return std::move(corners);
}

py::array BoundsOf(const SharedBody& shared) {
  Coord3 low;
  Coord3 high;
  {
    const py::gil_scoped_release unlocked;
    shared.body.GetBounds(low, high);
  }
  auto bounds = MakeArray(2, 3);
  Write(low, bounds.mutable_data(0));
  Write(high, bounds.mutable_data(1));
  return std::move(bounds);
}

/// Returns why the body is not a solid; empty for a solid.
std::string SolidFault(const SharedBody& shared) {
  const py::gil_scoped_release unlocked;
  return shared.body.IsSolid().Reason();
}

/// Texts about a file name it, and a name may have any bytes.
py::object TextOf(const std::string& text) {
  return py::reinterpret_steal<py::object>(
      PyUnicode_DecodeFSDefaultAndSize(text.data(), static_cast<py::ssize_t>(text.size())));
}

/// Makes the exception for files that cannot be read.
void AddMeshError(py::module_& module) {
  // Never released, because the interpreter may end before the statics of this library.
  static const py::handle kMeshError =
      py::exception<gsl_mesh::MeshError>(module, "MeshError", PyExc_ValueError).release();
  // NOLINTNEXTLINE(performance-unnecessary-value-param): the signature is pybind11's
  py::register_exception_translator([](std::exception_ptr thrown) {
    try {
      if (thrown) std::rethrow_exception(thrown);
    } catch (const gsl_mesh::MeshError& error) {
      PyErr_SetObject(kMeshError.ptr(), TextOf(error.what()).ptr());
    }
  });
}

/// Returns the corners of the triangles, three rows for each, and the warnings.
py::tuple ReadFile(const std::string& path, const py::object& progress) {
  gsl_mesh::Mesh mesh;
  RunWatched(
      [&](const gsl_sweep::Run& run) {
        try {
          mesh = gsl_mesh::ReadMesh(path, [&run](double part) {
            if (!run.progress(part)) throw Cancelled();
          });
        } catch (const Cancelled&) {
          mesh.corners.clear();
        }
      },
      1, progress);
  auto corners = MakeArray(mesh.corners.size(), 3);
  double* to = corners.mutable_data();
  for (const Coord3& corner : mesh.corners) {
    Write(corner, to);
    to += 3;
  }
  py::list warnings;
  for (const std::string& text : mesh.warnings)
    warnings.append(TextOf(text));
  return py::make_tuple(corners, warnings);
}

} // namespace

void AddBodies(py::module_& module) {
  AddMeshError(module);
  module.def("read", &ReadFile);
  py::class_<SharedBody, BodyPointer>(module, "Body")
      .def(py::init(&MakeBody))
      .def("moved", &Moved)
      .def("grown", &Grown)
      .def("triangles", &TrianglesOf)
      .def("bounds", &BoundsOf)
      .def("solid_fault", &SolidFault)
      .def_property_readonly("triangle_count",
                             [](const SharedBody& shared) { return shared.body.TriangleCount(); })
      .def_property_readonly("skipped_count",
                             [](const SharedBody& shared) { return shared.body.SkippedCount(); })
      .def_property_readonly("memory_bytes",
                             [](const SharedBody& shared) { return shared.body.MemoryBytes(); });
}

} // namespace gsl_python
