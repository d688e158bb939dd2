#ifndef GSL_BBOX_H
#define GSL_BBOX_H

#include "cls_Uid.h"
#include "g3d_Sphere.h"
#include "gsl_Point.h"
#include "gsl_Vector.h"

class cls_ClassRegistrar;
class cls_ReadVisitor;
class cls_WriteVisitor;
class gsl_Matrix;

template <class>
struct gsl_RecordLayout;

/// Axis-aligned box between two corners.
///
/// Units      model units.
/// Empty      min exceeds max on some axis; the empty state is min (0, 0, 0), max (-1, -1, -1). A
///            box around one point is not empty.
/// Tolerance  none, except in operator==.
/// NaN        is neither smaller nor larger: a NaN coordinate that enters an empty box stays, and a
///            later NaN is ignored.
/// Identity   corners and box have uids; a copy and an assignment take the source's.
/// Errors     none thrown and none printed, except by the records.
class GSL_API gsl_BBox {
public:
  gsl_Point min; ///< lower corner
  gsl_Point max; ///< upper corner

  /// The box is empty.
  gsl_BBox();
  /// Reads a record; a missing corner is (0, 0, 0) without an identity. Throws nex_Exception for a
  /// record of another class and for a field of another kind.
  explicit gsl_BBox(const cls_ReadVisitor& visitor);

  /// Writes the record. This is the only virtual operation.
  virtual void DBWrite(const cls_WriteVisitor& visitor) const;
  static void InitializeMetadata(cls_ClassRegistrar& registrar);

  /// The box becomes empty; the corners and the box keep their uids.
  void Vacate();
  /// Returns whether min exceeds max on some axis.
  [[nodiscard]] bool IsEmpty() const { return min.x > max.x || min.y > max.y || min.z > max.z; }

  /// The box grows to hold p. An empty box takes copies of p, identity included, as both corners;
  /// otherwise coordinates change and uids stay.
  void Add(const gsl_Point& p) {
    // p may be a corner of this box, so everything is read before anything is written.
    gsl_arithmetic::Coord3 low = min.Coords();
    gsl_arithmetic::Coord3 high = max.Coords();
    const gsl_arithmetic::Coord3 c = p.Coords();
    // Most of many points change nothing. Nothing is stored for them, and the next one waits for no
    // store.
    if (gsl_arithmetic::LiesBetween(c, low, high)) return;
    if (low.x > high.x || low.y > high.y || low.z > high.z) {
      // The second copy is of the first, which may have been p.
      min = p;
      max = min;
      return;
    }
    gsl_arithmetic::LowerTo(low, c);
    gsl_arithmetic::RaiseTo(high, c);
    Place(min, low);
    Place(max, high);
  }
  /// The box grows to hold b; an empty b changes nothing. An empty box takes copies of b's corners,
  /// identities included.
  void Add(const gsl_BBox& b) {
    if (b.IsEmpty()) return;
    if (IsEmpty()) {
      min = b.min;
      max = b.max;
      return;
    }
    gsl_arithmetic::LowerTo(min, b.min);
    gsl_arithmetic::RaiseTo(max, b.max);
  }

  /// Returns true when on no axis the extent of both boxes together is larger than the sum of their
  /// extents. The test is closed, in rounded arithmetic, so boxes that touch intersect. The empty
  /// state has the extent -1 and intersects nothing, not even itself. The exception is a box of
  /// 2^54 or more on every axis, where rounding hides the 1.
  [[nodiscard]] bool Intersect(const gsl_BBox& b) const {
    gsl_arithmetic::Coord3 low = min.Coords();
    gsl_arithmetic::Coord3 high = max.Coords();
    if (!b.IsEmpty()) {
      if (IsEmpty()) {
        low = b.min.Coords();
        high = b.max.Coords();
      } else {
        gsl_arithmetic::LowerTo(low, b.min);
        gsl_arithmetic::RaiseTo(high, b.max);
      }
    }
    return !(high.x - low.x > XLen() + b.XLen()) && !(high.y - low.y > YLen() + b.YLen()) &&
           !(high.z - low.z > ZLen() + b.ZLen());
  }

  /// The box becomes the box around its eight transformed corners, so a rotation makes it grow. The
  /// result counts as a new box: its uids are fresh, and both corners share one. An empty box does
  /// not change.
  void Transform(const gsl_Matrix& m);

  /// Returns max - min, which is -1 for the empty state.
  double XLen() const { return max.x - min.x; }
  /// Does the same along Y.
  double YLen() const { return max.y - min.y; }
  /// Does the same along Z.
  double ZLen() const { return max.z - min.z; }

  /// Returns the length of the diagonal, or -1.0 for an empty box.
  double Size() const;
  /// Returns 0.5 * (min + max) with a fresh identity. For the empty state this is deliberately
  /// (-0.5, -0.5, -0.5).
  gsl_Point Center() const { return gsl_Point(min, max); }
  /// Returns the vector from min to max, or the zero vector for an empty box.
  gsl_Vector Diag() const;
  /// Returns the sphere about Center() with radius Size() / 2. Both are rounded to single
  /// precision, which may make them infinite. The empty state deliberately has the radius -0.5.
  g3d_Sphere GetExtent() const;

  const cls_Uid& Uid() const { return m_uid; }

  /// Returns true for the same object, and when the corners are equal by gsl_Point::operator==
  /// (zeroTolerance).
  [[nodiscard]] bool operator==(const gsl_BBox& o) const;
  [[nodiscard]] bool operator!=(const gsl_BBox& o) const { return !(*this == o); }

  /// Writes min, then max, one line each.
  void Print(aio_ostream& out, int indent) const;

  static constexpr unsigned int TypeId() { return 0x030A0007u; }
  /// This operation is not virtual, like the same operation of gsl_Point.
  unsigned int DynTypeId() const { return TypeId(); }

private:
  friend struct gsl_RecordLayout<gsl_BBox>;

  /// Moves a corner; its identity stays.
  static void Place(gsl_Point& corner, const gsl_arithmetic::Coord3& c) {
    corner.x = c.x;
    corner.y = c.y;
    corner.z = c.z;
  }

  cls_Uid m_uid;
};

#endif
