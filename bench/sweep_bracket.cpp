#include "MeshRead.h"
#include "gsl_Sweep.h"
#include "support/MeshView.h"

#include <CGAL/AABB_traits.h>
#include <CGAL/AABB_tree.h>
#include <CGAL/AABB_triangle_primitive.h>
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <thread>
#include <vector>

/// Sweeps real meshes, prints times, and brackets every answer with CGAL's intersection of
/// triangles at rest. They must be apart before the contact and touch after it, and a bisection
/// finds the travel between.
///
/// usage: sweep_bracket FOLDER [--subdivided]
///
/// --subdivided sweeps a body of 1.6 million triangles instead, and compares with the original
/// body. Every triangle of koala.obj is divided into four, twice. The exit status is 1 when a check
/// fails.
namespace {

using namespace gsl_mesh;
using namespace gsl_sweep;
using gsl_arithmetic::Add;
using gsl_arithmetic::Cross;
using gsl_arithmetic::Length;
using gsl_arithmetic::Multiply;
using gsl_arithmetic::Subtract;
using gsl_tools::ViewOf;

using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
using Triangles = std::vector<Kernel::Triangle_3>;
using Primitive = CGAL::AABB_triangle_primitive<Kernel, Triangles::const_iterator>;
using Tree = CGAL::AABB_tree<CGAL::AABB_traits<Kernel, Primitive>>;
using Clock = std::chrono::steady_clock;

struct Case {
  const char* moving;
  const char* fixed;
  Coord3 offset, direction;
};

const Case cases[] = {
    {"nist_pump_base.stl", "nist_insert.stl", {0, 0, 0.5}, {0, 0, -1}},
    {"nist_pump_base.stl", "nist_insert.stl", {0.1, 0.05, 0.5}, {0.1, 0, -1}},
    {"nist_regulator.stl", "nist_insert.stl", {0, 0, 0.5}, {0, 0, -1}},
    {"nist_regulator.stl", "nist_insert.stl", {0, 0, 0.01}, {1, 0, 0}},
    {"sword.obj", "koala.obj", {0, 6, 0}, {0, -1, 0}},
    {"sword.obj", "koala.obj", {0, 0, 12}, {0.05, 0.1, -1}},
    {"koala.obj", "nefertiti_lowres.obj", {0, 300, 0}, {0, -1, 0}},
    {"koala.obj", "koala.obj", {0, 6, 0}, {0, -1, 0}},
    {"koala.obj", "koala.obj", {0, 6, 0}, {0.1, -1, 0.2}},
    {"counter_unitsmm.stl", "counter_unitsmm.stl", {0, 0, 100}, {0, 0, -1}},
    {"counter_unitsmm.stl", "counter_unitsmm.stl", {0, 0, 100}, {0, 1, -1}},
    {"adis16480.stl", "nist_insert.stl", {0, 0, 0.5}, {0, 0.1, -1}},
    {"featuretype.stl", "idler_riser.stl", {0, 0, 5}, {0, 0, -1}},
    {"cycloidal.ply", "featuretype.stl", {0, 0, 40}, {0, 0, -1}},
    {"wallhole.obj", "nefertiti_lowres.obj", {0, 400, 0}, {0, -1, 0.1}},
};

double MillisecondsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

bool IsFinite(const Coord3& p) {
  return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

/// Returns the triangles that CGAL accepts: finite triangles with an area.
Triangles TrianglesOf(const Mesh& mesh, const Coord3& shift) {
  Triangles triangles;
  for (std::size_t k = 0; k < mesh.TriangleCount(); ++k) {
    const Coord3* c = mesh.corners.data() + 3 * k;
    if (!IsFinite(c[0]) || !IsFinite(c[1]) || !IsFinite(c[2])) continue;
    Kernel::Point_3 p[3];
    for (int i = 0; i < 3; ++i) {
      const Coord3 moved = Add(c[i], shift);
      p[i] = Kernel::Point_3(moved.x, moved.y, moved.z);
    }
    if (!CGAL::collinear(p[0], p[1], p[2])) triangles.emplace_back(p[0], p[1], p[2]);
  }
  return triangles;
}

double SizeOf(const Mesh& mesh) {
  double size = 0.0;
  for (const Coord3& p : mesh.corners) {
    if (IsFinite(p)) size = std::max({size, std::fabs(p.x), std::fabs(p.y), std::fabs(p.z)});
  }
  return size;
}

/// The test at rest.
class Standing {
public:
  Standing(const Mesh& moving, const Mesh& fixed, const Coord3& direction)
      : m_moving(moving), m_direction(direction), m_fixed(TrianglesOf(fixed, {0, 0, 0})),
        m_tree(m_fixed.begin(), m_fixed.end()) {
    m_tree.build();
  }

  bool TouchAfter(double travel) const {
    const CGAL::Bbox_3 box = m_tree.bbox();
    for (const Kernel::Triangle_3& t : TrianglesOf(m_moving, Multiply(m_direction, travel))) {
      if (CGAL::do_overlap(t.bbox(), box) && m_tree.do_intersect(t)) return true;
    }
    return false;
  }

private:
  const Mesh& m_moving;
  Coord3 m_direction;
  Triangles m_fixed;
  Tree m_tree;
};

/// Returns true when the test at rest is apart at some travels before the answer and touches just
/// after.
bool IsBracketed(const Answer& answer, const Mesh& moving, const Mesh& fixed, double& bisected) {
  const Standing standing(moving, fixed, answer.unitDirection);
  const double slack = 1e-9 * std::max(SizeOf(moving), SizeOf(fixed));
  bool good = true;
  for (const double part : {0.0, 0.5, 0.9, 0.99}) {
    good = good && !standing.TouchAfter(answer.contact.travel * part);
  }
  double apart = answer.contact.travel - slack;
  double touching = answer.contact.travel + slack;
  good = good && !standing.TouchAfter(apart) && standing.TouchAfter(touching);
  for (int step = 0; good && step < 12; ++step) {
    const double middle = apart + (touching - apart) / 2.0;
    (standing.TouchAfter(middle) ? touching : apart) = middle;
  }
  bisected = touching;
  return good;
}

Answer TimedSweep(const Mesh& moving, const Mesh& fixed, const Coord3& direction, unsigned threads,
                  double& milliseconds) {
  Question question;
  question.direction = direction;
  Run run;
  run.threads = threads;
  const auto start = Clock::now();
  const Pair pair(Body(ViewOf(moving), run), {Body(ViewOf(fixed), run)}, run);
  const Answer answer = pair.First(question, run);
  milliseconds = MillisecondsSince(start);
  return answer;
}

Mesh ReadMoved(const std::string& path, const Coord3& offset) {
  Mesh mesh = ReadMesh(path);
  for (Coord3& p : mesh.corners)
    p = Add(p, offset);
  return mesh;
}

int SweepCases(const std::string& folder) {
  int failures = 0;
  const unsigned threads = std::max(1u, std::thread::hardware_concurrency());
  for (const Case& c : cases) {
    const Mesh moving = ReadMoved(folder + "/" + c.moving, c.offset);
    const Mesh fixed = ReadMesh(folder + "/" + c.fixed);
    double single = 0.0;
    double parallel = 0.0;
    TimedSweep(moving, fixed, c.direction, 1, single);
    const Answer answer = TimedSweep(moving, fixed, c.direction, threads, parallel);
    double bisected = 0.0;
    const bool good =
        answer.status == SweepStatus::Contact && IsBracketed(answer, moving, fixed, bisected);
    failures += good ? 0 : 1;
    std::printf("%-20s %6zu  %-20s %6zu  %8.1f ms  %8.1f ms (%u)  %-18.12g %+.1e  %s\n", c.moving,
                moving.TriangleCount(), c.fixed, fixed.TriangleCount(), single, parallel, threads,
                answer.contact.travel, bisected - answer.contact.travel,
                good ? "bracketed" : "NOT BRACKETED");
    std::fflush(stdout);
  }
  return failures;
}

Mesh CutInFour(const Mesh& mesh) {
  Mesh cut;
  cut.corners.reserve(4 * mesh.corners.size());
  for (std::size_t k = 0; k < mesh.TriangleCount(); ++k) {
    const Coord3* c = mesh.corners.data() + 3 * k;
    const auto middle = [](const Coord3& a, const Coord3& b) { return Multiply(Add(a, b), 0.5); };
    const Coord3 ab = middle(c[0], c[1]);
    const Coord3 bc = middle(c[1], c[2]);
    const Coord3 ca = middle(c[2], c[0]);
    const Coord3 parts[12] = {c[0], ab, ca, ab, c[1], bc, ca, bc, c[2], ab, bc, ca};
    cut.corners.insert(cut.corners.end(), std::begin(parts), std::end(parts));
  }
  return cut;
}

int SweepSubdivided(const std::string& folder) {
  int failures = 0;
  const unsigned threads = std::max(1u, std::thread::hardware_concurrency());
  const Mesh koala = ReadMesh(folder + "/koala.obj");
  const Mesh fine = CutInFour(CutInFour(koala));
  const Mesh nefertiti = ReadMoved(folder + "/nefertiti_lowres.obj", {0, -300, 0});
  const Mesh above = ReadMoved(folder + "/koala.obj", {0, 6, 0});
  const Mesh aboveFine = CutInFour(CutInFour(above));
  const Coord3 d{0.1, -1, 0.2};
  const auto compare = [&](const char* name, const Mesh& moving, const Mesh& fixed,
                           const Answer& coarse) {
    double milliseconds = 0.0;
    const Answer answer = TimedSweep(moving, fixed, d, threads, milliseconds);
    const double size = std::max(SizeOf(moving), SizeOf(fixed));
    const bool good = std::fabs(answer.contact.travel - coarse.contact.travel) <= 1e-14 * size;
    failures += good ? 0 : 1;
    std::printf("%-28s %8zu %8zu  %8.1f ms (%u)  %.17g  differs by %.1e  %s\n", name,
                moving.TriangleCount(), fixed.TriangleCount(), milliseconds, threads,
                answer.contact.travel, answer.contact.travel - coarse.contact.travel,
                good ? "same" : "NOT THE SAME");
    std::fflush(stdout);
  };
  double unused = 0.0;
  const Answer onNefertiti = TimedSweep(koala, nefertiti, d, threads, unused);
  compare("koala onto nefertiti", fine, nefertiti, onNefertiti);
  const Answer onKoala = TimedSweep(above, koala, d, threads, unused);
  compare("koala onto koala", aboveFine, koala, onKoala);
  compare("koala onto fine koala", above, fine, onKoala);
  compare("fine koala onto fine koala", aboveFine, fine, onKoala);
  return failures;
}

} // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: sweep_bracket FOLDER [--subdivided]\n");
    return 2;
  }
  try {
    const bool subdivided = argc > 2 && std::string(argv[2]) == "--subdivided";
    return (subdivided ? SweepSubdivided(argv[1]) : SweepCases(argv[1])) == 0 ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "sweep_bracket: %s\n", error.what());
    return 1;
  }
}
