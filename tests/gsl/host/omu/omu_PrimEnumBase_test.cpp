#include "omu_PrimEnumBase.h"

#include "HostObjects.h"
#include "Records.h"
#include "omu_PrimTuple.h"

#include <gtest/gtest.h>

namespace {

/// An enumeration of two names; the base alone is under test.
class Switch : public omu_PrimEnumBase {
public:
  Switch() = default;
  Switch(int value, const char* name) { Set(value, name); }
  explicit Switch(const cls_ReadVisitor& visitor) : omu_PrimEnumBase(visitor) {}

  Switch* Copy() const override { return new Switch(*this); }
  cow_Map<cow_String, unsigned int> PermissibleValues() const override {
    cow_Map<cow_String, unsigned int> values;
    values.Insert("on", 1);
    values.Insert("off", 0);
    return values;
  }
};

} // namespace

TEST(OmuPrimEnumBase, IsZeroWithoutANameUntilItIsSet) {
  EXPECT_EQ(Switch().GetValue(), 0);
  EXPECT_TRUE(Switch().AsString().IsEmpty());
  const Switch on(1, "on");
  EXPECT_EQ(on.GetValue(), 1);
  EXPECT_EQ(on.AsString(), cow_String("on"));
}

TEST(OmuPrimEnumBase, ListsItsNamesInTheOrderOfTheTable) {
  EXPECT_EQ(Switch().PermissibleValuesAsString(), cow_String("on, off"));
}

TEST(OmuPrimEnumBase, ComparesNameAndValue) {
  const Switch on(1, "on");
  EXPECT_TRUE(on == Switch(1, "on"));
  EXPECT_FALSE(on == Switch(1, "off"));
  EXPECT_FALSE(on == Switch(0, "on"));
  EXPECT_FALSE(on == omu_PrimTuple());
}

TEST(OmuPrimEnumBase, RecordHoldsTheNameAlone) {
  const gsl_RecordStore store = Written(Switch(1, "on"));
  const std::vector<gsl_RecordField> fields = [&] {
    std::vector<gsl_RecordField> found;
    for (const gsl_RecordField& field : store.Fields(store.Root(0)))
      found.push_back(field);
    return found;
  }();
  ASSERT_EQ(fields.size(), 1u);
  EXPECT_EQ(fields[0].name, "_string");
  EXPECT_EQ(fields[0].text, "on");
  const Switch read = ReadBack<Switch>(store);
  EXPECT_EQ(read.AsString(), cow_String("on"));
  EXPECT_EQ(read.GetValue(), 0);
}

TEST(OmuPrimEnumBase, SharedObjectIsWrittenOnce) {
  const auto shared = TestHolder<Switch>::Adopt(new Switch(1, "on"));
  const gsl_RecordStore store = Recorded(1, cls_Uid(), [&](const cls_WriteVisitor& to) {
    shared.Get()->DBWrite(cls_WriteVisitor(to, {-1, "first"}, shared));
    shared.Get()->DBWrite(cls_WriteVisitor(to, {-1, "second"}, shared));
  });
  EXPECT_EQ(TextOf(store), "0x00000001\n"
                           "  -1 first object 0x00450001\n"
                           "    -1 _string string on\n"
                           "  -1 second reference 0x00450001\n");
}
