#include "RecordPeers.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

#if defined(BENCH_PROTOBUF)
#include <google/protobuf/arena.h>
#include <model.pb.h>
#endif
#if defined(BENCH_FLATBUFFERS)
#include <model_generated.h>
#endif
#if defined(BENCH_CAPNPROTO)
#include <capnp/message.h>
#include <capnp/serialize.h>
#include <model.capnp.h>
#endif

namespace record_peers {

namespace {

using namespace record_models;

#if defined(BENCH_PROTOBUF)

namespace protobuf {

namespace pb = peer_protobuf;

void Fill(pb::Uid& to, const cls_Uid& uid) {
  to.set_prefix(uid.Prefix());
  to.set_serial(uid.Serial());
}

void Fill(pb::Point& to, const gsl_Point& p) {
  to.set_x(p.x);
  to.set_y(p.y);
  to.set_z(p.z);
  Fill(*to.mutable_uid(), p.uid);
}

void Fill(pb::Vector& to, const gsl_PersistentVector& direction) {
  const gsl_Vector& v = direction.Vector();
  to.set_x(v.x);
  to.set_y(v.y);
  to.set_z(v.z);
  to.set_magnitude(v.magnitude);
  Fill(*to.mutable_uid(), direction.Uid());
}

void Fill(pb::Dot& to, const gsl_Dot& dot) {
  Fill(*to.mutable_uid(), dot.Uid());
  Fill(*to.mutable_point(), dot.GetPoint());
  to.set_method(dot.GetMethod());
  to.set_instance_id(dot.GetInstanceId());
  to.set_entity_id(dot.GetEntityId());
}

template <class C>
void Fill(pb::Datum& to, const C& datum) {
  Fill(*to.mutable_uid(), datum.Uid());
  Fill(*to.mutable_point(), datum.PointOn());
  Fill(*to.mutable_direction(), DirectionOf(datum));
  to.set_method(datum.Method());
  to.set_flip(datum.Flip());
  to.set_ok(datum.Ok());
  to.mutable_parent_ids()->Add(datum.ParentIds().begin(), datum.ParentIds().end());
  Fill(*to.mutable_parents_uid(), datum.ParentIds().Uid());
  to.set_owner_feat_id(datum.OwnerFeatID());
}

void Fill(pb::Two& to, const cls_Uid& uid, const gsl_Point& first, const gsl_Point& second) {
  Fill(*to.mutable_uid(), uid);
  Fill(*to.mutable_first(), first);
  Fill(*to.mutable_second(), second);
}

Written Write(const Model& model) {
  google::protobuf::Arena arena;
  auto* const all = google::protobuf::Arena::CreateMessage<pb::Model>(&arena);
  all->mutable_dots()->Reserve(static_cast<int>(model.dots.size()));
  for (const gsl_Dot& dot : model.dots)
    Fill(*all->add_dots(), dot);
  all->mutable_array()->Reserve(static_cast<int>(model.array.Count()));
  for (const gsl_Dot* dot : model.array)
    Fill(*all->add_array(), *dot);
  for (const gsl_Plane& plane : model.planes)
    Fill(*all->add_planes(), plane);
  for (const gsl_StLine& axis : model.axes)
    Fill(*all->add_axes(), axis);
  for (const gsl_Segment& segment : model.segments)
    Fill(*all->add_segments(), segment.Uid(), segment.Point1(), segment.Point2());
  for (const gsl_BBox& box : model.boxes)
    Fill(*all->add_boxes(), box.Uid(), box.min, box.max);
  const auto text = std::make_shared<std::string>(all->SerializeAsString());
  return {text, reinterpret_cast<const unsigned char*>(text->data()), text->size()};
}

Uid Of(const pb::Uid& uid) {
  return {uid.prefix(), uid.serial()};
}

Point Of(const pb::Point& p) {
  return {p.x(), p.y(), p.z(), Of(p.uid())};
}

Vector Of(const pb::Vector& v) {
  return {v.x(), v.y(), v.z(), v.magnitude(), Of(v.uid())};
}

Dot Of(const pb::Dot& dot) {
  return {Of(dot.uid()), Of(dot.point()), dot.method(), dot.instance_id(), dot.entity_id()};
}

Datum Of(const pb::Datum& datum) {
  return {Of(datum.uid()),
          Of(datum.point()),
          Of(datum.direction()),
          datum.method(),
          datum.flip(),
          datum.ok(),
          {{datum.parent_ids().begin(), datum.parent_ids().end()}, Of(datum.parents_uid())},
          datum.owner_feat_id()};
}

Two Of(const pb::Two& two) {
  return {Of(two.uid()), Of(two.first()), Of(two.second())};
}

template <class Items, class From>
void Restore(Items& items, const From& from) {
  items.reserve(static_cast<std::size_t>(from.size()));
  for (const auto& item : from)
    items.push_back(Of(item));
}

/// Each object of an array is an object of its own, as those of the library are.
template <class From>
void Restore(std::vector<std::unique_ptr<Dot>>& items, const From& from) {
  items.reserve(static_cast<std::size_t>(from.size()));
  for (const auto& item : from)
    items.push_back(std::make_unique<Dot>(Of(item)));
}

PlainModel Read(const Written& written) {
  google::protobuf::Arena arena;
  auto* const all = google::protobuf::Arena::CreateMessage<pb::Model>(&arena);
  if (!all->ParseFromArray(written.begin, static_cast<int>(written.count))) {
    throw std::runtime_error("Protocol Buffers refuse what they wrote");
  }
  PlainModel model;
  Restore(model.dots, all->dots());
  Restore(model.array, all->array());
  Restore(model.planes, all->planes());
  Restore(model.axes, all->axes());
  Restore(model.segments, all->segments());
  Restore(model.boxes, all->boxes());
  return model;
}

std::string Version() {
  return google::protobuf::internal::VersionString(GOOGLE_PROTOBUF_VERSION);
}

} // namespace protobuf

#endif

#if defined(BENCH_FLATBUFFERS)

namespace flat {

namespace fb = peer_flatbuffers;
using flatbuffers::FlatBufferBuilder;
using flatbuffers::Offset;

fb::Uid UidOf(const cls_Uid& uid) {
  return {uid.Prefix(), uid.Serial()};
}

fb::Point PointOf(const gsl_Point& p) {
  return {p.x, p.y, p.z, UidOf(p.uid)};
}

template <class C>
Offset<fb::Datum> DatumIn(FlatBufferBuilder& builder, const C& datum) {
  const auto parents = builder.CreateVector(datum.ParentIds().begin(), datum.ParentIds().Count());
  const fb::Uid uid = UidOf(datum.Uid());
  const fb::Point point = PointOf(datum.PointOn());
  const gsl_Vector& v = datum.Direction();
  const fb::Vector direction(v.x, v.y, v.z, v.magnitude, UidOf(DirectionOf(datum).Uid()));
  const fb::Uid parentsUid = UidOf(datum.ParentIds().Uid());
  return fb::CreateDatum(builder, &uid, &point, &direction, datum.Method(), datum.Flip(),
                         datum.Ok(), parents, datum.OwnerFeatID(), &parentsUid);
}

Offset<fb::Two> TwoIn(FlatBufferBuilder& builder, const cls_Uid& uid, const gsl_Point& first,
                      const gsl_Point& second) {
  const fb::Uid ownUid = UidOf(uid);
  const fb::Point a = PointOf(first);
  const fb::Point b = PointOf(second);
  return fb::CreateTwo(builder, &ownUid, &a, &b);
}

Offset<fb::Dot> DotIn(FlatBufferBuilder& builder, const gsl_Dot& dot) {
  const fb::Uid uid = UidOf(dot.Uid());
  const fb::Point point = PointOf(dot.GetPoint());
  return fb::CreateDot(builder, &uid, &point, dot.GetMethod(), dot.GetInstanceId(),
                       dot.GetEntityId());
}

/// Makes an item of each of `count` objects. Returns the vector of the items.
template <class Item, class Objects, class Make>
auto ListIn(FlatBufferBuilder& builder, const Objects& objects, std::size_t count,
            const Make& make) {
  std::vector<Offset<Item>> items;
  items.reserve(count);
  for (const auto& object : objects)
    items.push_back(make(object));
  return builder.CreateVector(items);
}

Written Write(const Model& model) {
  FlatBufferBuilder builder(std::size_t{1} << 20);
  const auto dots = ListIn<fb::Dot>(builder, model.dots, model.dots.size(),
                                    [&](const gsl_Dot& dot) { return DotIn(builder, dot); });
  const auto array = ListIn<fb::Dot>(builder, model.array, model.array.Count(),
                                     [&](const gsl_Dot* dot) { return DotIn(builder, *dot); });
  const auto datum = [&](const auto& object) { return DatumIn(builder, object); };
  const auto planes = ListIn<fb::Datum>(builder, model.planes, model.planes.size(), datum);
  const auto axes = ListIn<fb::Datum>(builder, model.axes, model.axes.size(), datum);
  const auto segments = ListIn<fb::Two>(
      builder, model.segments, model.segments.size(), [&](const gsl_Segment& segment) {
        return TwoIn(builder, segment.Uid(), segment.Point1(), segment.Point2());
      });
  const auto boxes =
      ListIn<fb::Two>(builder, model.boxes, model.boxes.size(), [&](const gsl_BBox& box) {
        return TwoIn(builder, box.Uid(), box.min, box.max);
      });
  builder.Finish(fb::CreateModel(builder, dots, planes, axes, segments, boxes, array));
  const auto bytes = std::make_shared<flatbuffers::DetachedBuffer>(builder.Release());
  return {bytes, bytes->data(), bytes->size()};
}

Uid Of(const fb::Uid& uid) {
  return {uid.prefix(), uid.serial()};
}

Point Of(const fb::Point& p) {
  return {p.x(), p.y(), p.z(), Of(p.uid())};
}

Dot Of(const fb::Dot& dot) {
  return {Of(*dot.uid()), Of(*dot.point()), dot.method(), dot.instance_id(), dot.entity_id()};
}

Datum Of(const fb::Datum& datum) {
  const fb::Vector& v = *datum.direction();
  return {Of(*datum.uid()),
          Of(*datum.point()),
          {v.x(), v.y(), v.z(), v.magnitude(), Of(v.uid())},
          datum.method(),
          datum.flip(),
          datum.ok(),
          {{datum.parent_ids()->begin(), datum.parent_ids()->end()}, Of(*datum.parents_uid())},
          datum.owner_feat_id()};
}

Two Of(const fb::Two& two) {
  return {Of(*two.uid()), Of(*two.first()), Of(*two.second())};
}

template <class Items, class From>
void Restore(Items& items, const From* from) {
  items.reserve(from->size());
  for (const auto* item : *from)
    items.push_back(Of(*item));
}

template <class From>
void Restore(std::vector<std::unique_ptr<Dot>>& items, const From* from) {
  items.reserve(from->size());
  for (const auto* item : *from)
    items.push_back(std::make_unique<Dot>(Of(*item)));
}

PlainModel Read(const Written& written) {
  constexpr flatbuffers::uoffset_t kMostDepth = 64;
  constexpr flatbuffers::uoffset_t kMostTables = 100000000;
  flatbuffers::Verifier verifier(written.begin, written.count, kMostDepth, kMostTables);
  if (!fb::VerifyModelBuffer(verifier)) {
    throw std::runtime_error("FlatBuffers refuse what they wrote");
  }
  const fb::Model* const all = fb::GetModel(written.begin);
  PlainModel model;
  Restore(model.dots, all->dots());
  Restore(model.array, all->array());
  Restore(model.planes, all->planes());
  Restore(model.axes, all->axes());
  Restore(model.segments, all->segments());
  Restore(model.boxes, all->boxes());
  return model;
}

std::string Version() {
  return std::to_string(FLATBUFFERS_VERSION_MAJOR) + '.' +
         std::to_string(FLATBUFFERS_VERSION_MINOR) + '.' +
         std::to_string(FLATBUFFERS_VERSION_REVISION);
}

} // namespace flat

#endif

#if defined(BENCH_CAPNPROTO)

namespace capn {

namespace cp = peer_capnp;

void Fill(cp::Uid::Builder to, const cls_Uid& uid) {
  to.setPrefix(uid.Prefix());
  to.setSerial(uid.Serial());
}

void Fill(cp::Point::Builder to, const gsl_Point& p) {
  to.setX(p.x);
  to.setY(p.y);
  to.setZ(p.z);
  Fill(to.initUid(), p.uid);
}

void Fill(cp::Vector::Builder to, const gsl_PersistentVector& direction) {
  const gsl_Vector& v = direction.Vector();
  to.setX(v.x);
  to.setY(v.y);
  to.setZ(v.z);
  to.setMagnitude(v.magnitude);
  Fill(to.initUid(), direction.Uid());
}

void Fill(cp::Dot::Builder to, const gsl_Dot& dot) {
  Fill(to.initUid(), dot.Uid());
  Fill(to.initPoint(), dot.GetPoint());
  to.setMethod(dot.GetMethod());
  to.setInstanceId(dot.GetInstanceId());
  to.setEntityId(dot.GetEntityId());
}

template <class C>
void Fill(cp::Datum::Builder to, const C& datum) {
  Fill(to.initUid(), datum.Uid());
  Fill(to.initPoint(), datum.PointOn());
  Fill(to.initDirection(), DirectionOf(datum));
  to.setMethod(datum.Method());
  to.setFlip(datum.Flip());
  to.setOk(datum.Ok());
  to.setParentIds(kj::arrayPtr(datum.ParentIds().begin(), datum.ParentIds().Count()));
  to.setOwnerFeatId(datum.OwnerFeatID());
  Fill(to.initParentsUid(), datum.ParentIds().Uid());
}

void Fill(cp::Two::Builder to, const gsl_Segment& segment) {
  Fill(to.initUid(), segment.Uid());
  Fill(to.initFirst(), segment.Point1());
  Fill(to.initSecond(), segment.Point2());
}

void Fill(cp::Two::Builder to, const gsl_BBox& box) {
  Fill(to.initUid(), box.Uid());
  Fill(to.initFirst(), box.min);
  Fill(to.initSecond(), box.max);
}

template <class List, class Objects>
void FillList(List list, const Objects& objects) {
  unsigned int i = 0;
  for (const auto& object : objects)
    Fill(list[i++], object);
}

Written Write(const Model& model) {
  capnp::MallocMessageBuilder message;
  auto all = message.initRoot<cp::Model>();
  FillList(all.initDots(static_cast<unsigned int>(model.dots.size())), model.dots);
  auto array = all.initArray(model.array.Count());
  for (unsigned int i = 0; i < model.array.Count(); ++i)
    Fill(array[i], *model.array[i]);
  FillList(all.initPlanes(static_cast<unsigned int>(model.planes.size())), model.planes);
  FillList(all.initAxes(static_cast<unsigned int>(model.axes.size())), model.axes);
  FillList(all.initSegments(static_cast<unsigned int>(model.segments.size())), model.segments);
  FillList(all.initBoxes(static_cast<unsigned int>(model.boxes.size())), model.boxes);
  const auto words = std::make_shared<kj::Array<capnp::word>>(capnp::messageToFlatArray(message));
  return {words, words->asBytes().begin(), words->asBytes().size()};
}

Uid Of(cp::Uid::Reader uid) {
  return {uid.getPrefix(), uid.getSerial()};
}

Point Of(cp::Point::Reader p) {
  return {p.getX(), p.getY(), p.getZ(), Of(p.getUid())};
}

Vector Of(cp::Vector::Reader v) {
  return {v.getX(), v.getY(), v.getZ(), v.getMagnitude(), Of(v.getUid())};
}

Dot Of(cp::Dot::Reader dot) {
  return {Of(dot.getUid()), Of(dot.getPoint()), dot.getMethod(), dot.getInstanceId(),
          dot.getEntityId()};
}

Datum Of(cp::Datum::Reader datum) {
  std::vector<std::uint32_t> parentIds;
  parentIds.reserve(datum.getParentIds().size());
  for (const std::uint32_t id : datum.getParentIds())
    parentIds.push_back(id);
  return {Of(datum.getUid()),
          Of(datum.getPoint()),
          Of(datum.getDirection()),
          datum.getMethod(),
          datum.getFlip(),
          datum.getOk(),
          {std::move(parentIds), Of(datum.getParentsUid())},
          datum.getOwnerFeatId()};
}

Two Of(cp::Two::Reader two) {
  return {Of(two.getUid()), Of(two.getFirst()), Of(two.getSecond())};
}

template <class Items, class From>
void Restore(Items& items, const From& from) {
  items.reserve(from.size());
  for (const auto item : from)
    items.push_back(Of(item));
}

template <class From>
void Restore(std::vector<std::unique_ptr<Dot>>& items, const From& from) {
  items.reserve(from.size());
  for (const auto item : from)
    items.push_back(std::make_unique<Dot>(Of(item)));
}

PlainModel Read(const Written& written) {
  capnp::ReaderOptions options;
  options.traversalLimitInWords = ~std::uint64_t{0};
  const auto* const words = reinterpret_cast<const capnp::word*>(written.begin);
  capnp::FlatArrayMessageReader message(kj::arrayPtr(words, written.count / sizeof(capnp::word)),
                                        options);
  const auto all = message.getRoot<cp::Model>();
  PlainModel model;
  Restore(model.dots, all.getDots());
  Restore(model.array, all.getArray());
  Restore(model.planes, all.getPlanes());
  Restore(model.axes, all.getAxes());
  Restore(model.segments, all.getSegments());
  Restore(model.boxes, all.getBoxes());
  return model;
}

std::string Version() {
  return std::to_string(CAPNP_VERSION_MAJOR) + '.' + std::to_string(CAPNP_VERSION_MINOR) + '.' +
         std::to_string(CAPNP_VERSION_MICRO);
}

} // namespace capn

#endif

} // namespace

std::vector<Peer> AllPeers() {
  std::vector<Peer> peers;
#if defined(BENCH_PROTOBUF)
  peers.push_back({"Protocol Buffers", protobuf::Version(), protobuf::Write, protobuf::Read});
#endif
#if defined(BENCH_FLATBUFFERS)
  peers.push_back({"FlatBuffers", flat::Version(), flat::Write, flat::Read});
#endif
#if defined(BENCH_CAPNPROTO)
  peers.push_back({"Cap'n Proto", capn::Version(), capn::Write, capn::Read});
#endif
  return peers;
}

} // namespace record_peers
