#ifndef OMU_TYPE_DESCRIPTION_H
#define OMU_TYPE_DESCRIPTION_H

#include "cow_String.h"

#include <vector>

class omu_InterfaceObj;
class omu_PrimTuple;
class omu_Primitive;

/// Tables that describe a class of scripting objects. Each table is a static array that ends with
/// an entry whose name is null. A null pointer is an empty table.

/// Returns a heap object that the caller owns, or null for "nothing".
using omu_Method = omu_Primitive* (omu_InterfaceObj::*)(const omu_PrimTuple& arguments);

/// A method of a script type.
struct omu_MethodEntry {
  const char* name;    ///< null ends the table
  omu_Method method;   ///< what a call runs
  int fewestArguments; ///< a call with fewer is refused
  int mostArguments;   ///< a call with more is refused
};

/// A member of a script type.
struct omu_MemberEntry {
  const char* name;                                          ///< null ends the table
  omu_Primitive* (omu_InterfaceObj::*get)() const;           ///< returns the value
  void (omu_InterfaceObj::*set)(const omu_Primitive& value); ///< null: cannot be changed
  void (omu_InterfaceObj::*remove)();                        ///< null: cannot be deleted
};

/// A name that still works but is not listed.
struct omu_DeprecatedEntry {
  const char* name; ///< null ends the table
};

/// The description of one type for the scripting layer.
///
/// A type is known from the construction of its first object on, and is never forgotten. So
/// pointers to its description stay valid. Look-ups are safe from any thread.
class GSL_HOST_API omu_TypeDescription {
public:
  /// Returns null for a type without an object so far.
  static const omu_TypeDescription* Find(const cow_String& typeName);

  /// Enters a type. The same name with the same tables again changes nothing; with other tables it
  /// throws nex_AssertException. The tables and the name must live as long as the process.
  static const omu_TypeDescription& Enter(const omu_TypeDescription& description);

  /// The tables end with an entry whose name is null.
  omu_TypeDescription(const char* typeName, const omu_MethodEntry* methodTable,
                      const omu_MemberEntry* memberTable,
                      const omu_DeprecatedEntry* deprecatedMethodTable,
                      const omu_DeprecatedEntry* deprecatedMemberTable);

  const char* Name() const { return m_name; }
  /// Returns the names of the methods in table order, without the deprecated names.
  std::vector<cow_String> MethodNames() const;
  /// Returns the names of the members in table order, without the deprecated names.
  std::vector<cow_String> MemberNames() const;
  /// Find an entry by its exact name, deprecated or not. They return null for an unknown name.
  const omu_MethodEntry* FindMethod(const cow_String& methodName) const;
  /// Does the same for a member.
  const omu_MemberEntry* FindMember(const cow_String& memberName) const;

private:
  [[nodiscard]] bool SameTables(const omu_TypeDescription& other) const;

  const char* m_name;
  const omu_MethodEntry* m_methods;
  const omu_MemberEntry* m_members;
  const omu_DeprecatedEntry* m_deprecatedMethods;
  const omu_DeprecatedEntry* m_deprecatedMembers;
};

#endif
