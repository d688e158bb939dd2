#include "omu_TypeDescription.h"

#include "ScriptObjects.h"
#include "nex_AssertException.h"

#include <gtest/gtest.h>

namespace {

const omu_MethodEntry kNoMethods[] = {{nullptr, nullptr, 0, 0}};

TEST(OmuTypeDescription, TypeIsKnownFromItsFirstObjectOnAndNeverForgotten) {
  EXPECT_EQ(omu_TypeDescription::Find("NeverMade"), nullptr);
  const omu_TypeDescription* type = nullptr;
  {
    const Gauge gauge{omu_Shortcut()};
    type = omu_TypeDescription::Find("Gauge");
    ASSERT_NE(type, nullptr);
  }
  EXPECT_EQ(omu_TypeDescription::Find("Gauge"), type);
  EXPECT_STREQ(type->Name(), "Gauge");
}

TEST(OmuTypeDescription, FindIsByExactName) {
  const Gauge gauge{omu_Shortcut()};
  EXPECT_EQ(omu_TypeDescription::Find("gauge"), nullptr);
  EXPECT_EQ(omu_TypeDescription::Find("Gauge "), nullptr);
  EXPECT_EQ(omu_TypeDescription::Find(""), nullptr);
}

TEST(OmuTypeDescription, SameTablesAgainChangeNothing) {
  const omu_TypeDescription description("Twice", kNoMethods, nullptr, nullptr, nullptr);
  const omu_TypeDescription& first = omu_TypeDescription::Enter(description);
  EXPECT_EQ(&omu_TypeDescription::Enter(description), &first);
  EXPECT_EQ(omu_TypeDescription::Find("Twice"), &first);
}

TEST(OmuTypeDescription, OtherTablesUnderAKnownNameAreRefused) {
  omu_TypeDescription::Enter({"Clash", kNoMethods, nullptr, nullptr, nullptr});
  static const omu_MethodEntry other[] = {{nullptr, nullptr, 0, 0}};
  try {
    omu_TypeDescription::Enter({"Clash", other, nullptr, nullptr, nullptr});
    FAIL() << "nothing was thrown";
  } catch (const nex_AssertException& e) {
    EXPECT_STREQ(e.what(), "type 'Clash' is described twice, with different tables");
  }
  static const omu_MemberEntry members[] = {{nullptr, nullptr, nullptr, nullptr}};
  static const omu_DeprecatedEntry deprecated[] = {{nullptr}};
  EXPECT_THROW(omu_TypeDescription::Enter({"Clash", kNoMethods, members, nullptr, nullptr}),
               nex_AssertException);
  EXPECT_THROW(omu_TypeDescription::Enter({"Clash", kNoMethods, nullptr, deprecated, nullptr}),
               nex_AssertException);
  EXPECT_THROW(omu_TypeDescription::Enter({"Clash", kNoMethods, nullptr, nullptr, deprecated}),
               nex_AssertException);
}

TEST(OmuTypeDescription, NullTablesAreEmpty) {
  const omu_TypeDescription& type =
      omu_TypeDescription::Enter({"Bare", nullptr, nullptr, nullptr, nullptr});
  EXPECT_TRUE(type.MethodNames().empty());
  EXPECT_TRUE(type.MemberNames().empty());
  EXPECT_EQ(type.FindMethod("reset"), nullptr);
  EXPECT_EQ(type.FindMember("level"), nullptr);
}

TEST(OmuTypeDescription, EntriesAreFoundByName) {
  const Gauge gauge{omu_Shortcut()};
  const omu_TypeDescription* const type = omu_TypeDescription::Find("Gauge");
  ASSERT_NE(type, nullptr);
  EXPECT_EQ(type->FindMethod("raise"), &Gauge::methods[1]);
  EXPECT_EQ(type->FindMethod("increase"), &Gauge::methods[2]);
  EXPECT_EQ(type->FindMember("label"), &Gauge::members[2]);
  EXPECT_EQ(type->FindMember("raise"), nullptr);
}

} // namespace
