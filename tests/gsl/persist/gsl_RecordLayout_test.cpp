#include "gsl_RecordLayout.h"

#include "ForwardingReader.h"
#include "RandomNumbers.h"
#include "RawRecords.h"
#include "Records.h"
#include "TestScale.h"
#include "cls_MetadataRegistrar.h"
#include "cls_RecordException.h"
#include "gsl_BBox.h"
#include "gsl_Dot.h"
#include "gsl_ModelSegment.h"
#include "gsl_Module.h"
#include "gsl_PersistentMatrix.h"
#include "gsl_PersistentVector.h"
#include "gsl_Plane.h"
#include "gsl_Point.h"
#include "gsl_Segment.h"
#include "gsl_StLine.h"
#include "nex_Exception.h"
#include "omu_xoObjVarray.h"

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

// These tables of the records are typed by hand and independent of the tables of the library. The
// test compares the registration, the order of writing, and the reading of missing and misplaced
// fields with them.

namespace {

constexpr unsigned int kCollection = 0x00230001u;

enum class Value { Integer, Double, Boolean, Name, Record, Shared, Unsigneds, Doubles, List };

struct FieldRow {
  int index;
  const char* name;
  Value value;
  int attributeType;
  unsigned int argument;
  int collection;
};

struct ClassRow {
  unsigned int typeId;
  const char* name;
  int number;
  int flags;
  bool hasDtor;
  std::vector<FieldRow> fields;
};

FieldRow Integer(int index, const char* name) {
  return {index, name, Value::Integer, 5, 1, 0};
}
FieldRow Double(int index, const char* name) {
  return {index, name, Value::Double, 10, 1, 0};
}
FieldRow Boolean(int index, const char* name) {
  return {index, name, Value::Boolean, 13, 1, 0};
}
FieldRow Method(int index, const char* name) {
  return {index, name, Value::Name, 14, 1, 0};
}
FieldRow Nested(int index, const char* name, unsigned int typeId) {
  return {index, name, Value::Record, 15, typeId, 0};
}

/// The classes in the order of their registration.
const std::vector<ClassRow>& Rows() {
  static const std::vector<ClassRow> rows = {
      {0x030A0007,
       "gsl_BBox",
       800,
       3,
       false,
       {Nested(-1, "_low", 0x030A0001), Nested(-1, "_high", 0x030A0001)}},
      {0x030A000B,
       "gsl_ModelSegment",
       332,
       3,
       true,
       {{0, "point1", Value::Shared, 15, 0x030A0005, 0},
        {1, "point2", Value::Shared, 15, 0x030A0005, 0}}},
      {0x030A0004,
       "gsl_Plane",
       800,
       3,
       true,
       {Boolean(0, "_ok"),
        Nested(1, "_point", 0x030A0001),
        Nested(2, "_normal", 0x030A0003),
        Method(3, "_method"),
        Boolean(4, "_flip"),
        {5, "parent_ids", Value::Unsigneds, 15, kCollection, 57},
        Integer(6, "owner_feat_id")}},
      {0x030A000D,
       "gsl_PlaneArray",
       800,
       3,
       false,
       {Double(-1, "growthRatio_"), {-1, "data_", Value::List, 15, kCollection, 1}}},
      {0x030A0001,
       "gsl_Point",
       203,
       7,
       true,
       {Double(-1, "_x"), Double(-1, "_y"), Double(-1, "_z")}},
      {0x030A0008,
       "gsl_Segment",
       800,
       3,
       false,
       {Nested(-1, "_point1", 0x030A0001), Nested(-1, "_point2", 0x030A0001)}},
      {0x030A0006,
       "gsl_StLine",
       800,
       3,
       true,
       {Nested(0, "_point", 0x030A0001),
        Nested(1, "_dir", 0x030A0003),
        Method(2, "_method"),
        Boolean(3, "_flip"),
        Boolean(4, "_ok"),
        {5, "parent_ids", Value::Unsigneds, 15, kCollection, 57},
        Integer(6, "owner_feat_id")}},
      {0x030A000A,
       "gsl_LineArray",
       800,
       3,
       false,
       {Double(-1, "growthRatio_"), {-1, "data_", Value::List, 15, kCollection, 1}}},
      {0x030A0003,
       "gsl_Vector",
       203,
       7,
       false,
       {Double(-1, "_x"), Double(-1, "_y"), Double(-1, "_z"), Double(-1, "_magnitude")}},
      {0x030A0005,
       "gsl_Dot",
       203,
       7,
       true,
       {Nested(-1, "_point", 0x030A0001), Method(-1, "_method"), Integer(-1, "_instanceId"),
        Integer(-1, "_entityId")}},
      {0x030A000E,
       "gsl_DotArray",
       800,
       3,
       false,
       {Double(-1, "growthRatio_"), {-1, "data_", Value::List, 15, kCollection, 1}}},
      {0x030A0002,
       "gsl_Matrix",
       203,
       7,
       false,
       {Integer(-1, "_is_identity"), {-1, "DDBmatrix", Value::Doubles, 15, kCollection, 82}}}};
  return rows;
}

using Kind = gsl_RecordKind;

Kind KindOf(Value value) {
  switch (value) {
  case Value::Integer:
    return Kind::Integer;
  case Value::Double:
    return Kind::Double;
  case Value::Boolean:
    return Kind::Boolean;
  case Value::Name:
    return Kind::String;
  case Value::Shared:
    return Kind::Object;
  default:
    return Kind::Record;
  }
}

/// A class by its type id, with the record of a sample, and a function that reads and writes this
/// record.
struct Class {
  unsigned int typeId;
  std::function<gsl_RecordStore()> sample;
  std::function<gsl_RecordStore(const gsl_RecordStore&)> readAndWrite;
};

template <class C>
Class ClassOf() {
  return {C::TypeId(),
          [] {
            if constexpr (std::is_same_v<C, gsl_ModelSegment>) {
              return Written(gsl_ModelSegment(gsl_Dot(1.0, 2.0, 3.0), gsl_Dot(4, 5)));
            } else {
              return Written(C());
            }
          },
          [](const gsl_RecordStore& store) {
            if constexpr (std::is_constructible_v<C, const cls_ReadVisitor&>) {
              return Written(ReadBack<C>(store));
            } else {
              cls_Load load(store);
              return Written(C(cls_ReadVisitor(load, 0), nullptr, nullptr));
            }
          }};
}

const std::vector<Class>& Classes() {
  static const std::vector<Class> classes = {ClassOf<gsl_BBox>(),
                                             ClassOf<gsl_ModelSegment>(),
                                             ClassOf<gsl_Plane>(),
                                             ClassOf<omu_xoObjVarray<gsl_Plane>>(),
                                             ClassOf<gsl_Point>(),
                                             ClassOf<gsl_Segment>(),
                                             ClassOf<gsl_StLine>(),
                                             ClassOf<omu_xoObjVarray<gsl_StLine>>(),
                                             ClassOf<gsl_PersistentVector>(),
                                             ClassOf<gsl_Dot>(),
                                             ClassOf<omu_xoObjVarray<gsl_Dot>>(),
                                             ClassOf<gsl_PersistentMatrix>()};
  return classes;
}

class Started {
public:
  Started() { gsl_initialize(count); }
  ~Started() { gsl_finalize(count); }

private:
  int count = 0;
};

std::optional<gsl_RecordField> FindField(const gsl_RecordStore& store, const std::string& name) {
  for (const gsl_RecordField& field : store.Fields(store.Root(0))) {
    if (field.name == name) return field;
  }
  return std::nullopt;
}

/// The value of a missing field after the record was read and written again.
void ExpectDefault(const gsl_RecordStore& store, const FieldRow& row) {
  const auto field = FindField(store, row.name);
  ASSERT_TRUE(field.has_value()) << row.name;
  switch (row.value) {
  case Value::Integer:
    EXPECT_EQ(field->integer, 0) << row.name;
    break;
  case Value::Double:
    EXPECT_TRUE(SameBits(field->real, 0.0)) << row.name;
    break;
  case Value::Boolean:
    EXPECT_FALSE(field->boolean) << row.name;
    break;
  case Value::Shared:
    EXPECT_EQ(field->kind, Kind::Null) << row.name;
    break;
  case Value::Record:
    EXPECT_EQ(store.Identity(field->link), gsl_RecordIdentity()) << row.name;
    for (const gsl_RecordField& number : store.Fields(field->link))
      EXPECT_TRUE(SameBits(number.real, 0.0)) << row.name << '/' << number.name;
    break;
  case Value::Unsigneds: {
    std::vector<std::uint32_t> values;
    store.ReadUnsigneds(field->link, values);
    EXPECT_TRUE(values.empty()) << row.name;
    break;
  }
  case Value::Doubles: {
    // The entries of a matrix that was just made.
    std::vector<double> values;
    std::size_t rows = 0;
    std::size_t columns = 0;
    store.ReadDoubles(field->link, values, rows, columns);
    EXPECT_EQ(rows, 4u);
    break;
  }
  case Value::List:
    EXPECT_EQ(store.FirstField(field->link), gsl_RecordStore::kEnd);
    break;
  case Value::Name:
    FAIL() << "a missing name must not be readable";
  }
}

struct Replacement {
  const char* what;
  Kind kind;
  unsigned int typeId;
  int collection;
  std::function<void(const cls_WriteVisitor&, const cls_FieldHandle&)> write;
};

/// A value of every kind, to be put in a field of another kind.
const std::vector<Replacement>& Replacements() {
  const auto record = [](unsigned int typeId, int collection) {
    return [=](const cls_WriteVisitor& to, const cls_FieldHandle& field) {
      const cls_WriteVisitor child(to, field);
      child.StartWrite(typeId, cls_Uid(1, 2));
      if (collection != 0) child.CheckCollectionType(collection);
    };
  };
  static const std::vector<Replacement> replacements = {
      {"integer", Kind::Integer, 0, 0, [](auto& to, auto& f) { to.WriteInteger(f, 3); }},
      {"double", Kind::Double, 0, 0, [](auto& to, auto& f) { to.WriteDouble(f, 0.5); }},
      {"boolean", Kind::Boolean, 0, 0, [](auto& to, auto& f) { to.WriteBoolean(f, true); }},
      {"string", Kind::String, 0, 0, [](auto& to, auto& f) { to.WriteString(f, "text"); }},
      {"null", Kind::Null, 0, 0, [](auto& to, auto& f) { to.WriteNullObject(f, 0x030A0001u); }},
      {"point", Kind::Record, 0x030A0001u, 0, record(0x030A0001u, 0)},
      {"vector", Kind::Record, 0x030A0003u, 0, record(0x030A0003u, 0)},
      {"segment", Kind::Record, 0x030A0008u, 0, record(0x030A0008u, 0)},
      {"unknown class", Kind::Record, 0x7F0F0F0Fu, 0, record(0x7F0F0F0Fu, 0)},
      {"unsigned list", Kind::Record, kCollection, 57, record(kCollection, 57)},
      {"double matrix", Kind::Record, kCollection, 82, record(kCollection, 82)},
      {"object list", Kind::Record, kCollection, 1, record(kCollection, 1)}};
  return replacements;
}

/// Returns whether a reader accepts the replacement as a value of the field.
bool Fits(const FieldRow& row, const Replacement& r) {
  switch (row.value) {
  case Value::Integer:
  case Value::Double:
  case Value::Boolean:
    return r.kind == KindOf(row.value);
  case Value::Name:
    return false;
  case Value::Record:
    return r.kind == Kind::Null || (r.kind == Kind::Record && r.typeId == row.argument);
  case Value::Shared:
    return r.kind == Kind::Null;
  case Value::Unsigneds:
  case Value::Doubles:
  case Value::List:
    return r.kind == Kind::Null || (r.kind == Kind::Record && r.collection == row.collection);
  }
  return false;
}

/// The C++ name of a class with another registered name.
std::string CppName(const ClassRow& row) {
  const std::string name = row.name;
  if (name == "gsl_Matrix") return "gsl_PersistentMatrix";
  if (name == "gsl_Vector") return "gsl_PersistentVector";
  if (name == "gsl_PlaneArray") return "omu_xoObjVarray<gsl_Plane>";
  if (name == "gsl_LineArray") return "omu_xoObjVarray<gsl_StLine>";
  if (name == "gsl_DotArray") return "omu_xoObjVarray<gsl_Dot>";
  return name;
}

std::string Documented(const ClassRow& row) {
  return "| `" + CppName(row) + "` | `" + record_text::Hex(row.typeId) + "` | `" + row.name +
         "` | " + std::to_string(row.number) + " | " + std::to_string(row.flags) + " | " +
         (row.hasDtor ? "yes" : "no") + " |\n";
}

/// Returns the name of the records of class `typeId`.
std::string RecordOf(unsigned int typeId) {
  return typeId == 0x030A0001u ? "record of `gsl_Point`" : "record of `gsl_PersistentVector`";
}

std::string Documented(const FieldRow& row) {
  const auto kindAndDefault = [&]() -> std::pair<std::string, std::string> {
    switch (row.value) {
    case Value::Integer:
      return {"integer", "0"};
    case Value::Double:
      return {"double", "0.0"};
    case Value::Boolean:
      return {"boolean", "false"};
    case Value::Name:
      return {"name of the method", "refused"};
    case Value::Record:
      return {RecordOf(row.argument), "zeros, null uid"};
    case Value::Shared:
      return {"shared `gsl_Dot`, or null", "empty end"};
    case Value::Unsigneds:
      return {"list of unsigned integers", "empty list"};
    case Value::Doubles:
      return {"4 by 4 doubles", "those of the identity"};
    case Value::List:
      return {"list of records, or nulls", "no entries"};
    }
    return {};
  }();
  const std::string argument =
      row.argument == 1 ? std::string("1") : record_text::Hex(row.argument);
  return "| `" + std::string(row.name) + "` | " + std::to_string(row.index) + " | " +
         kindAndDefault.first + " | " + std::to_string(row.attributeType) + ", " + argument + ", " +
         std::to_string(row.collection) + " | " + kindAndDefault.second + " |\n";
}

} // namespace

