// Makes two small bodies of any coordinates and asks the sweep of bodies about them. A judge that
// computes in rationals, by another formulation, decides whether each answer is right.

#include "FuzzInput.h"
#include "SweepGuard.h"

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

namespace {

using reference::Coord3;
using reference::Limit;
using reference::Scene;

constexpr std::uint8_t kMostTriangles = 4;

/// Returns a coordinate of any bits, or with few bits and a scale, so that different sizes meet.
double Coordinate(FuzzInput& in, int exponent) {
  return std::ldexp(in.Number(), exponent);
}

std::vector<Coord3> BodyOf(FuzzInput& in, int exponent) {
  std::vector<Coord3> corners(3 * std::size_t{1} * (1 + in.Below(kMostTriangles)));
  for (std::size_t k = 0; k < corners.size(); ++k) {
    // A corner may be an earlier one, as in a mesh.
    const std::uint8_t choice = in.Byte();
    if (k > 0 && choice % 2 == 1) {
      corners[k] = corners[choice / 2 % k];
      continue;
    }
    corners[k].x = Coordinate(in, exponent);
    corners[k].y = Coordinate(in, exponent);
    corners[k].z = Coordinate(in, exponent);
  }
  return corners;
}

bool IsDirection(const Coord3& d) {
  return std::isfinite(d.x) && std::isfinite(d.y) && std::isfinite(d.z) &&
         (d.x != 0.0 || d.y != 0.0 || d.z != 0.0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
  FuzzInput in(bytes, count);
  const int exponents[] = {0, 0, 0, 500, -500, 900, -900, -1060};
  const int exponent = exponents[in.Below(8)];
  Scene scene;
  scene.name = "input " + std::to_string(in.Byte());
  scene.question.oneSided = in.Below(4) == 1;
  scene.limit = static_cast<Limit>(in.Below(6));
  const bool asksRules = in.Below(2) == 1;
  scene.question.direction.x = in.Number();
  scene.question.direction.y = in.Number();
  scene.question.direction.z = in.Number();
  if (!IsDirection(scene.question.direction)) return 0;
  scene.question.moving = BodyOf(in, exponent);
  scene.question.fixed = BodyOf(in, exponent);
  reference::Tally tally;
  reference::RuleTally rules;
  std::string complaint = Complaint(scene, tally);
  if (complaint.empty() && asksRules) complaint = ComplaintOfRules(scene, rules);
  if (!complaint.empty()) {
    std::fprintf(stderr, "%s\n%s", complaint.c_str(), Describe(scene).c_str());
  }
  Require(complaint.empty());
  return 0;
}
