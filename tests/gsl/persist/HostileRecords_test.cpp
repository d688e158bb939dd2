#include "PeakMemory.h"
#include "RandomNumbers.h"
#include "RawRecords.h"
#include "Records.h"
#include "TestScale.h"
#include "cls_xo1DArrayList.h"
#include "gsl_BBox.h"
#include "gsl_Dot.h"
#include "gsl_ModelSegment.h"
#include "gsl_Module.h"
#include "gsl_PersistentMatrix.h"
#include "gsl_PersistentVector.h"
#include "gsl_Plane.h"
#include "gsl_Point.h"
#include "gsl_RecordError.h"
#include "gsl_Segment.h"
#include "gsl_StLine.h"
#include "nex_Exception.h"
#include "omu_xoObjVarray.h"

#include <gtest/gtest.h>

#include <ctime>
#include <functional>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

// These are records that no writer would write, for every class and every field. Reading must
// return an object or throw an exception of the host's family, in bounded time and memory.

namespace {

using Kind = gsl_RecordKind;

constexpr unsigned int kPointType = 0x030A0001u;
constexpr unsigned int kVectorType = 0x030A0003u;
constexpr unsigned int kWrapperType = 0x7F0F0F0Fu;
constexpr std::uint32_t kLevels = 100000;

struct Class {
  const char* name;
  gsl_RecordStore sample;
  std::function<void(const cls_ReadVisitor&)> read;
  bool isArray;
};

template <class C>
void ReadAs(const cls_ReadVisitor& visitor) {
  if constexpr (std::is_constructible_v<C, const cls_ReadVisitor&>) {
    const C object(visitor);
  } else if constexpr (std::is_constructible_v<C, const cls_ReadVisitor&, const cls_Uid&>) {
    const C object(visitor, visitor.GetUid());
  } else {
    const C object(visitor, nullptr, nullptr);
  }
}

template <class C>
void Add(std::vector<Class>& classes, const char* name, const C& object, bool isArray = false) {
  classes.push_back({name, Written(object), &ReadAs<C>, isArray});
}

template <class T>
void AddArray(std::vector<Class>& classes, const char* name) {
  omu_xoObjVarray<T> array;
  array.Add(new T());
  array.Add(nullptr);
  Add(classes, name, array, true);
}

template <class T>
void AddList(std::vector<Class>& classes, const char* name, const T& element) {
  cls_xo1DArrayList<T> list;
  list.Append(element);
  list.Append(T());
  Add(classes, name, list);
}

const std::vector<Class>& Classes() {
  static const std::vector<Class> classes = [] {
    std::vector<Class> made;
    gsl_Plane plane;
    plane.ParentIds().Append(7);
    gsl_StLine axis;
    axis.ParentIds().Append(7);
    const gsl_ModelSegment segment(gsl_Dot(1.0, 2.0, 3.0), gsl_Dot(4, 5));
    Add(made, "gsl_Point", gsl_Point(1.0, 2.0, 3.0));
    Add(made, "gsl_PersistentMatrix", gsl_PersistentMatrix());
    Add(made, "gsl_PersistentVector", gsl_PersistentVector());
    Add(made, "gsl_Plane", plane);
    Add(made, "gsl_Dot", gsl_Dot(6, 7));
    Add(made, "gsl_StLine", axis);
    Add(made, "gsl_BBox", gsl_BBox());
    Add(made, "gsl_Segment", gsl_Segment());
    Add(made, "gsl_ModelSegment", segment);
    AddArray<gsl_Dot>(made, "array of gsl_Dot");
    AddArray<gsl_Plane>(made, "array of gsl_Plane");
    AddArray<gsl_StLine>(made, "array of gsl_StLine");
    AddList(made, "list of gsl_Point", gsl_Point(1.0, 2.0, 3.0));
    AddList(made, "list of gsl_ModelSegment", segment);
    return made;
  }();
  return classes;
}

class HostileRecords : public testing::Test {
protected:
  HostileRecords() { gsl_initialize(count); }
  ~HostileRecords() override { gsl_finalize(count); }

private:
  int count = 0;
};

bool HoldsRecord(const RawField& field) {
  return field.kind == Kind::Record || field.kind == Kind::Object;
}

/// Leaves out the records that no root holds any more, and numbers the other records again. A link
/// that leads nowhere stays unchanged.
RawRecords WithoutOrphans(RawRecords records) {
  std::vector<bool> kept(records.size(), false);
  std::vector<std::size_t> pending;
  for (std::size_t i = 0; i < records.size(); ++i) {
    if (records[i].isRoot) pending.push_back(i);
  }
  while (!pending.empty()) {
    const std::size_t at = pending.back();
    pending.pop_back();
    if (kept[at]) continue;
    kept[at] = true;
    for (const RawField& field : records[at].fields) {
      if (HoldsRecord(field) && field.link < records.size()) pending.push_back(field.link);
    }
  }
  std::vector<std::uint32_t> numbers(records.size(), 0);
  RawRecords result;
  for (std::size_t i = 0; i < records.size(); ++i) {
    numbers[i] = static_cast<std::uint32_t>(result.size());
    if (kept[i]) result.push_back(std::move(records[i]));
  }
  for (RawRecord& record : result) {
    for (RawField& field : record.fields) {
      const bool leads = HoldsRecord(field) || field.kind == Kind::Reference;
      if (leads && field.link < numbers.size()) field.link = numbers[field.link];
    }
  }
  return result;
}

/// Puts the records below one more root of an unknown class, which holds them as the shared object
/// "o".
RawRecords Wrapped(const RawRecords& records) {
  RawRecord wrapper;
  wrapper.isRoot = true;
  wrapper.typeId = kWrapperType;
  RawField field;
  field.name = "o";
  field.kind = Kind::Object;
  field.link = 1;
  wrapper.fields.push_back(field);
  RawRecords result = {wrapper};
  for (RawRecord record : records) {
    record.isRoot = false;
    for (RawField& inner : record.fields) {
      if (HoldsRecord(inner) || inner.kind == Kind::Reference) ++inner.link;
    }
    result.push_back(record);
  }
  return result;
}

/// Returns whether the first root, or the record in its field `inside`, can be read. Fails the test
/// for an exception outside the host's family. It also fails the test when the time or the memory
/// is out of proportion to the bytes.
bool CanRead(const Class& c, const RawRecords& records, const char* inside = nullptr) {
  const std::vector<unsigned char> bytes = RawBytes(records);
  const PeakMemory memory;
  // The clock counts processor time, so that other work of the machine does not count.
  const std::clock_t start = std::clock();
  bool isRead = false;
  try {
    const gsl_RecordStore store = gsl_RecordStore::FromBytes(bytes.data(), bytes.size());
    cls_Load load(store);
    const cls_ReadVisitor root(load, 0);
    if (inside != nullptr) {
      c.read(cls_ReadVisitor(root, {-1, inside}));
    } else {
      c.read(root);
    }
    isRead = true;
  } catch (const gsl_RecordError& e) {
    EXPECT_STRNE(e.what(), "");
  } catch (const nex_Exception& e) {
    EXPECT_STRNE(e.what(), "");
  }
  EXPECT_LT(static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC, 5.0);
  EXPECT_LT(memory.Bytes(), 100000 + 100 * bytes.size());
  return isRead;
}

void ForEachField(const std::function<void(const Class&, const RawRecords&, std::size_t)>& run) {
  for (const Class& c : Classes()) {
    const RawRecords sample = RawCopy(c.sample);
    ASSERT_FALSE(sample[0].fields.empty()) << c.name;
    for (std::size_t i = 0; i < sample[0].fields.size(); ++i) {
      SCOPED_TRACE(std::string(c.name) + ' ' + sample[0].fields[i].name);
      run(c, sample, i);
    }
  }
}

} // namespace