TEST(GslRecordLayout, TheDocumentHasTheseTables) {
  std::ifstream file(RECORD_DOCUMENT);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  std::string classes = "| class | type id | registered as | number | flags | destructor |\n"
                        "|---|---|---|---|---|---|\n";
  for (const ClassRow& row : Rows()) {
    classes += Documented(row);
    std::string fields = "### `" + CppName(row) + "`\n\n" +
                         "| field | handle | kind | registered | missing |\n"
                         "|---|---|---|---|---|\n";
    for (const FieldRow& field : row.fields)
      fields += Documented(field);
    EXPECT_NE(text.find("\n" + fields + "\n"), std::string::npos) << fields;
  }
  EXPECT_NE(text.find("\n" + classes + "\n"), std::string::npos) << classes;
}

TEST(GslRecordLayout, ClassesAreRegisteredAsTabulated) {
  const Started module;
  const cls_ClassRegistrar& registrar =
      omi_Singleton<cls_MetadataRegistrar>::Instance().ClassRegistrar();
  for (const ClassRow& row : Rows()) {
    const cls_ClassMetadata* const registered = registrar.FindClass(row.typeId);
    ASSERT_NE(registered, nullptr) << row.name;
    EXPECT_STREQ(registered->Name(), row.name);
    EXPECT_EQ(registered->Adapter().Number(), row.number) << row.name;
    EXPECT_EQ(registered->Adapter().Argument(), 1u) << row.name;
    EXPECT_EQ(registered->Flags(), row.flags) << row.name;
    EXPECT_EQ(registered->Dtor() != nullptr, row.hasDtor) << row.name;
    EXPECT_TRUE(registered->Bases().empty()) << row.name;
    ASSERT_EQ(registered->Attributes().size(), row.fields.size()) << row.name;
    for (std::size_t i = 0; i < row.fields.size(); ++i) {
      const cls_ClassMetadata::Attribute& attribute = registered->Attributes()[i];
      EXPECT_STREQ(attribute.name, row.fields[i].name) << row.name;
      EXPECT_EQ(attribute.type, row.fields[i].attributeType) << row.name << attribute.name;
      EXPECT_EQ(attribute.argument, row.fields[i].argument) << row.name << attribute.name;
      EXPECT_EQ(attribute.collection, row.fields[i].collection) << row.name << attribute.name;
    }
  }
}

