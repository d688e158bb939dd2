#include "omu_PrimEnum.h"

#include "cls_ReadVisitor.h"
#include "cls_WriteVisitor.h"
#include "gsl_RecordStore.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// An enumeration of a host. Its table repeats a value and a name, and has a row after its end.
enum HostMethod : std::int32_t { HOST_FACE = 40, HOST_TWICE = 7, HOST_AGAIN = 8, HOST_BEHIND = 9 };

template <>
struct omu_PrimEnumTable<HostMethod> {
  static const omu_PrimEnumEntry* Entries() {
    static constexpr omu_PrimEnumEntry rows[] = {{"FROM_FACE", HOST_FACE}, {"FIRST", HOST_TWICE},
                                                 {"SECOND", HOST_TWICE},   {"FIRST", HOST_AGAIN},
                                                 {nullptr, HOST_BEHIND},   {"BEHIND", HOST_BEHIND}};
    return rows;
  }
};

namespace {

using Host = omu_PrimEnum<HostMethod, 1>;

using Dot = omu_PrimEnum<gsl_DotMethod, 1>;
using Dir = omu_PrimEnum<gsl_DirMethod, 1>;
using Line = omu_PrimEnum<gsl_LineMethod, 1>;

using Names = std::vector<std::pair<std::string, int>>;

// These rows are typed by hand and not copied from the tables under test.
const Names kDotNames = {{"gsl_FROM_POINT", 0},
                         {"gsl_FROM_VERTEX", 1},
                         {"gsl_FROM_DATUM_POINT", 2},
                         {"gsl_FROM_EDGE_PARAM", 3},
                         {"gsl_FROM_FACE_DIM", 4},
                         {"gsl_FROM_EDGE_VTX", 5},
                         {"gsl_FROM_FACE_VTX", 6},
                         {"gsl_FROM_IP_VTX_ONTO_EDGE", 7},
                         {"gsl_FROM_IP_CENTER_OF_EDGE", 8},
                         {"gsl_FROM_IP_MIDPT_OF_EDGE", 9},
                         {"gsl_FROM_NODE", 10},
                         {"gsl_DOT_INVALID", 11},
                         {"gsl_FROM_DATUM_CSYS_ORIGIN", 12}};
const Names kDirNames = {{"FROM_POINT_VECTOR", 0},
                         {"FROM_FACE", 1},
                         {"FROM_DATUM_PLANE", 2},
                         {"FROM_ELEM_FACE", 3},
                         {"PLANE_INVALID", 4}};
const Names kLineNames = {{"FROM_PNT_VECTOR", 0}, {"FROM_EDGE", 1},      {"FROM_REVFACE", 2},
                          {"FROM_DATUM_AXIS", 3}, {"FROM_ELEM_EDGE", 4}, {"FROM_PNT_PNT", 5},
                          {"STLINE_INVALID", 6},  {"FROM_DATUM_CSYS", 7}};
const std::string kPermissibleDir =
    "FROM_POINT_VECTOR, FROM_FACE, FROM_DATUM_PLANE, FROM_ELEM_FACE, PLANE_INVALID";

template <class Prim, class E>
void ExpectTable(const Names& names) {
  int index = 0;
  for (const auto& [name, value] : names) {
    const Prim byValue(static_cast<E>(value));
    EXPECT_EQ(byValue.AsString(), cow_String(name.c_str()));
    EXPECT_EQ(byValue.GetValue(), value);
    const Prim byName{cow_String(name.c_str())};
    EXPECT_EQ(byName.GetValue(), value);
    EXPECT_STREQ(byName.GetString().CStr(), name.c_str());
    EXPECT_EQ(Prim::Value(index++), static_cast<E>(value));
  }
  Names listed;
  const cow_Map<cow_String, unsigned int> permissible = Prim(E(0)).PermissibleValues();
  for (const auto& [name, value] : permissible)
    listed.emplace_back(name.CStr(), static_cast<int>(value));
  EXPECT_EQ(listed, names);
}

/// Runs `construct`, which must throw, and returns the exception.
template <class Construct>
omu_ValueErrorException Thrown(Construct construct) {
  try {
    construct();
  } catch (const omu_ValueErrorException& e) {
    return e;
  }
  ADD_FAILURE() << "nothing was thrown";
  return omu_ValueErrorException("nothing");
}

void ExpectError(const omu_ValueErrorException& e, const std::string& message, int line) {
  EXPECT_STREQ(e.Message().CStr(), message.c_str());
  EXPECT_STREQ(e.SourceName().CStr(), "generated/include/omu_PrimEnum");
  EXPECT_EQ(e.LineNumber(), line);
  EXPECT_TRUE(e.Uid().IsNull());
}

/// A store whose root is the record of a primitive with that name.
gsl_RecordStore StoreWithName(const char* name) {
  gsl_RecordStore store;
  cls_Save save(store);
  const cls_WriteVisitor visitor(save);
  visitor.StartWrite(1, cls_Uid());
  if (name != nullptr) visitor.WriteString(cls_FieldHandle(-1, "_string"), name);
  return store;
}

template <class Prim>
Prim Read(const gsl_RecordStore& store) {
  cls_Load load(store);
  return Prim(cls_ReadVisitor(load, 0));
}

class Translation {
public:
  Translation(const char* key, const char* text) : format(key) { atr_SetTranslation(key, text); }
  ~Translation() { atr_SetTranslation(format, nullptr); }

private:
  const char* format;
};

} // namespace

