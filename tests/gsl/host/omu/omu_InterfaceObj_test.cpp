#include "omu_InterfaceObj.h"

#include "ScriptObjects.h"
#include "VirtualSlot.h"
#include "atr_String.h"
#include "cls_WriteVisitor.h"
#include "gsl_RecordStore.h"
#include "nex_CommandException.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace {

const cow_String kPath = "panel.gauges[2]";

double NumberOf(omu_Primitive* primitive) {
  const std::unique_ptr<omu_Primitive> owned(primitive);
  return dynamic_cast<const omu_PrimTuple&>(*owned).Number(0);
}

omu_PrimTuple Arguments(int count) {
  omu_PrimTuple arguments;
  for (int i = 0; i < count; ++i)
    arguments.Put(1.5);
  return arguments;
}

std::string MessageOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const nex_CommandException& e) {
    EXPECT_FALSE(e.SourceName().IsEmpty());
    EXPECT_GT(e.LineNumber(), 0);
    return e.what();
  }
  return "nothing was thrown";
}

std::vector<std::string> Names(const std::vector<cow_String>& names) {
  std::vector<std::string> result;
  for (const cow_String& name : names)
    result.emplace_back(name.CStr());
  return result;
}

using Strings = std::vector<std::string>;

TEST(OmuInterfaceObj, CallsMethodsByName) {
  Gauge gauge(omu_Shortcut(kPath), 2.0);
  EXPECT_EQ(NumberOf(gauge.CallMethod("raise", Arguments(2))), 5.0);
  EXPECT_EQ(gauge.CallMethod("reset", Arguments(0)), nullptr);
  EXPECT_EQ(gauge.level, 0.0);
}

TEST(OmuInterfaceObj, DeprecatedNamesWorkAndAreNotListed) {
  Gauge gauge{omu_Shortcut(kPath)};
  EXPECT_EQ(NumberOf(gauge.CallMethod("increase", Arguments(1))), 1.5);
  EXPECT_TRUE(gauge.IsMethod("increase"));
  EXPECT_EQ(Names(gauge.MethodList()), (Strings{"reset", "raise"}));
  EXPECT_EQ(NumberOf(gauge.GetMember("height")), 1.5);
  EXPECT_EQ(Names(gauge.MemberList()), (Strings{"level", "unit", "label"}));
}

TEST(OmuInterfaceObj, QueriesLeaveTheExcludedMembersOut) {
  const Gauge gauge{omu_Shortcut(kPath)};
  EXPECT_EQ(Names(gauge.MemberListForQry()), (Strings{"level", "label"}));
  const Anonymous anonymous{omu_Shortcut()};
  EXPECT_TRUE(anonymous.MemberExcludeListForQry().empty());
}

TEST(OmuInterfaceObj, UnknownMethodNamesTypeAndMethod) {
  Gauge gauge{omu_Shortcut(kPath)};
  EXPECT_EQ(MessageOf([&] { return gauge.CallMethod("explode", Arguments(0)); }),
            "'Gauge' object has no method 'explode'");
  EXPECT_EQ(MessageOf([&] { return gauge.CallMethod("Reset", Arguments(0)); }),
            "'Gauge' object has no method 'Reset'");
  EXPECT_EQ(MessageOf([&] { return gauge.CallMethod("", Arguments(0)); }),
            "'Gauge' object has no method ''");
}

TEST(OmuInterfaceObj, NameOfAMethodIsNeverTakenForAFormat) {
  Gauge gauge{omu_Shortcut(kPath)};
  EXPECT_EQ(MessageOf([&] { return gauge.CallMethod("%s%d%n", Arguments(0)); }),
            "'Gauge' object has no method '%s%d%n'");
}

TEST(OmuInterfaceObj, WrongNumberOfArgumentsNamesTheRightNumber) {
  Gauge gauge{omu_Shortcut(kPath)};
  EXPECT_EQ(MessageOf([&] { return gauge.CallMethod("reset", Arguments(1)); }),
            "Gauge.reset takes no arguments (1 given)");
  EXPECT_EQ(MessageOf([&] { return gauge.CallMethod("raise", Arguments(0)); }),
            "Gauge.raise takes 1 to 3 arguments (0 given)");
  EXPECT_EQ(MessageOf([&] { return gauge.CallMethod("raise", Arguments(4)); }),
            "Gauge.raise takes 1 to 3 arguments (4 given)");
  EXPECT_EQ(gauge.level, 0.0);
  EXPECT_EQ(NumberOf(gauge.CallMethod("raise", Arguments(3))), 4.5);
}