TEST(GslRecordLayout, ClassesAreRegisteredInOrder) {
  const Started module;
  const cls_ClassRegistrar& registrar =
      omi_Singleton<cls_MetadataRegistrar>::Instance().ClassRegistrar();
  std::vector<unsigned int> order;
  for (std::size_t i = 0; i < registrar.ClassCount(); ++i) {
    // Other tests of this program register classes of their own.
    if (registrar.Class(i).TypeId() >> 16 == 778) order.push_back(registrar.Class(i).TypeId());
  }
  ASSERT_EQ(order.size(), Rows().size());
  for (std::size_t i = 0; i < order.size(); ++i)
    EXPECT_EQ(order[i], Rows()[i].typeId);
}

TEST(GslRecordLayout, RegisteredDestructorsDestroyAnInstance) {
  const Started module;
  const cls_ClassRegistrar& registrar =
      omi_Singleton<cls_MetadataRegistrar>::Instance().ClassRegistrar();
  for (std::size_t i = 0; i < Rows().size(); ++i) {
    const cls_ClassMetadata* const registered = registrar.FindClass(Rows()[i].typeId);
    if (registered->Dtor() == nullptr) continue;
    const gsl_RecordStore store = Classes()[i].sample();
    cls_Load load(store);
    void* const object = registered->Adapter().Create(cls_ReadVisitor(load, 0));
    ASSERT_NE(object, nullptr);
    registered->Dtor()(object);
    registered->Dtor()(nullptr);
  }
}