TEST(OmuPrimEnum, DotMethodTable) {
  ExpectTable<Dot, gsl_DotMethod>(kDotNames);
}

TEST(OmuPrimEnum, DirMethodTable) {
  ExpectTable<Dir, gsl_DirMethod>(kDirNames);
}

TEST(OmuPrimEnum, LineMethodTable) {
  ExpectTable<Line, gsl_LineMethod>(kLineNames);
}

TEST(OmuPrimEnum, DotNamesAloneCarryThePrefix) {
  for (const auto& name : kDotNames)
    EXPECT_EQ(name.first.rfind("gsl_", 0), 0u);
  EXPECT_THROW(Dot(cow_String("FROM_POINT")), omu_ValueErrorException);
  EXPECT_THROW(Dir(cow_String("gsl_FROM_POINT_VECTOR")), omu_ValueErrorException);
}

TEST(OmuPrimEnum, ValuesFollowTheInvalidMarker) {
  EXPECT_EQ(Dot(cow_String("gsl_DOT_INVALID")).GetValue(), 11);
  EXPECT_EQ(Dot::Value(12), gsl_FROM_DATUM_CSYS_ORIGIN);
  EXPECT_EQ(Line(cow_String("STLINE_INVALID")).GetValue(), 6);
  EXPECT_EQ(Line::Value(7), FROM_DATUM_CSYS);
}

TEST(OmuPrimEnum, FirstValueIsZero) {
  EXPECT_EQ(static_cast<int>(Dot::Value(0)), 0);
  EXPECT_EQ(static_cast<int>(Dir::Value(0)), 0);
  EXPECT_EQ(static_cast<int>(Line::Value(0)), 0);
}

TEST(OmuPrimEnum, AddsNoDataToItsBase) {
  EXPECT_EQ(sizeof(Dot), sizeof(omu_PrimEnumBase));
  EXPECT_EQ(sizeof(gsl_DotMethod), 4u);
  EXPECT_EQ(sizeof(gsl_DirMethod), 4u);
  EXPECT_EQ(sizeof(gsl_LineMethod), 4u);
}

TEST(OmuPrimEnum, LookupsTakeTheFirstMatchAndEndAtTheNullRow) {
  EXPECT_EQ(Host(HOST_TWICE).AsString(), cow_String("FIRST"));
  EXPECT_EQ(Host(cow_String("FIRST")).GetValue(), HOST_TWICE);
  // The value of the null row is not a valid value, and nothing after the null row is a row.
  EXPECT_EQ(Host(cow_String("SECOND")).GetValue(), HOST_TWICE);
  EXPECT_THROW(Host(cow_String("BEHIND")), omu_ValueErrorException);
  Host prim(HOST_FACE);
  EXPECT_FALSE(prim.SetValue(HOST_BEHIND));
  EXPECT_EQ(prim.AsString(), cow_String("FROM_FACE"));
}

