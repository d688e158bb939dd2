#include "Arrays.h"
#include "Parts.h"
#include "ToleranceMutex.h"
#include "gsl_Batch.h"
#include "gsl_Point.h"
#include "gsl_TriTriMinDirectionalDist.h"
#include "gsl_Util.h"
#include "gsl_Vector.h"

#include <algorithm>
#include <limits>
#include <mutex>
#include <shared_mutex>
#include <tuple>

namespace gsl_python {

namespace {

namespace py = pybind11;

constexpr std::size_t kRowsBetweenSignals = 8192;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

gsl_Util& Settings() {
  return omi_Singleton<gsl_Util>::Instance();
}

std::tuple<double, double, double> Tolerances() {
  const py::gil_scoped_release unlocked;
  const std::shared_lock<std::shared_mutex> reading(ToleranceMutex());
  const gsl_Util& settings = Settings();
  return {settings.linearTolerance, settings.zeroTolerance, settings.cosineTolerance};
}

/// Waits for the queries of other threads.
void SetTolerances(double linear, double zero, double cosine) {
  const py::gil_scoped_release unlocked;
  const std::unique_lock<std::shared_mutex> alone(ToleranceMutex());
  gsl_Util& settings = Settings();
  settings.linearTolerance = linear;
  settings.zeroTolerance = zero;
  settings.cosineTolerance = cosine;
}

/// Calls work(begin, size) for one run of rows after another without the lock of the interpreter,
/// and handles signals between.
template <class Work>
void ForRuns(std::size_t count, const Work& work) {
  for (std::size_t begin = 0; begin < count; begin += kRowsBetweenSignals) {
    {
      const py::gil_scoped_release unlocked;
      const std::shared_lock<std::shared_mutex> reading(ToleranceMutex());
      work(begin, std::min(kRowsBetweenSignals, count - begin));
    }
    if (PyErr_CheckSignals() != 0) throw py::error_already_set();
  }
}

/// Calls query(row) for each row, as ForRuns does.
template <class Query>
void ForRows(std::size_t count, const Query& query) {
  ForRuns(count, [&query](std::size_t begin, std::size_t size) {
    for (std::size_t row = begin; row < begin + size; ++row)
      query(row);
  });
}

gsl_Point PointOf(const double* numbers) {
  return {numbers[0], numbers[1], numbers[2]};
}

py::tuple PointSegment(const Reals& p, const Reals& a, const Reals& b, std::size_t count) {
  const Rows points(p, 3);
  const Rows from(a, 3);
  const Rows to(b, 3);
  auto distances = MakeArray(count);
  auto nearest = MakeArray(count, 3);
  double* distance = distances.mutable_data();
  double* near = nearest.mutable_data();
  ForRuns(count, [&](std::size_t k, std::size_t size) {
    // The start stays for a segment that is too short.
    for (std::size_t row = k; row < k + size; ++row)
      Write(CoordOf(from[row]), near + 3 * row);
    gsl_PointSegmentDistances(size, points.PointsFrom(k), from.PointsFrom(k), to.PointsFrom(k),
                              distance + k, near + 3 * k);
  });
  return py::make_tuple(distances, nearest);
}

py::array PointTriangle(const Reals& p, const Reals& a, const Reals& b, const Reals& c,
                        std::size_t count) {
  const Rows points(p, 3);
  const Rows first(a, 3);
  const Rows second(b, 3);
  const Rows third(c, 3);
  auto distances = MakeArray(count);
  double* distance = distances.mutable_data();
  ForRuns(count, [&](std::size_t k, std::size_t size) {
    gsl_PointTriangleDistances(size, points.PointsFrom(k), first.PointsFrom(k),
                               second.PointsFrom(k), third.PointsFrom(k), distance + k);
  });
  return std::move(distances);
}

/// Returns the distances and the two ends of each connection.
py::tuple SegmentSegment(const Reals& a0, const Reals& a1, const Reals& b0, const Reals& b1,
                         std::size_t count) {
  const Rows from(a0, 3);
  const Rows to(a1, 3);
  const Rows otherFrom(b0, 3);
  const Rows otherTo(b1, 3);
  auto distances = MakeArray(count);
  auto ends = MakeArray(count, 3);
  auto otherEnds = MakeArray(count, 3);
  double* distance = distances.mutable_data();
  double* end = ends.mutable_data();
  double* otherEnd = otherEnds.mutable_data();
  ForRuns(count, [&](std::size_t k, std::size_t size) {
    // Segments without a connection keep these ends.
    std::fill(end + 3 * k, end + 3 * (k + size), kNaN);
    std::fill(otherEnd + 3 * k, otherEnd + 3 * (k + size), kNaN);
    gsl_SegmentDistances(size, from.PointsFrom(k), to.PointsFrom(k), otherFrom.PointsFrom(k),
                         otherTo.PointsFrom(k), distance + k, end + 3 * k, otherEnd + 3 * k);
  });
  return py::make_tuple(distances, ends, otherEnds);
}

/// Returns whether each sweep meets, its distance, and its points on both triangles.
py::tuple TriangleSweep(const Reals& d, const Reals& a, const Reals& b, bool reverseA,
                        bool reverseB, double margin, std::size_t count) {
  const Rows directions(d, 3);
  const Rows moving(a, 9);
  const Rows fixed(b, 9);
  const bool twoSided[2] = {reverseA, reverseB};
  auto founds = MakeArray<bool>(count);
  auto distances = MakeArray(count);
  auto onMoving = MakeArray(count, 3);
  auto onFixed = MakeArray(count, 3);
  bool* found = founds.mutable_data();
  double* distance = distances.mutable_data();
  double* movingPoint = onMoving.mutable_data();
  double* fixedPoint = onFixed.mutable_data();
  const gsl_Point nowhere(kNaN, kNaN, kNaN);
  ForRows(count, [&](std::size_t k) {
    const double* const m = moving[k];
    const double* const f = fixed[k];
    gsl_Point contacts[2] = {nowhere, nowhere};
    distance[k] = std::numeric_limits<double>::infinity();
    found[k] = gsl_TriTriMinDirectionalDist(
        gsl_Vector(directions[k][0], directions[k][1], directions[k][2]), PointOf(m),
        PointOf(m + 3), PointOf(m + 6), PointOf(f), PointOf(f + 3), PointOf(f + 6), twoSided,
        margin, contacts, distance[k]);
    Write(contacts[0].Coords(), movingPoint + 3 * k);
    Write(contacts[1].Coords(), fixedPoint + 3 * k);
  });
  return py::make_tuple(founds, distances, onMoving, onFixed);
}

} // namespace

std::shared_mutex& ToleranceMutex() {
  static std::shared_mutex mutex;
  return mutex;
}

void AddQueries(py::module_& module) {
  Settings(); // the first call must not meet another
  module.def("tolerances", &Tolerances);
  module.def("set_tolerances", &SetTolerances);
  module.def("point_segment", &PointSegment);
  module.def("point_triangle", &PointTriangle);
  module.def("segment_segment", &SegmentSegment);
  module.def("triangle_sweep", &TriangleSweep);
}

} // namespace gsl_python
