#include "gsl_BBox.h"

#include "gsl_FromCoordinates.h"
#include "gsl_Matrix.h"
#include "kernel/Box.h"

using gsl_kernel::Box;

namespace {

Box BoxOf(const gsl_BBox& box) {
  return {box.min.Coords(), box.max.Coords()};
}

} // namespace

gsl_BBox::gsl_BBox()
    : min(ComputedPoint(gsl_kernel::kEmptyBox.min)), max(ComputedPoint(gsl_kernel::kEmptyBox.max)),
      m_uid(cls_Uid::AllocateUid()) {}

void gsl_BBox::Vacate() {
  Place(min, gsl_kernel::kEmptyBox.min);
  Place(max, gsl_kernel::kEmptyBox.max);
}

void gsl_BBox::Transform(const gsl_Matrix& m) {
  if (IsEmpty()) return;
  const Box moved = gsl_kernel::TransformBox(BoxOf(*this), m.m);
  // corners-share-an-identity: the corners stem from one computed point and share its identity.
  AcceptComputed(min, moved.min);
  max = min;
  Place(max, moved.max);
  m_uid = cls_Uid::AllocateUid();
}

double gsl_BBox::Size() const {
  return IsEmpty() ? -1.0 : min.GetDistance(max);
}

gsl_Vector gsl_BBox::Diag() const {
  return IsEmpty() ? gsl_Vector(0.0, 0.0, 0.0) : gsl_Vector(min, max);
}

g3d_Sphere gsl_BBox::GetExtent() const {
  // empty-box-has-a-negative-radius: the size of an empty box is -1.
  const gsl_Point centre = Center();
  g3d_Sphere sphere;
  sphere.Set(g3d_Point(static_cast<float>(centre.x), static_cast<float>(centre.y),
                       static_cast<float>(centre.z), 1.0f),
             static_cast<float>(Size() / 2.0));
  return sphere;
}

bool gsl_BBox::operator==(const gsl_BBox& o) const {
  if (this == &o) return true;
  return min == o.min && max == o.max;
}

void gsl_BBox::Print(aio_ostream& out, int indent) const {
  min.Print(out, indent);
  max.Print(out, indent);
}