TEST_F(HostileRecords, SamplesAreEncodedAndReadAsTheyAre) {
  for (const Class& c : Classes()) {
    const RawRecords sample = RawCopy(c.sample);
    EXPECT_EQ(RawBytes(sample), c.sample.ToBytes()) << c.name;
    EXPECT_TRUE(CanRead(c, sample)) << c.name;
    EXPECT_TRUE(CanRead(c, Wrapped(sample), "o")) << c.name;
  }
}

TEST_F(HostileRecords, RootOfAnyOtherClassIsRefused) {
  for (const Class& c : Classes()) {
    for (const Class& other : Classes()) {
      const bool same = &other == &c;
      EXPECT_EQ(CanRead(c, RawCopy(other.sample)), same) << other.name << " read as " << c.name;
    }
    // A list is known by its collection type, every other class by its type id.
    for (const unsigned int typeId : {0u, kPointType - 1, kWrapperType, 0x00230001u}) {
      RawRecords records = RawCopy(c.sample);
      if (records[0].collection != 0) continue;
      records[0].typeId = typeId;
      EXPECT_FALSE(CanRead(c, records)) << c.name << ' ' << typeId;
    }
  }
}

TEST_F(HostileRecords, RecordOfAnotherClassIsNamedWithItsPlace) {
  const auto message = [](const Class& c, const RawRecords& records) {
    const std::vector<unsigned char> bytes = RawBytes(records);
    const gsl_RecordStore store = gsl_RecordStore::FromBytes(bytes.data(), bytes.size());
    cls_Load load(store);
    try {
      c.read(cls_ReadVisitor(load, 0));
    } catch (const nex_Exception& e) {
      return std::string(e.what());
    }
    return std::string("nothing");
  };
  const auto named = [](const char* name) -> const Class& {
    for (const Class& c : Classes()) {
      if (std::string(c.name) == name) return c;
    }
    throw std::out_of_range(name);
  };
  EXPECT_EQ(message(named("gsl_Point"), RawCopy(named("gsl_BBox").sample)),
            "Root 0 holds a record of class gsl_BBox, not gsl_Point");
  EXPECT_EQ(message(named("array of gsl_Dot"), RawCopy(named("array of gsl_Plane").sample)),
            "Root 0 holds a record of class gsl_PlaneArray, not gsl_DotArray");
  // The second record of a plane is its point. The second record of a list or an array is an entry,
  // or leads to an entry.
  const auto changed = [&](const char* name, std::size_t record, unsigned int typeId) {
    RawRecords records = RawCopy(named(name).sample);
    records.at(record).typeId = typeId;
    return message(named(name), records);
  };
  EXPECT_EQ(changed("gsl_Plane", 1, kVectorType),
            "Field \"_point\" of gsl_Plane holds a record of class gsl_Vector, not gsl_Point");
  EXPECT_EQ(changed("gsl_ModelSegment", 1, kWrapperType),
            "Field \"point1\" of gsl_ModelSegment holds a record of class 0x7F0F0F0F, not gsl_Dot");
  EXPECT_EQ(changed("list of gsl_Point", 2, kVectorType),
            "Entry 1 of root 0 holds a record of class gsl_Vector, not gsl_Point");
  EXPECT_EQ(changed("array of gsl_Dot", 2, kPointType),
            "Entry 0 of field \"data_\" of gsl_DotArray holds a record of class gsl_Point, not "
            "gsl_Dot");
}

