#ifndef BENCH_RECORD_MODELS_H
#define BENCH_RECORD_MODELS_H

#include "gsl_BBox.h"
#include "gsl_Dot.h"
#include "gsl_Plane.h"
#include "gsl_Segment.h"
#include "gsl_StLine.h"
#include "omu_xoObjVarray.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

/// The objects that bench_records saves, and the same contents as plain structs, which the other
/// libraries restore.
namespace record_models {

/// Objects of the library: each one is a root, but for those of the array.
struct Model {
  std::vector<gsl_Dot> dots;
  omu_xoObjVarray<gsl_Dot> array;
  std::vector<gsl_Plane> planes;
  std::vector<gsl_StLine> axes;
  std::vector<gsl_Segment> segments;
  std::vector<gsl_BBox> boxes;
};

struct Uid {
  std::uint64_t prefix, serial;
};

struct Point {
  double x, y, z;
  Uid uid;
};

struct Vector {
  double x, y, z, magnitude;
};

struct Dot {
  Uid uid;
  Point point;
  std::int32_t method, instanceId, entityId;
};

/// A plane or an axis.
struct Datum {
  Uid uid;
  Point point;
  Vector direction;
  std::int32_t method;
  bool flip, ok;
  std::vector<std::uint32_t> parentIds;
  std::int32_t ownerFeatId;
};

/// A segment or a box.
struct Two {
  Uid uid;
  Point first, second;
};

struct PlainModel {
  std::vector<Dot> dots;
  std::vector<Datum> planes, axes;
  std::vector<Two> segments, boxes;
};

inline Uid PlainOf(const cls_Uid& uid) {
  return {uid.Prefix(), uid.Serial()};
}

inline Point PlainOf(const gsl_Point& p) {
  return {p.x, p.y, p.z, PlainOf(p.uid)};
}

inline Vector PlainOf(const gsl_Vector& v) {
  return {v.x, v.y, v.z, v.magnitude};
}

inline Dot PlainOf(const gsl_Dot& dot) {
  return {PlainOf(dot.Uid()), PlainOf(dot.GetPoint()), dot.GetMethod(), dot.GetInstanceId(),
          dot.GetEntityId()};
}

inline Two PlainOf(const gsl_Segment& segment) {
  return {PlainOf(segment.Uid()), PlainOf(segment.Point1()), PlainOf(segment.Point2())};
}

inline Two PlainOf(const gsl_BBox& box) {
  return {PlainOf(box.Uid()), PlainOf(box.min), PlainOf(box.max)};
}

/// Of a plane or an axis.
template <class C>
Datum PlainOf(const C& datum) {
  return {PlainOf(datum.Uid()),
          PlainOf(datum.PointOn()),
          PlainOf(datum.Direction()),
          datum.Method(),
          datum.Flip(),
          datum.Ok(),
          std::vector<std::uint32_t>(datum.ParentIds().begin(), datum.ParentIds().end()),
          datum.OwnerFeatID()};
}

/// Calls `visit` with every datum point, those of the array last.
template <class Visit>
void ForEachDot(const Model& model, const Visit& visit) {
  for (const gsl_Dot& dot : model.dots)
    visit(dot);
  for (const gsl_Dot* dot : model.array)
    visit(*dot);
}

inline std::size_t DotCount(const Model& model) {
  return model.dots.size() + model.array.Count();
}

/// A number that depends on every bit and on the order, to compare what was restored.
class Digest {
public:
  void Add(std::uint64_t bits) { m_value = (m_value ^ bits) * 0x9E3779B97F4A7C15u + 1; }
  void Add(double number) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    Add(bits);
  }
  void Add(std::int32_t number) { Add(static_cast<std::uint64_t>(number)); }
  void Add(const Uid& uid) {
    Add(uid.prefix);
    Add(uid.serial);
  }
  void Add(const Point& p) {
    for (const double c : {p.x, p.y, p.z})
      Add(c);
    Add(p.uid);
  }
  void Add(const Dot& dot) {
    Add(dot.uid);
    Add(dot.point);
    for (const std::int32_t number : {dot.method, dot.instanceId, dot.entityId})
      Add(number);
  }
  void Add(const Datum& datum) {
    Add(datum.uid);
    Add(datum.point);
    for (const double c :
         {datum.direction.x, datum.direction.y, datum.direction.z, datum.direction.magnitude})
      Add(c);
    for (const std::int32_t number : {datum.method, datum.flip ? 1 : 0, datum.ok ? 1 : 0})
      Add(number);
    for (const std::uint32_t id : datum.parentIds)
      Add(std::uint64_t{id});
    Add(datum.ownerFeatId);
  }
  void Add(const Two& two) {
    Add(two.uid);
    Add(two.first);
    Add(two.second);
  }

  std::uint64_t Value() const { return m_value; }

private:
  std::uint64_t m_value = 0;
};

inline std::uint64_t DigestOf(const Model& model) {
  Digest digest;
  ForEachDot(model, [&](const gsl_Dot& dot) { digest.Add(PlainOf(dot)); });
  for (const gsl_Plane& plane : model.planes)
    digest.Add(PlainOf(plane));
  for (const gsl_StLine& axis : model.axes)
    digest.Add(PlainOf(axis));
  for (const gsl_Segment& segment : model.segments)
    digest.Add(PlainOf(segment));
  for (const gsl_BBox& box : model.boxes)
    digest.Add(PlainOf(box));
  return digest.Value();
}

inline std::uint64_t DigestOf(const PlainModel& model) {
  Digest digest;
  for (const Dot& dot : model.dots)
    digest.Add(dot);
  for (const std::vector<Datum>* datums : {&model.planes, &model.axes}) {
    for (const Datum& datum : *datums)
      digest.Add(datum);
  }
  for (const std::vector<Two>* twos : {&model.segments, &model.boxes}) {
    for (const Two& two : *twos)
      digest.Add(two);
  }
  return digest.Value();
}

} // namespace record_models

#endif
