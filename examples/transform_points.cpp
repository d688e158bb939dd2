// Builds a rigid transform, moves points with it and prints distances.

#include <gsl_Matrix.h>
#include <gsl_Plane.h>
#include <gsl_Point.h>
#include <gsl_StLine.h>
#include <gsl_Vector.h>

#include <cstddef>
#include <cstdio>

namespace {

// A quarter turn about the vertical axis through (10, 0, 0), then a lift by 2.
gsl_Matrix QuarterTurnAndLift(const gsl_StLine& axis) {
  const double quarterTurn = 1.5707963267948966;
  gsl_Matrix transform;
  transform.AxisRotation(axis.PointOn(), axis.Direction(), quarterTurn);
  gsl_Matrix lift;
  lift.SetTranslation(gsl_Vector(0.0, 0.0, 2.0));
  transform.Concatenate(lift); // first the turn, then the lift
  return transform;
}

} // namespace

int main() {
  const gsl_StLine axis(gsl_Point(10.0, 0.0, 0.0), gsl_Vector(0.0, 0.0, 1.0));
  const gsl_Plane floor(gsl_Point(0.0, 0.0, 1.0), gsl_Vector(0.0, 0.0, 1.0));
  const gsl_Matrix transform = QuarterTurnAndLift(axis);

  const gsl_Point points[] = {{14.0, 3.0, 1.0}, {12.0, -1.0, 1.0}, {13.0, 5.0, 2.0}};
  for (std::size_t i = 0; i < 3; ++i) {
    gsl_Point moved = points[i]; // a copy keeps the identity, and so does moving it
    moved.Transform(transform);
    std::printf("point %zu  (%.3f, %.3f, %.3f) -> (%.3f, %.3f, %.3f)\n", i, points[i].x,
                points[i].y, points[i].z, moved.x, moved.y, moved.z);
    std::printf("  moved by           %.6f\n", points[i].GetDistance(moved));
    std::printf("  to the axis        %.6f\n", moved.GetDistance(axis));
    std::printf("  above the floor    %.6f\n", moved.GetSignedDistance(floor));
    std::printf("  same point as ever %s\n", moved.uid == points[i].uid ? "yes" : "no");
  }
  return 0;
}