TEST_F(HostileRecords, FieldThatHoldsOrRefersToItsOwnRecordIsRefused) {
  ForEachField([](const Class& c, const RawRecords& sample, std::size_t i) {
    for (const Kind kind : {Kind::Record, Kind::Object, Kind::Reference}) {
      RawRecords records = sample;
      records[0].fields[i].kind = kind;
      records[0].fields[i].link = 0;
      EXPECT_FALSE(CanRead(c, WithoutOrphans(std::move(records)))) << static_cast<int>(kind);
    }
  });
}

TEST_F(HostileRecords, FieldThatRefersToTheObjectAroundItIsRefused) {
  ForEachField([](const Class& c, const RawRecords& sample, std::size_t i) {
    RawRecords records = Wrapped(sample);
    records[1].fields[i].kind = Kind::Reference;
    records[1].fields[i].link = 1;
    EXPECT_FALSE(CanRead(c, WithoutOrphans(records), "o"));
  });
}

TEST_F(HostileRecords, OnlyAModelSegmentReadsASharedObjectOfAnotherField) {
  ForEachField([](const Class& c, const RawRecords& sample, std::size_t i) {
    if (!HoldsRecord(sample[0].fields[i])) return;
    // The field's own record becomes the shared object of another field.
    RawRecords records = sample;
    RawField other = records[0].fields[i];
    other.name = "somewhere else";
    other.kind = Kind::Object;
    records[0].fields[i].kind = Kind::Reference;
    records[0].fields.push_back(other);
    EXPECT_EQ(CanRead(c, records), std::string(c.name) == "gsl_ModelSegment");
  });
}

