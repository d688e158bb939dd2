#ifndef RANDOM_OBJECTS_H
#define RANDOM_OBJECTS_H

#include "RandomNumbers.h"
#include "Records.h"
#include "gsl_BBox.h"
#include "gsl_Dot.h"
#include "gsl_ModelSegment.h"
#include "gsl_PersistentMatrix.h"
#include "gsl_PersistentVector.h"
#include "gsl_Plane.h"
#include "gsl_Point.h"
#include "gsl_Segment.h"
#include "gsl_StLine.h"
#include "omu_PrimEnum.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <unordered_map>
#include <vector>

/// Random objects of every persistent class, and whether two objects are the same, member by member
/// and bit for bit.
namespace random_objects {

/// Returns any 64 bits as a double, and often one of the values that are lost most easily: both
/// zeros, both infinities, NaNs of any sign and payload, quiet or signalling, subnormals.
inline double AnyDouble(RandomNumbers& random) {
  constexpr std::uint64_t kSign = std::uint64_t{1} << 63;
  constexpr std::uint64_t kInfinity = std::uint64_t{0x7FF} << 52;
  constexpr std::uint64_t kFraction = (std::uint64_t{1} << 52) - 1;
  std::uint64_t bits = random.Next();
  switch (random.Below(16)) {
  case 0:
    bits &= kSign;
    break;
  case 1:
    bits = (bits & kSign) | kInfinity;
    break;
  case 2:
    bits |= kInfinity;
    break;
  case 3:
    bits &= kSign | kFraction;
    break;
  default:
    break;
  }
  double value = 0.0;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

inline int AnyInt(RandomNumbers& random) {
  return (random.Below(1 << 16) << 15) - random.Below(1 << 30);
}

inline gsl_Point AnyPoint(RandomNumbers& random) {
  return {AnyDouble(random), AnyDouble(random), AnyDouble(random)};
}

inline gsl_Vector AnyVector(RandomNumbers& random) {
  gsl_Vector v{AnyDouble(random), AnyDouble(random), AnyDouble(random)};
  if (random.Chance(0.5)) v[1] = AnyDouble(random);
  return v;
}

template <class Datum>
inline void AnyHistory(RandomNumbers& random, Datum& datum) {
  datum.SetFlip(random.Chance(0.5));
  datum.SetOk(random.Chance(0.5));
  datum.SetOwnerFeatID(AnyInt(random));
  for (int i = random.Below(4); i > 0; --i)
    datum.ParentIds().Append(static_cast<unsigned int>(AnyInt(random)));
}

inline void Make(RandomNumbers& random, std::vector<gsl_Point>& to) {
  to.push_back(AnyPoint(random));
}

inline void Make(RandomNumbers& random, std::vector<gsl_PersistentVector>& to) {
  to.emplace_back(AnyVector(random));
}

inline void Make(RandomNumbers& random, std::vector<gsl_PersistentMatrix>& to) {
  gsl_Matrix m;
  for (auto& row : m.m) {
    for (double& entry : row)
      entry = AnyDouble(random);
  }
  m.isIdentity = random.Below(3) - 1;
  // The first writing would rewrite a matrix whose flag is not known.
  if (m.isIdentity == -1) m.m[0][0] = 2.0;
  to.emplace_back(m);
}

inline void Make(RandomNumbers& random, std::vector<gsl_Segment>& to) {
  to.emplace_back(AnyPoint(random), AnyPoint(random));
}

inline void Make(RandomNumbers& random, std::vector<gsl_BBox>& to) {
  to.emplace_back();
  for (int i = random.Below(3); i > 0; --i)
    to.back().Add(AnyPoint(random));
}

inline void Make(RandomNumbers& random, std::vector<gsl_Plane>& to) {
  to.emplace_back(AnyPoint(random), AnyVector(random));
  to.back().SetMethod(omu_PrimEnum<gsl_DirMethod, 1>::Value(random.Below(5)));
  AnyHistory(random, to.back());
}

inline void Make(RandomNumbers& random, std::vector<gsl_StLine>& to) {
  to.emplace_back(AnyPoint(random), AnyVector(random));
  to.back().SetMethod(omu_PrimEnum<gsl_LineMethod, 1>::Value(random.Below(8)));
  AnyHistory(random, to.back());
}

/// A datum point of each method. Only a record can set the method.
inline std::vector<gsl_Dot> DotsOfEveryMethod() {
  std::vector<gsl_Dot> dots;
  for (int i = 0; i < 13; ++i) {
    const omu_PrimEnum<gsl_DotMethod, 1> method(static_cast<gsl_DotMethod>(i));
    dots.push_back(ReadBack<gsl_Dot>(
        Edited(Written(gsl_Dot(i, -i)), {"_method", [&](const auto& to, const auto& field) {
                                           to.WriteString(field, method.AsString());
                                         }})));
  }
  return dots;
}

inline gsl_Dot AnyDot(RandomNumbers& random) {
  static const std::vector<gsl_Dot> ofEveryMethod = DotsOfEveryMethod();
  if (random.Chance(0.3)) return gsl_Dot(AnyPoint(random));
  if (random.Chance(0.4)) {
    // These copies have one identity and differ in contents.
    gsl_Dot copy = ofEveryMethod[static_cast<std::size_t>(random.Below(13))];
    copy.SetValues(AnyDouble(random), AnyDouble(random), AnyDouble(random));
    return copy;
  }
  gsl_Dot node(AnyInt(random), AnyInt(random));
  node.SetValues(AnyDouble(random), AnyDouble(random), AnyDouble(random));
  return node;
}

inline void Make(RandomNumbers& random, std::vector<gsl_Dot>& to) {
  to.push_back(AnyDot(random));
}

/// New segments, copies that share datum points, and segments with an empty end.
inline void Make(RandomNumbers& random, std::vector<gsl_ModelSegment>& to) {
  static const gsl_ModelSegment half = ReadBack<gsl_ModelSegment>(
      Without(Written(gsl_ModelSegment(gsl_Dot(1, 2), gsl_Dot())), "point2"));
  if (!to.empty() && random.Chance(0.3)) {
    to.push_back(to[static_cast<std::size_t>(random.Below(static_cast<int>(to.size())))]);
  } else if (random.Chance(0.2)) {
    to.push_back(random.Chance(0.5) ? gsl_ModelSegment() : half);
  } else {
    to.emplace_back(AnyDot(random), AnyDot(random));
  }
}

inline bool Same(const gsl_Point& a, const gsl_Point& b) {
  return SameBits(a.x, b.x) && SameBits(a.y, b.y) && SameBits(a.z, b.z) && a.uid == b.uid;
}

inline bool Same(const gsl_Vector& a, const gsl_Vector& b) {
  return SameBits(a.x, b.x) && SameBits(a.y, b.y) && SameBits(a.z, b.z) &&
         SameBits(a.magnitude, b.magnitude);
}

inline bool Same(const gsl_PersistentVector& a, const gsl_PersistentVector& b) {
  return Same(a.Vector(), b.Vector()) && a.Uid() == b.Uid();
}

inline bool Same(const gsl_PersistentMatrix& a, const gsl_PersistentMatrix& b) {
  bool same = a.Matrix().isIdentity == b.Matrix().isIdentity && a.Uid() == b.Uid();
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c)
      same = same && SameBits(a.Matrix().m[r][c], b.Matrix().m[r][c]);
  }
  return same;
}