TEST(OmuPrimEnum, UnknownValueThrowsWithValueAndPermissibleNames) {
  EXPECT_EQ(Dot(gsl_DotMethod(12)).AsString(), cow_String("gsl_FROM_DATUM_CSYS_ORIGIN"));
  const auto e = Thrown([] { Dot bad(gsl_DotMethod(13)); });
  std::string names;
  for (const auto& name : kDotNames)
    names += (names.empty() ? "" : ", ") + name.first;
  ExpectError(e, "omu_PrimEnum(Enum) - Enum value not allowed: 13  Permissible: " + names, 54);
}

TEST(OmuPrimEnum, NegativeValueIsWrittenAsAnInteger) {
  ExpectError(Thrown([] { Dir bad(gsl_DirMethod(-7)); }),
              "omu_PrimEnum(Enum) - Enum value not allowed: -7  Permissible: " + kPermissibleDir,
              54);
}

TEST(OmuPrimEnum, ThrownAsCommandExceptionOfTheHostFamily) {
  EXPECT_THROW(Dot(gsl_DotMethod(13)), nex_CommandException);
  EXPECT_THROW(Dot(gsl_DotMethod(13)), nex_Exception);
}

TEST(OmuPrimEnum, UnknownTextThrowsWithTextAndPermissibleNames) {
  ExpectError(Thrown([] { Dir bad(cow_String("FROM_POINT")); }),
              "omu_PrimEnum(const cow_String&) - str not allowed: FROM_POINT  Permissible: " +
                  kPermissibleDir,
              81);
  // The names of another table are not valid either.
  EXPECT_THROW(Dir(cow_String("gsl_FROM_POINT")), omu_ValueErrorException);
  EXPECT_THROW(Dot(cow_String("FROM_POINT")), omu_ValueErrorException);
}

TEST(OmuPrimEnum, EmptyTextThrowsWithEmptyArgument) {
  ExpectError(
      Thrown([] { Dir bad{cow_String()}; }),
      "omu_PrimEnum(const cow_String&) - str not allowed:   Permissible: " + kPermissibleDir, 81);
}

TEST(OmuPrimEnum, TextMatchesInFullLengthAndCase) {
  for (const char* text : {"from_face", "FROM_FACE ", " FROM_FACE", "FROM_FAC", "FROM_FACES"})
    EXPECT_THROW(Dir{cow_String(text)}, omu_ValueErrorException) << text;
  EXPECT_THROW(Dir{cow_String("FROM_FACE\0x", 11)}, omu_ValueErrorException);
}

TEST(OmuPrimEnum, FromAnotherPrimitiveGoesByItsName) {
  const Line line(FROM_PNT_PNT);
  const omu_PrimEnumBase& base = line;
  EXPECT_EQ(Line(base).GetValue(), FROM_PNT_PNT);
  // The enumeration and the value differ: the name alone counts.
  EXPECT_EQ(Dir(Host(HOST_FACE)).GetValue(), FROM_FACE);
}

TEST(OmuPrimEnum, ForeignPrimitiveThrowsWithoutPermissibleNames) {
  ExpectError(Thrown([] { Dir bad{static_cast<const omu_PrimEnumBase&>(Line(FROM_PNT_PNT))}; }),
              "omu_PrimEnum(const omu_PrimEnumBase&) - str not allowed: FROM_PNT_PNT", 67);
}

TEST(OmuPrimEnum, ReadsItsNameFromARecord) {
  EXPECT_EQ(Read<Line>(StoreWithName("FROM_DATUM_CSYS")).GetValue(), 7);
}