TEST(OmuInterfaceObj, MessagesAreTranslated) {
  Gauge gauge{omu_Shortcut(kPath)};
  atr_SetTranslation("'%s' object has no method '%s'", "no %2$s on a %1$s");
  EXPECT_EQ(MessageOf([&] { return gauge.CallMethod("explode", Arguments(0)); }),
            "no explode on a Gauge");
  atr_SetTranslation("'%s' object has no method '%s'", nullptr);
}

TEST(OmuInterfaceObj, MembersAreReadChangedAndDeletedByName) {
  Gauge gauge(omu_Shortcut(kPath), 2.0);
  EXPECT_EQ(NumberOf(gauge.GetMember("level")), 2.0);
  omu_PrimTuple value;
  value.Put(7.0);
  gauge.SetMember("level", value);
  EXPECT_EQ(gauge.level, 7.0);
  gauge.DeleteMember("label");
  EXPECT_FALSE(gauge.labelled);
}

TEST(OmuInterfaceObj, MembersThatCannotBeChangedOrDeletedSaySo) {
  Gauge gauge{omu_Shortcut(kPath)};
  EXPECT_EQ(MessageOf([&] { return gauge.SetMember("unit", Arguments(1)); }),
            "member 'unit' of 'Gauge' objects cannot be changed");
  EXPECT_EQ(MessageOf([&] { return gauge.DeleteMember("unit"); }),
            "member 'unit' of 'Gauge' objects cannot be deleted");
}

TEST(OmuInterfaceObj, UnknownMemberNamesTypeAndMember) {
  Gauge gauge{omu_Shortcut(kPath)};
  const std::string expected = "'Gauge' object has no member 'colour'";
  EXPECT_EQ(MessageOf([&] { return gauge.GetMember("colour"); }), expected);
  EXPECT_EQ(MessageOf([&] { return gauge.SetMember("colour", Arguments(1)); }), expected);
  EXPECT_EQ(MessageOf([&] { return gauge.DeleteMember("colour"); }), expected);
}

TEST(OmuInterfaceObj, StaleObjectRefusesEverythingBeforeItLooksAtNames) {
  Gauge gauge{omu_Shortcut(kPath)};
  EXPECT_FALSE(gauge.IsStale());
  gauge.SetStale();
  EXPECT_TRUE(gauge.IsStale());
  const std::string expected =
      "<Gauge object at panel.gauges[2]> is stale: what it stood for is gone";
  EXPECT_EQ(MessageOf([&] { return gauge.CallMethod("explode", Arguments(0)); }), expected);
  EXPECT_EQ(MessageOf([&] { return gauge.GetMember("level"); }), expected);
  EXPECT_EQ(MessageOf([&] { return gauge.SetMember("level", Arguments(1)); }), expected);
  EXPECT_EQ(MessageOf([&] { return gauge.DeleteMember("label"); }), expected);
  // The type and the text can still be read.
  EXPECT_EQ(gauge.TypeString(), cow_String("Gauge"));
  EXPECT_EQ(gauge.MethodList().size(), 2u);
}

TEST(OmuInterfaceObj, ExpiredShortcutMakesEveryObjectOfItStale) {
  omu_Shortcut shortcut(kPath);
  const Gauge gauge(shortcut);
  const Gauge copy(gauge);
  shortcut.Expire();
  EXPECT_TRUE(gauge.IsStale());
  EXPECT_TRUE(copy.IsStale());
}

TEST(OmuInterfaceObj, StalenessIsCopiedButNotShared) {
  Gauge gauge{omu_Shortcut(kPath)};
  const Gauge before(gauge);
  gauge.SetStale();
  EXPECT_FALSE(before.IsStale());
  EXPECT_TRUE(Gauge(gauge).IsStale());
}

TEST(OmuInterfaceObj, TextsShowTypeAndPath) {
  const Gauge gauge{omu_Shortcut(kPath)};
  EXPECT_STREQ(gauge.TypeString().CStr(), "Gauge");
  EXPECT_STREQ(gauge.AsString().CStr(), "<Gauge object at panel.gauges[2]>");
  EXPECT_STREQ(gauge.AsRepr().CStr(), "panel.gauges[2]");
  EXPECT_STREQ(gauge.FullRepr().CStr(), "<Gauge object at panel.gauges[2]>\n"
                                        "  members: level, unit, label\n"
                                        "  methods: reset, raise");
  EXPECT_STREQ(gauge.JournalVariable().CStr(), "gauge");
  EXPECT_STREQ(gauge.CommandPath().CStr(), "panel.gauges[2]");
}

TEST(OmuInterfaceObj, TextsOfAnObjectWithoutPathOrDescription) {
  const Anonymous object{omu_Shortcut()};
  EXPECT_STREQ(object.TypeString().CStr(), "object");
  EXPECT_STREQ(object.AsString().CStr(), "<object object>");
  EXPECT_STREQ(object.AsRepr().CStr(), "<object object>");
  EXPECT_STREQ(object.FullRepr().CStr(), "<object object>");
  EXPECT_TRUE(object.CommandPath().IsEmpty());
  EXPECT_FALSE(object.IsMethod("reset"));
  EXPECT_TRUE(object.MethodList().empty());
  EXPECT_TRUE(object.MemberList().empty());
}