TEST(GslRecordLayout, RecordsAreWrittenInTheOrderOfTheTable) {
  for (std::size_t i = 0; i < Rows().size(); ++i) {
    const ClassRow& row = Rows()[i];
    ASSERT_EQ(Classes()[i].typeId, row.typeId);
    const gsl_RecordStore store = Classes()[i].sample();
    EXPECT_EQ(store.TypeId(store.Root(0)), row.typeId);
    gsl_RecordReader::Position position = store.FirstField(store.Root(0));
    for (const FieldRow& expected : row.fields) {
      ASSERT_NE(position, gsl_RecordReader::kEnd) << row.name << ' ' << expected.name;
      gsl_RecordField field;
      position = store.ReadField(position, field);
      EXPECT_EQ(field.name, expected.name);
      EXPECT_EQ(field.index, expected.index) << expected.name;
      EXPECT_EQ(field.kind, KindOf(expected.value)) << expected.name;
      if (field.kind == Kind::Record || field.kind == Kind::Object) {
        EXPECT_EQ(store.TypeId(field.link), expected.argument) << expected.name;
        EXPECT_EQ(static_cast<int>(store.Collection(field.link)), expected.collection)
            << expected.name;
      }
    }
    EXPECT_EQ(position, gsl_RecordReader::kEnd) << row.name;
  }
}