inline bool Same(const gsl_Segment& a, const gsl_Segment& b) {
  return Same(a.Point1(), b.Point1()) && Same(a.Point2(), b.Point2()) && a.Uid() == b.Uid();
}

inline bool Same(const gsl_BBox& a, const gsl_BBox& b) {
  return Same(a.min, b.min) && Same(a.max, b.max) && a.Uid() == b.Uid();
}

/// Planes and axes.
template <class Datum>
inline bool Same(const Datum& a, const Datum& b) {
  return Same(a.PointOn(), b.PointOn()) && Same(a.Direction(), b.Direction()) &&
         a.Method() == b.Method() && a.Flip() == b.Flip() && a.Ok() == b.Ok() &&
         a.ParentIds() == b.ParentIds() && a.ParentIds().Uid() == b.ParentIds().Uid() &&
         a.OwnerFeatID() == b.OwnerFeatID() && a.Uid() == b.Uid();
}

inline bool Same(const gsl_Dot& a, const gsl_Dot& b) {
  return Same(a.GetPoint(), b.GetPoint()) && a.GetMethod() == b.GetMethod() &&
         a.GetInstanceId() == b.GetInstanceId() && a.GetEntityId() == b.GetEntityId() &&
         a.Uid() == b.Uid();
}

inline bool Same(const gsl_ModelSegment& a, const gsl_ModelSegment& b) {
  if (a.HasPoint1() != b.HasPoint1() || a.HasPoint2() != b.HasPoint2()) return false;
  return (!a.HasPoint1() || Same(a.Point1(), b.Point1())) &&
         (!a.HasPoint2() || Same(a.Point2(), b.Point2())) && a.Uid() == b.Uid();
}

/// Maps each datum point that was written to the datum point that was read. There is one for each,
/// however often it is shared.
class Sharing {
public:
  bool Holds(const gsl_ModelSegment& written, const gsl_ModelSegment& read) {
    return (!written.HasPoint1() || Holds(written.Point1(), read.Point1())) &&
           (!written.HasPoint2() || Holds(written.Point2(), read.Point2()));
  }

private:
  bool Holds(const gsl_Dot& written, const gsl_Dot& read) {
    return readFor.emplace(&written, &read).first->second == &read &&
           writtenFor.emplace(&read, &written).first->second == &written;
  }

  std::unordered_map<const gsl_Dot*, const gsl_Dot*> readFor;
  std::unordered_map<const gsl_Dot*, const gsl_Dot*> writtenFor;
};

} // namespace random_objects

#endif