TEST(OmuInterfaceObj, UndescribedObjectHasNoMethodsAndNoMembers) {
  Anonymous object{omu_Shortcut()};
  EXPECT_EQ(MessageOf([&] { return object.CallMethod("reset", Arguments(0)); }),
            "'object' object has no method 'reset'");
  EXPECT_EQ(MessageOf([&] { return object.GetMember("level"); }),
            "'object' object has no member 'level'");
}

TEST(OmuInterfaceObj, EqualityIsTypeAndShortcut) {
  const omu_Shortcut shortcut(kPath);
  const Gauge gauge(shortcut);
  const Gauge same(shortcut, 9.0);
  const Gauge other{omu_Shortcut(kPath)};
  const Anonymous otherType(shortcut);
  EXPECT_TRUE(gauge == gauge);
  EXPECT_TRUE(gauge == same);
  EXPECT_FALSE(gauge == other);
  EXPECT_FALSE(gauge == otherType);
  const Gauge nowhere{omu_Shortcut()};
  const Gauge nowhereElse{omu_Shortcut()};
  EXPECT_TRUE(nowhere == nowhere);
  EXPECT_FALSE(nowhere == nowhereElse);
}

TEST(OmuInterfaceObj, CompareOrdersByTypeThenPathThenObject) {
  const omu_Shortcut shortcut("b");
  const Gauge b(shortcut);
  const Gauge sameB(shortcut);
  const Gauge otherB{omu_Shortcut("b")};
  const Gauge a{omu_Shortcut("a")};
  const Anonymous object{omu_Shortcut("a")};
  EXPECT_EQ(b.Compare(b), 0);
  EXPECT_EQ(b.Compare(sameB), 0);
  EXPECT_EQ(a.Compare(b), -1);
  EXPECT_EQ(b.Compare(a), 1);
  // The path decides, whatever the addresses of the objects are.
  const Gauge rising[] = {Gauge{omu_Shortcut("a")}, Gauge{omu_Shortcut("b")}};
  const Gauge falling[] = {Gauge{omu_Shortcut("b")}, Gauge{omu_Shortcut("a")}};
  EXPECT_EQ(rising[0].Compare(rising[1]), -1);
  EXPECT_EQ(falling[0].Compare(falling[1]), 1);
  EXPECT_EQ(b.Compare(object), -1);
  EXPECT_EQ(object.Compare(b), 1);
  EXPECT_NE(b.Compare(otherB), 0);
  EXPECT_EQ(b.Compare(otherB), -otherB.Compare(b));
  EXPECT_EQ(b.ComparePath(otherB), 0);
  EXPECT_EQ(a.ComparePath(b), -1);
  EXPECT_EQ(b.ComparePath(a), 1);
}

TEST(OmuInterfaceObj, CoerceCopiesAnObjectOfTheSameType) {
  const Gauge gauge(omu_Shortcut(kPath), 1.0);
  const Gauge other(omu_Shortcut(kPath), 2.0);
  const Anonymous object{omu_Shortcut()};
  const std::unique_ptr<omu_InterfaceObj> coerced(gauge.Coerce(other));
  ASSERT_NE(coerced, nullptr);
  EXPECT_EQ(dynamic_cast<const Gauge&>(*coerced).level, 2.0);
  EXPECT_EQ(gauge.Coerce(object), nullptr);
}

TEST(OmuInterfaceObj, CastCopiesToItsOwnTypeOnly) {
  const Gauge gauge(omu_Shortcut(kPath), 1.0);
  const std::unique_ptr<omu_InterfaceObj> cast(gauge.Cast("Gauge"));
  EXPECT_EQ(dynamic_cast<const Gauge&>(*cast).level, 1.0);
  EXPECT_EQ(MessageOf([&] { return gauge.Cast("Transform"); }),
            "'Gauge' object cannot become a 'Transform'");
}

TEST(OmuInterfaceObj, ArithmeticIsRefusedByDefault) {
  const Gauge gauge{omu_Shortcut(kPath)};
  EXPECT_EQ(MessageOf([&] { return gauge.Absolute(); }), "'Gauge' objects do not support abs()");
  EXPECT_EQ(MessageOf([&] { return gauge.AddOperation(gauge); }),
            "'Gauge' objects do not support +");
  EXPECT_EQ(MessageOf([&] { return gauge.SubOperation(gauge); }),
            "'Gauge' objects do not support -");
  EXPECT_EQ(MessageOf([&] { return gauge.MulOperation(gauge); }),
            "'Gauge' objects do not support *");
  EXPECT_EQ(MessageOf([&] { return gauge.DivOperation(gauge); }),
            "'Gauge' objects do not support /");
  EXPECT_EQ(MessageOf([&] { return gauge.UnaryNegative(); }),
            "'Gauge' objects do not support unary -");
}