TEST(GslRecordLayout, EachMissingFieldReadsAsTheDefaultOfItsKind) {
  for (std::size_t i = 0; i < Rows().size(); ++i) {
    const gsl_RecordStore whole = Classes()[i].sample();
    for (const FieldRow& row : Rows()[i].fields) {
      const gsl_RecordStore without = Without(whole, row.name);
      if (row.value == Value::Name) {
        EXPECT_THROW(Classes()[i].readAndWrite(without), omu_ValueErrorException) << row.name;
      } else {
        ExpectDefault(Classes()[i].readAndWrite(without), row);
      }
    }
  }
}

TEST(GslRecordLayout, EachFieldOfEveryOtherKindIsRefusedOrReadAsAbsent) {
  const Started module;
  for (std::size_t i = 0; i < Rows().size(); ++i) {
    const gsl_RecordStore whole = Classes()[i].sample();
    for (const FieldRow& row : Rows()[i].fields) {
      for (const Replacement& r : Replacements()) {
        const gsl_RecordStore edited = Edited(whole, {row.name, r.write});
        const std::string what = std::string(Rows()[i].name) + row.name + " as " + r.what;
        // The empty array is valid except that it is not 4 by 4.
        if (Fits(row, r)) {
          EXPECT_NO_THROW(Classes()[i].readAndWrite(edited)) << what;
        } else {
          EXPECT_THROW(Classes()[i].readAndWrite(edited), nex_CommandException) << what;
        }
      }
    }
  }
}

TEST(GslRecordLayout, FieldsOfUnknownNamesAreIgnored) {
  for (const Class& c : Classes()) {
    const gsl_RecordStore whole = c.sample();
    // Only the methods, which every record needs, come after many other fields.
    const gsl_RecordStore store =
        Recorded(c.typeId, UidOf(whole, whole.Root(0)), [&](const cls_WriteVisitor& to) {
          for (int i = 0; i < 1000; ++i)
            to.WriteInteger({i, "unknown"}, i);
          for (const gsl_RecordField& field : whole.Fields(whole.Root(0))) {
            if (field.kind != Kind::String) continue;
            const std::string name(field.name);
            const std::string text(field.text);
            to.WriteString({field.index, name.c_str()}, text.c_str());
          }
        });
    EXPECT_NO_THROW(c.readAndWrite(store)) << c.typeId;
  }
}

TEST(GslRecordLayout, RecordsFromAnotherEncoderReadAndWriteTheSame) {
  const Started module; // only registered classes have names
  for (std::size_t i = 0; i < Rows().size(); ++i) {
    const std::string path = std::string(RECORD_SEEDS "/") + Rows()[i].name;
    std::ifstream file(path, std::ios::binary);
    const std::vector<unsigned char> bytes{std::istreambuf_iterator<char>(file), {}};
    ASSERT_FALSE(bytes.empty()) << path;
    const gsl_RecordStore store = gsl_RecordStore::FromBytes(bytes.data(), bytes.size());
    EXPECT_EQ(store.ToBytes(), bytes) << path;
    EXPECT_EQ(Classes()[i].readAndWrite(store).ToBytes(), bytes) << path;
  }
}