TEST(OmuPrimEnum, WrittenPrimitiveReadsBack) {
  gsl_RecordStore store;
  {
    cls_Save save(store);
    Dot(gsl_FROM_NODE).DBWrite(cls_WriteVisitor(save));
  }
  EXPECT_TRUE(Read<Dot>(store) == Dot(gsl_FROM_NODE));
}

TEST(OmuPrimEnum, RecordWithUnknownNameThrows) {
  const gsl_RecordStore store = StoreWithName("FROM_NOWHERE");
  ExpectError(
      Thrown([&] { Read<Dir>(store); }),
      "omu_PrimEnum(const cls_ReadVisitor&) - str not allowed: FROM_NOWHERE  Permissible: " +
          kPermissibleDir,
      95);
}

TEST(OmuPrimEnum, RecordWithoutNameThrowsWithEmptyArgument) {
  const gsl_RecordStore store = StoreWithName(nullptr);
  ExpectError(Thrown([&] { Read<Dir>(store); }),
              "omu_PrimEnum(const cls_ReadVisitor&) - str not allowed:   Permissible: " +
                  kPermissibleDir,
              95);
}

TEST(OmuPrimEnum, SetValueRejectsUnknownValueAndKeepsState) {
  Dir prim(FROM_DATUM_PLANE);
  EXPECT_FALSE(prim.SetValue(gsl_DirMethod(5)));
  EXPECT_EQ(prim.GetValue(), 2);
  EXPECT_EQ(prim.AsString(), cow_String("FROM_DATUM_PLANE"));
  EXPECT_TRUE(prim.SetValue(PLANE_INVALID));
  EXPECT_EQ(prim.GetValue(), 4);
  EXPECT_EQ(prim.AsString(), cow_String("PLANE_INVALID"));
}

TEST(OmuPrimEnum, CopyHasTheSameTypeAndValue) {
  const Dot prim(gsl_FROM_EDGE_VTX);
  const std::unique_ptr<omu_Primitive> copy(prim.Copy());
  ASSERT_NE(dynamic_cast<Dot*>(copy.get()), nullptr);
  EXPECT_TRUE(*copy == prim);
  EXPECT_EQ(dynamic_cast<Dot&>(*copy).GetValue(), 5);
}

TEST(OmuPrimEnum, EqualityComparesNameAndValue) {
  const Dir face(FROM_FACE);
  EXPECT_TRUE(face == static_cast<const omu_Primitive&>(Dir(FROM_FACE)));
  EXPECT_FALSE(face == static_cast<const omu_Primitive&>(Dir(FROM_ELEM_FACE)));
  // This is the same number under another name.
  EXPECT_FALSE(face == static_cast<const omu_Primitive&>(Line(FROM_EDGE)));
}

TEST(OmuPrimEnum, PermissibleValuesAreListedInTableOrder) {
  EXPECT_EQ(Dir(FROM_FACE).PermissibleValuesAsString(), cow_String(kPermissibleDir.c_str()));
}

TEST(OmuPrimEnum, PercentSignsInArgumentsAreNotSubstituted) {
  ExpectError(Thrown([] { Dir bad(cow_String("%s %d %2$s %%")); }),
              "omu_PrimEnum(const cow_String&) - str not allowed: %s %d %2$s %%  Permissible: " +
                  kPermissibleDir,
              81);
}

TEST(OmuPrimEnum, TranslatedFormatMayReorderItsArguments) {
  const Translation german("omu_PrimEnum(const cow_String&) - str not allowed: %s  Permissible: %s",
                           "Erlaubt: %2$s; nicht erlaubt: %1$s");
  ExpectError(Thrown([] { Dir bad(cow_String("%2$s")); }),
              "Erlaubt: " + kPermissibleDir + "; nicht erlaubt: %2$s", 81);
}

TEST(OmuPrimEnum, MessageOfValueAndText) {
  EXPECT_STREQ((atr<gsl_DotMethod, const char*>("value %d of %s", gsl_FROM_NODE, "%d").CStr()),
               "value 10 of %d");
}