TEST_F(HostileRecords, RecordThatOthersMayReferToIsReadLikeAnyOther) {
  ForEachField([](const Class& c, const RawRecords& sample, std::size_t i) {
    if (!HoldsRecord(sample[0].fields[i])) return;
    for (const Kind kind : {Kind::Record, Kind::Object}) {
      RawRecords records = sample;
      records[0].fields[i].kind = kind;
      EXPECT_TRUE(CanRead(c, records));
    }
  });
}

TEST_F(HostileRecords, OneRecordMayBeInTwoFieldsAndOneSharedObjectMayNot) {
  ForEachField([](const Class& c, const RawRecords& sample, std::size_t i) {
    if (!HoldsRecord(sample[0].fields[i])) return;
    for (const Kind kind : {Kind::Record, Kind::Object}) {
      RawRecords records = sample;
      records[0].fields[i].kind = kind;
      records[0].fields.push_back(records[0].fields[i]);
      EXPECT_EQ(CanRead(c, records), kind == Kind::Record);
    }
  });
}

TEST_F(HostileRecords, HundredThousandLevelsInAnyField) {
  ForEachField([](const Class& c, const RawRecords& sample, std::size_t i) {
    const auto levels = static_cast<std::uint32_t>(Scaled(kLevels));
    const RawField& field = sample[0].fields[i];
    const RawRecord* const nested = HoldsRecord(field) ? &sample[field.link] : nullptr;
    for (const bool keepsCollection : {false, true}) {
      if (keepsCollection && (nested == nullptr || nested->collection == 0)) continue;
      RawRecords records = sample;
      records[0].fields[i].kind = Kind::Record;
      records[0].fields[i].link = static_cast<std::uint32_t>(sample.size());
      for (std::uint32_t level = 1; level <= levels; ++level) {
        RawRecord deeper;
        deeper.typeId = nested != nullptr ? nested->typeId : sample[0].typeId;
        if (keepsCollection) deeper.collection = nested->collection;
        RawField next = records[0].fields[i];
        next.link = static_cast<std::uint32_t>(sample.size()) + level;
        // Only a list has entries without a name.
        if (next.name.empty() && deeper.collection != 1) next.name = "inner";
        if (level < levels) deeper.fields.push_back(next);
        records.push_back(std::move(deeper));
      }
      // A reader reads only its own fields. A record of that class reads as a record without
      // fields, and a list reads as an empty list. A datum point needs its method, and an array
      // refuses entries of another class.
      bool expected = false;
      if (nested != nullptr) {
        const bool isCollection = nested->collection != 0;
        expected = isCollection ? keepsCollection && nested->collection != 1
                                : std::string(c.name) != "gsl_ModelSegment";
      }
      EXPECT_EQ(CanRead(c, WithoutOrphans(std::move(records))), expected) << keepsCollection;
    }
  });
}

TEST_F(HostileRecords, HundredThousandUnknownFieldsAreIgnored) {
  for (const Class& c : Classes()) {
    RawRecords records = RawCopy(c.sample);
    if (records[0].collection != 0) continue;
    std::vector<RawField> fields;
    for (long i = 0; i < Scaled(kLevels); ++i) {
      RawField unknown;
      unknown.name = "unknown" + std::to_string(i % 1000);
      unknown.kind = i % 2 == 0 ? Kind::String : Kind::Double;
      fields.push_back(unknown);
    }
    fields.insert(fields.end(), records[0].fields.begin(), records[0].fields.end());
    records[0].fields = fields;
    EXPECT_TRUE(CanRead(c, records)) << c.name;
  }
}

