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
#include <memory>
#include <utility>
#include <vector>

/// The objects that bench_records saves, and the same contents as plain objects, which the other
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

// A plain object has a virtual function, an identity and a list where the object of the library has
// them, so that both are equally large.

struct Point final {
  Point(double x0, double y0, double z0, const Uid& identity)
      : x(x0), y(y0), z(z0), uid(identity) {}
  virtual void Visit() const {}

  double x, y, z;
  Uid uid;
};

struct Vector final {
  Vector(double x0, double y0, double z0, double length, const Uid& identity)
      : x(x0), y(y0), z(z0), magnitude(length), uid(identity) {}
  virtual void Visit() const {}

  double x, y, z, magnitude;
  Uid uid;
};

struct Dot final {
  Dot(const Uid& identity, const Point& p, std::int32_t how, std::int32_t instance,
      std::int32_t entity)
      : uid(identity), point(p), method(how), instanceId(instance), entityId(entity) {}
  virtual void Visit() const {}

  Uid uid;
  Point point;
  std::int32_t method, instanceId, entityId;
};

struct Ids {
  std::vector<std::uint32_t> ids;
  Uid uid;
};

/// A plane or an axis.
struct Datum final {
  Datum(const Uid& identity, const Point& p, const Vector& v, std::int32_t how, bool isFlipped,
        bool isOk, Ids parents, std::int32_t owner)
      : point(p), direction(v), method(how), flip(isFlipped), ok(isOk),
        parentIds(std::move(parents)), ownerFeatId(owner), uid(identity) {}
  virtual void Visit() const {}

  Point point;
  Vector direction;
  std::int32_t method;
  bool flip, ok;
  Ids parentIds;
  std::int32_t ownerFeatId;
  Uid uid;
};

/// A segment or a box.
struct Two final {
  Two(const Uid& identity, const Point& a, const Point& b) : first(a), second(b), uid(identity) {}
  virtual void Visit() const {}

  Point first, second;
  Uid uid;
};

static_assert(sizeof(Point) == sizeof(gsl_Point));
static_assert(sizeof(Vector) == sizeof(gsl_PersistentVector));
static_assert(sizeof(Dot) == sizeof(gsl_Dot));
// A plane is eight bytes larger than an axis.
static_assert(sizeof(Datum) == sizeof(gsl_StLine) && sizeof(Datum) + 8 == sizeof(gsl_Plane));
static_assert(sizeof(Two) == sizeof(gsl_Segment) && sizeof(Two) == sizeof(gsl_BBox));

struct PlainModel {
  std::vector<Dot> dots;
  std::vector<std::unique_ptr<Dot>> array;
  std::vector<Datum> planes, axes;
  std::vector<Two> segments, boxes;
};

// The classes keep the identity of a direction to themselves, and the records have it. An explicit
// instantiation may name a private member.
const gsl_PersistentVector& DirectionOf(const gsl_Plane& plane);
const gsl_PersistentVector& DirectionOf(const gsl_StLine& axis);

template <class C, gsl_PersistentVector C::*kMember>
struct Revealed {
  friend const gsl_PersistentVector& DirectionOf(const C& datum) { return datum.*kMember; }
};
template struct Revealed<gsl_Plane, &gsl_Plane::m_normal>;
template struct Revealed<gsl_StLine, &gsl_StLine::m_direction>;

inline Uid PlainOf(const cls_Uid& uid) {
  return {uid.Prefix(), uid.Serial()};
}

inline Point PlainOf(const gsl_Point& p) {
  return {p.x, p.y, p.z, PlainOf(p.uid)};
}

inline Vector PlainOf(const gsl_PersistentVector& direction) {
  const gsl_Vector& v = direction.Vector();
  return {v.x, v.y, v.z, v.magnitude, PlainOf(direction.Uid())};
}

inline Ids PlainOf(const cls_xp1DArrayListUint& list) {
  return {{list.begin(), list.end()}, PlainOf(list.Uid())};
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
          PlainOf(DirectionOf(datum)),
          datum.Method(),
          datum.Flip(),
          datum.Ok(),
          PlainOf(datum.ParentIds()),
          datum.OwnerFeatID()};
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
    Add(datum.direction.uid);
    for (const std::int32_t number : {datum.method, datum.flip ? 1 : 0, datum.ok ? 1 : 0})
      Add(number);
    for (const std::uint32_t id : datum.parentIds.ids)
      Add(std::uint64_t{id});
    Add(datum.parentIds.uid);
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
  for (const gsl_Dot& dot : model.dots)
    digest.Add(PlainOf(dot));
  for (const gsl_Dot* dot : model.array)
    digest.Add(PlainOf(*dot));
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
  for (const std::unique_ptr<Dot>& dot : model.array)
    digest.Add(*dot);
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
