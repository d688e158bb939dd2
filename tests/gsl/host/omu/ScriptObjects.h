#ifndef SCRIPT_OBJECTS_H
#define SCRIPT_OBJECTS_H

#include "omu_InterfaceObj.h"
#include "omu_PrimTuple.h"

/// A script object with every kind of table entry. It has methods with and without arguments,
/// members that can be read, changed and deleted, and deprecated names of both.
class Gauge : public omu_InterfaceObj {
public:
  explicit Gauge(const omu_Shortcut& s, double initial = 0.0)
      : omu_InterfaceObj(s), level(initial) {
    DescribeType("Gauge", methods, members, deprecatedMethods, deprecatedMembers);
  }
  Gauge* Copy() const override { return new Gauge(*this); }
  std::vector<cow_String> MemberExcludeListForQry() const override { return {"unit", "nothing"}; }

  double level;
  bool labelled = true;

  static const omu_MethodEntry methods[];
  static const omu_MemberEntry members[];
  static const omu_DeprecatedEntry deprecatedMethods[];
  static const omu_DeprecatedEntry deprecatedMembers[];

private:
  omu_Primitive* Reset(const omu_PrimTuple&) {
    level = 0.0;
    return nullptr;
  }
  omu_Primitive* Raise(const omu_PrimTuple& arguments) {
    for (std::size_t i = 0; i < arguments.Count(); ++i)
      level += arguments.Number(i);
    return GetLevel();
  }
  omu_Primitive* GetLevel() const {
    auto* const value = new omu_PrimTuple;
    value->Put(level);
    return value;
  }
  void SetLevel(const omu_Primitive& value) {
    level = dynamic_cast<const omu_PrimTuple&>(value).Number(0);
  }
  void RemoveLabel() { labelled = false; }
};

inline const omu_MethodEntry Gauge::methods[] = {
    {"reset", static_cast<omu_Method>(&Gauge::Reset), 0, 0},
    {"raise", static_cast<omu_Method>(&Gauge::Raise), 1, 3},
    {"increase", static_cast<omu_Method>(&Gauge::Raise), 1, 3},
    {nullptr, nullptr, 0, 0},
};

inline const omu_MemberEntry Gauge::members[] = {
    {"level", static_cast<omu_Primitive* (omu_InterfaceObj::*)() const>(&Gauge::GetLevel),
     static_cast<void (omu_InterfaceObj::*)(const omu_Primitive&)>(&Gauge::SetLevel), nullptr},
    {"unit", static_cast<omu_Primitive* (omu_InterfaceObj::*)() const>(&Gauge::GetLevel), nullptr,
     nullptr},
    {"label", static_cast<omu_Primitive* (omu_InterfaceObj::*)() const>(&Gauge::GetLevel), nullptr,
     static_cast<void (omu_InterfaceObj::*)()>(&Gauge::RemoveLabel)},
    {"height", static_cast<omu_Primitive* (omu_InterfaceObj::*)() const>(&Gauge::GetLevel), nullptr,
     nullptr},
    {nullptr, nullptr, nullptr, nullptr},
};

inline const omu_DeprecatedEntry Gauge::deprecatedMethods[] = {{"increase"}, {nullptr}};
inline const omu_DeprecatedEntry Gauge::deprecatedMembers[] = {{"height"}, {nullptr}};

/// An object that never described its type.
class Anonymous : public omu_InterfaceObj {
public:
  using omu_InterfaceObj::omu_InterfaceObj;
  Anonymous* Copy() const override { return new Anonymous(*this); }
};

#endif