TEST_F(HostileRecords, HundredThousandFieldsOfOneName) {
  constexpr auto repeats = static_cast<std::size_t>(Scaled(kLevels));
  ForEachField([](const Class& c, const RawRecords& sample, std::size_t i) {
    if (sample[0].collection != 0) return;
    RawField wrong = sample[0].fields[i];
    wrong.kind = wrong.kind == Kind::Integer ? Kind::Double : Kind::Integer;
    RawRecords behind = sample;
    behind[0].fields.insert(behind[0].fields.end(), repeats, wrong);
    EXPECT_TRUE(CanRead(c, behind));
    RawRecords before = sample;
    before[0].fields.insert(before[0].fields.begin(), repeats, wrong);
    // The field right after the field read before counts. Only the first field has no field before
    // it.
    EXPECT_EQ(CanRead(c, before), i != 0);
  });
}

TEST_F(HostileRecords, AMillionNullEntriesTakeMemoryInProportion) {
  for (const Class& c : Classes()) {
    RawRecords records = RawCopy(c.sample);
    RawField null;
    null.kind = Kind::Null;
    null.link = kPointType;
    if (c.isArray) {
      for (RawRecord& record : records) {
        if (record.collection != 1) continue;
        record.fields.assign(static_cast<std::size_t>(Scaled(1000000)), null);
      }
      EXPECT_TRUE(CanRead(c, WithoutOrphans(std::move(records)))) << c.name;
    } else if (records[0].collection == 1) {
      records[0].fields.assign(static_cast<std::size_t>(Scaled(1000000)), null);
      EXPECT_FALSE(CanRead(c, WithoutOrphans(std::move(records)))) << c.name;
    }
  }
}

TEST_F(HostileRecords, EntryOfAnyOtherKindIsRefused) {
  for (const Class& c : Classes()) {
    const RawRecords sample = RawCopy(c.sample);
    for (std::size_t list = 0; list < sample.size(); ++list) {
      if (sample[list].collection != 1) continue;
      for (const Kind kind : {Kind::Integer, Kind::Double, Kind::Boolean, Kind::String}) {
        RawRecords records = sample;
        records[list].fields[1].kind = kind;
        EXPECT_FALSE(CanRead(c, WithoutOrphans(std::move(records))))
            << c.name << static_cast<int>(kind);
      }
      for (const std::uint32_t typeId : {kPointType, kVectorType, 0x00230001u, kWrapperType}) {
        RawRecords records = sample;
        RawRecord& entry = records[records[list].fields[0].link];
        if (entry.typeId == typeId) continue;
        entry.typeId = typeId;
        EXPECT_FALSE(CanRead(c, records)) << c.name << typeId;
      }
    }
  }
}

TEST_F(HostileRecords, AnyChangeOfAnyRecordIsReadOrRefused) {
  const std::uint64_t seed = std::random_device()();
  SCOPED_TRACE("seed " + std::to_string(seed));
  RandomNumbers random(seed);
  const auto below = [&](std::size_t n) {
    return static_cast<std::size_t>(random.Below(static_cast<int>(n)));
  };
  for (const Class& c : Classes()) {
    const RawRecords sample = Wrapped(RawCopy(c.sample));
    long accepted = 0;
    for (long n = 0; n < Scaled(5000); ++n) {
      RawRecords records = sample;
      for (int changes = 1 + random.Below(3); changes > 0; --changes) {
        RawRecord& record = records[1 + below(records.size() - 1)];
        if (random.Chance(0.2)) record.collection = static_cast<std::uint32_t>(random.Below(100));
        if (random.Chance(0.2))
          record.typeId = kPointType + static_cast<unsigned>(random.Below(15));
        if (record.fields.empty()) continue;
        RawField& field = record.fields[below(record.fields.size())];
        if (random.Chance(0.3)) field.kind = static_cast<Kind>(random.Below(8));
        if (random.Chance(0.3)) field.link = static_cast<std::uint32_t>(below(records.size() + 1));
        if (random.Chance(0.3)) field.name = random.Chance(0.5) ? "_method" : "point1";
        if (random.Chance(0.2)) record.fields.push_back(field);
        if (random.Chance(0.1)) record.fields.pop_back();
      }
      records = WithoutOrphans(std::move(records));
      accepted += CanRead(c, records, "o") ? 1 : 0;
    }
    // Some changes are harmless and must not end the reading.
    EXPECT_GT(accepted, 0) << c.name;
  }
}