TEST(OmuInterfaceObj, IsTrueIsNotStoredAndWrapsItself) {
  const Gauge gauge{omu_Shortcut(kPath)};
  EXPECT_TRUE(gauge.NonZero());
  EXPECT_EQ(gauge.DynTypeId(), 0u);
  EXPECT_EQ(gauge.ConstGetWrapper(), &gauge);
}

TEST(OmuInterfaceObj, WritesNoRecord) {
  gsl_RecordStore store;
  cls_Save save(store);
  const cls_WriteVisitor visitor(save);
  Gauge(omu_Shortcut(kPath)).DBWrite(visitor);
  EXPECT_EQ(store.RootCount(), 0u);
}

TEST(OmuInterfaceObj, ReturnsItsShortcut) {
  const omu_Shortcut shortcut(kPath);
  const Gauge gauge(shortcut);
  EXPECT_TRUE(gauge.BaseShortcut().SharesWith(shortcut));
  ASSERT_NE(gauge.BaseShortcutGetABC(), nullptr);
  EXPECT_TRUE(gauge.BaseShortcutGetABC()->SharesWith(shortcut));
  EXPECT_EQ(Gauge(omu_Shortcut()).BaseShortcutGetABC(), nullptr);
}

TEST(OmuInterfaceObj, AssignmentTakesShortcutAndStaleness) {
  Gauge gauge{omu_Shortcut(kPath)};
  gauge.SetStale();
  Gauge other{omu_Shortcut()};
  other = gauge;
  EXPECT_TRUE(other.IsStale());
  EXPECT_TRUE(other == gauge);
}

TEST(OmuInterfaceObj, VisitorSeesTheObject) {
  class Recorder : public omu_InterfaceObjVisitor {
  public:
    void Visit(const omu_InterfaceObj& object) override { seen = &object; }
    const omu_InterfaceObj* seen = nullptr;
  };
  const Gauge gauge{omu_Shortcut(kPath)};
  Recorder recorder;
  gauge.Accept(recorder);
  EXPECT_EQ(recorder.seen, &gauge);
}

TEST(OmuInterfaceObj, VirtualOperationsKeepTheirSlots) {
  using Obj = omu_InterfaceObj;
  const int slots[] = {VirtualSlot(&Obj::TypeString),
                       VirtualSlot(&Obj::AsString),
                       VirtualSlot(&Obj::AsRepr),
                       VirtualSlot(&Obj::operator==),
                       VirtualSlot(&Obj::Accept),
                       VirtualSlot(&Obj::Copy),
                       VirtualSlot(&Obj::DynTypeId),
                       VirtualSlot(&Obj::DBWrite),
                       VirtualSlot(&Obj::IsMethod),
                       VirtualSlot(&Obj::CallMethod),
                       VirtualSlot(&Obj::GetMember),
                       VirtualSlot(&Obj::SetMember),
                       VirtualSlot(&Obj::DeleteMember),
                       VirtualSlot(&Obj::MemberList),
                       VirtualSlot(&Obj::MemberListForQry),
                       VirtualSlot(&Obj::MemberExcludeListForQry),
                       VirtualSlot(&Obj::MethodList),
                       VirtualSlot(&Obj::FullRepr),
                       VirtualSlot(&Obj::JournalVariable),
                       VirtualSlot(&Obj::BaseShortcut),
                       VirtualSlot(&Obj::BaseShortcutGetABC),
                       VirtualSlot(&Obj::CommandPath),
                       VirtualSlot(&Obj::Coerce),
                       VirtualSlot(&Obj::Cast),
                       VirtualSlot(&Obj::Absolute),
                       VirtualSlot(&Obj::AddOperation),
                       VirtualSlot(&Obj::SubOperation),
                       VirtualSlot(&Obj::MulOperation),
                       VirtualSlot(&Obj::DivOperation),
                       VirtualSlot(&Obj::UnaryNegative),
                       VirtualSlot(&Obj::NonZero),
                       VirtualSlot(&Obj::ConstGetWrapper),
                       VirtualSlot(&Obj::IsStale),
                       VirtualSlot(&Obj::SetStale),
                       VirtualSlot(&Obj::Compare),
                       VirtualSlot(&Obj::ComparePath)};
  // The destructor takes slots 0 and 1.
  int expected = 2;
  for (const int slot : slots)
    EXPECT_EQ(slot, expected++);
}

} // namespace