TEST(GslRecordLayout, EveryRecordReadsBackByteForByte) {
  for (const Class& c : Classes()) {
    const gsl_RecordStore store = c.sample();
    EXPECT_EQ(c.readAndWrite(store).ToBytes(), store.ToBytes()) << c.typeId;
  }
}

namespace {

/// Changes a field as another version of a class might, or as nobody would.
void ChangeSomething(SplitMix& random, RawRecords& records) {
  RawRecord& record = records[random() % records.size()];
  const std::uint64_t what = random() % 8;
  if (what == 0) record.typeId = records[random() % records.size()].typeId;
  if (what == 1) record.serial = random() >> (random() % 64);
  if (record.fields.empty()) return;
  RawField& field = record.fields[random() % record.fields.size()];
  RawField& other = record.fields[random() % record.fields.size()];
  if (what == 2) std::swap(field, other);
  if (what == 3) field.name = other.name;
  if (what == 4) field.name += 'x';
  if (what == 5 && field.kind == gsl_RecordKind::String) field.text = "unknown";
  if (what == 6 && field.kind == gsl_RecordKind::Integer) field.kind = gsl_RecordKind::Double;
  if (what == 7 && field.kind == gsl_RecordKind::Integer) {
    field.integer = static_cast<int>(random() >> (random() % 63));
  }
}

/// What reading makes of the first root: the bytes of the object's record, or the error.
template <class C>
std::string OutcomeOf(const gsl_RecordReader& reader) {
  cls_Load load(reader);
  try {
    const C object{cls_ReadVisitor(load, 0)};
    const std::vector<unsigned char> bytes = Written(object).ToBytes();
    return std::string(bytes.begin(), bytes.end());
  } catch (const nex_Exception& error) {
    return std::string("refused: ") + error.what();
  }
}

/// Reads changed records of a class from a store, whose fields are taken in runs, and through
/// another reader. Returns how many were read and how many were refused.
template <class C>
std::pair<int, int> CompareReaders(SplitMix& random, const C& sample) {
  const RawRecords records = RawCopy(Written(sample));
  std::pair<int, int> counts;
  for (int round = 0; round < Scaled(3000); ++round) {
    RawRecords changed = records;
    for (std::uint64_t changes = random() % 4; changes != 0; --changes)
      ChangeSomething(random, changed);
    const std::vector<unsigned char> bytes = RawBytes(changed);
    const gsl_RecordStore store = gsl_RecordStore::FromBytes(bytes.data(), bytes.size());
    const std::string expected = OutcomeOf<C>(ForwardingReader(store));
    EXPECT_EQ(OutcomeOf<C>(store), expected) << round;
    ++(expected.compare(0, 9, "refused: ") == 0 ? counts.second : counts.first);
  }
  return counts;
}

} // namespace

TEST(GslRecordLayout, FieldsInARunReadAsOneByOne) {
  constexpr std::uint64_t kSeed = 20261125;
  SCOPED_TRACE(kSeed);
  SplitMix random(kSeed);
  int module = 0;
  gsl_initialize(module);
  gsl_Plane plane(gsl_Point(1.0, 2.0, 3.0), gsl_Vector(0.0, 1.0, 0.0));
  plane.ParentIds().Append(7);
  gsl_StLine axis(gsl_Point(1.0, 2.0, 3.0), gsl_Vector(0.0, 1.0, 0.0));
  axis.SetFlip(true);
  const gsl_Segment segment(gsl_Point(1.0, 2.0, 3.0), gsl_Point(4.0, 5.0, 6.0));
  for (const auto& [read, refused] :
       {CompareReaders(random, gsl_Dot(6, 7)), CompareReaders(random, plane),
        CompareReaders(random, axis), CompareReaders(random, segment),
        CompareReaders(random, gsl_BBox()), CompareReaders(random, gsl_PersistentMatrix()),
        CompareReaders(random, gsl_ModelSegment(gsl_Dot(1, 2), gsl_Dot(3, 4)))}) {
    EXPECT_GE(read, Scaled(300));
    EXPECT_GE(refused, Scaled(100));
  }
  gsl_finalize(module);
}
