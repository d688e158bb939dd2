// What three points define: a normal, a circle and a frame. And what datum entities are to each
// other.

#include <gsl_Dot.h>
#include <gsl_Matrix.h>
#include <gsl_StLine.h>
#include <gsl_ThreePoints.h>

#include <cstdio>

namespace {

void Print(const char* label, double x, double y, double z) {
  std::printf("%-8s (%g, %g, %g)\n", label, x, y, z);
}

void Circle(const gsl_Point& p0, const gsl_Point& p1, const gsl_Point& p2) {
  gsl_Vector normal;
  if (!gsl_NormalToThreePoints(p0, p1, p2, normal)) {
    std::printf("the points lie on one line\n");
    return;
  }
  gsl_Point centre;
  gsl_ComputeCircumCircle(p0, p1, p2, centre, normal);
  Print("centre", centre.x, centre.y, centre.z);
  Print("normal", normal.x, normal.y, normal.z);
  std::printf("radius   %g\n", centre.GetDistance(p0));
}

/// The transform from the frame of three points to the world.
gsl_Matrix FrameOf(const gsl_Point& p0, const gsl_Point& p1, const gsl_Point& p2) {
  gsl_Point origin;
  gsl_Vector x, y, z;
  gsl_Transcribe3PointsIntoOriginAndAxes(false, p0, p1, p2, origin, x, y, z);
  Print("origin", origin.x, origin.y, origin.z);
  Print("x axis", x.x, x.y, x.z);
  Print("y axis", y.x, y.y, y.z);
  Print("z axis", z.x, z.y, z.z);

  gsl_Matrix frame;
  frame.SetRotationVectors(x, y, z);
  frame.SetTranslation(gsl_Vector(gsl_Point(), origin));
  return frame;
}

const char* YesOrNo(bool answer) {
  return answer ? "yes" : "no";
}

} // namespace

int main() {
  // A right triangle: its circle is about the middle of the longest side.
  const gsl_Point p0(5.0, 4.0, 2.0), p1(1.0, 4.0, 2.0), p2(5.0, 1.0, 2.0);
  Circle(p0, p1, p2);

  const gsl_Matrix frame = FrameOf(p0, p1, p2);
  gsl_Point inFrame = p2;
  frame.InverseRigidTransform().Transform(inFrame);
  Print("p2 there", inFrame.x, inFrame.y, inFrame.z);

  const gsl_Dot a(p0), b(p1), c(-3.0, 4.0, 2.0);
  std::printf("three points on one line: %s\n", YesOrNo(gsl_ThreePointsColinear(&a, &b, &c)));
  const gsl_StLine edge(p0, p1), opposite(p2, gsl_Vector(1.0, 0.0, 0.0));
  std::printf("parallel, though opposite: %s\n", YesOrNo(gsl_LinesAreParallel(&edge, &opposite)));
  const gsl_StLine above(gsl_Point(0.0, 0.0, 3.0), gsl_Vector(0.0, 1.0, 0.0));
  std::printf("skew lines: %s\n", YesOrNo(gsl_LinesAreSkew(&edge, &above)));
}
