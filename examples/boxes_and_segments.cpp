// Boxes that grow, overlap and turn, and the shortest connection between two segments.

#include <gsl_BBox.h>
#include <gsl_Matrix.h>
#include <gsl_Segment.h>
#include <gsl_StLine.h>

#include <cstdio>

namespace {

void Print(const char* label, const gsl_Point& p) {
  std::printf("%s (%g, %g, %g)", label, p.x, p.y, p.z);
}

void Print(const char* label, const gsl_BBox& box) {
  if (box.IsEmpty()) {
    std::printf("%s is empty\n", label);
    return;
  }
  Print(label, box.min);
  Print(" to", box.max);
  std::printf(", diagonal %g\n", box.Size());
}

void Boxes() {
  gsl_BBox part; // empty until a point is added
  Print("part", part);
  part.Add(gsl_Point(0.0, 0.0, 0.0));
  part.Add(gsl_Point(4.0, 2.0, 1.0));
  Print("part", part);

  gsl_BBox beside;
  beside.Add(gsl_Point(4.0, 0.0, 0.0)); // touches the part, which counts as an overlap
  beside.Add(gsl_Point(6.0, 2.0, 4.0));
  std::printf("boxes that touch overlap: %s\n", part.Intersect(beside) ? "yes" : "no");
  part.Add(beside);
  Print("both", part);

  gsl_Matrix quarterTurn;
  quarterTurn.SetRotationVectors({0.0, 1.0, 0.0}, {-1.0, 0.0, 0.0}, {0.0, 0.0, 1.0});
  part.Transform(quarterTurn); // the box around the eight turned corners
  Print("turned", part);
}

void Segments() {
  const gsl_Segment pipe(gsl_Point(0.0, 0.0, 0.0), gsl_Point(10.0, 0.0, 0.0));
  const gsl_Segment cable(gsl_Point(4.0, -5.0, 3.0), gsl_Point(4.0, 5.0, 3.0));

  gsl_Segment connection; // from the pipe to the cable
  pipe.GetDistance(cable, connection);
  Print("closest at", connection.Point1());
  Print(" and", connection.Point2());
  std::printf(", %g apart\n", connection.Length());

  gsl_Point closest;
  const gsl_Point beyond(13.0, 4.0, 0.0);
  const double distance = beyond.GetDistance(pipe, closest);
  std::printf("a point beyond the pipe is %g away, at its %s\n", distance,
              closest.uid == pipe.Point2().uid ? "second end" : "middle");

  gsl_Point crossing;
  const gsl_StLine drill(gsl_Point(7.0, 0.0, 9.0), gsl_Vector(0.0, 0.0, -1.0));
  if (pipe.Intersect(drill, crossing)) Print("the drill meets the pipe at", crossing);
  std::printf("\n");
}

} // namespace

int main() {
  Boxes();
  Segments();
}
