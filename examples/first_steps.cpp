#include <gsl_Matrix.h>
#include <gsl_Plane.h>
#include <gsl_StLine.h>

#include <cstdio>

int main() {
  const gsl_Plane table(gsl_Point(0.0, 0.0, 10.0), gsl_Vector(0.0, 0.0, 1.0));
  const gsl_StLine beam(gsl_Point(3.0, 4.0, 0.0), gsl_Vector(0.0, 3.0, 4.0));

  gsl_Point hit;
  if (!beam.Intersect(table, hit)) return 1; // parallel to the table
  std::printf("hit at (%g, %g, %g)\n", hit.x, hit.y, hit.z);

  gsl_Matrix lift;
  lift.SetTranslation(gsl_Vector(0.0, 0.0, 2.0));
  gsl_Point lifted = hit;
  lifted.Transform(lift);
  std::printf("lifted %g above the table; %s\n", lifted.GetDistance(table),
              lifted.uid == hit.uid ? "the same point still" : "another point");
}
