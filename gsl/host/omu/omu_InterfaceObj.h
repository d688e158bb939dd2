#ifndef OMU_INTERFACE_OBJ_H
#define OMU_INTERFACE_OBJ_H

#include "omu_Shortcut.h"
#include "omu_TypeDescription.h"

#include <type_traits>
#include <vector>

class cls_WriteVisitor;

/// Is called by the objects that accept it.
class GSL_HOST_API omu_InterfaceObjVisitor {
public:
  virtual ~omu_InterfaceObjVisitor();
  /// Is called with the object.
  virtual void Visit(const omu_InterfaceObj& object) = 0;
};

/// Base of the objects that scripts see. A derived class names its type and its tables through
/// DescribeType. This base looks names up, lists them and calls methods.
///
/// Slots     the order of the virtual operations is part of the interface.
/// Results   pointers are heap objects that the caller owns.
/// Copies    share the shortcut; staleness is copied as it is.
/// Errors    a mistake in a script throws nex_CommandException with a message that names the type
///           and the wrong name. std::bad_alloc without memory.
class GSL_HOST_API omu_InterfaceObj {
public:
  /// The object is at the place that the shortcut names.
  explicit omu_InterfaceObj(const omu_Shortcut& shortcut);
  omu_InterfaceObj(const omu_InterfaceObj&);
  omu_InterfaceObj& operator=(const omu_InterfaceObj&);

  virtual ~omu_InterfaceObj();
  /// Returns the name of the script type, which is "object" before DescribeType.
  virtual cow_String TypeString() const;
  /// Returns "<Transform object at path>", or "<Transform object>" without a path.
  virtual cow_String AsString() const;
  /// Returns what a script writes to reach the object: the command path, or AsString() without a
  /// path.
  virtual cow_String AsRepr() const;
  /// Returns whether `other` is the same object, or an object of the same type and shortcut.
  [[nodiscard]] virtual bool operator==(const omu_InterfaceObj& other) const;
  /// Calls the visitor with this object.
  virtual void Accept(omu_InterfaceObjVisitor& visitor) const;
  /// Returns a new object of the same class.
  [[nodiscard]] virtual omu_InterfaceObj* Copy() const = 0;
  /// Returns 0: scripting objects are not stored, and DBWrite writes nothing.
  virtual unsigned int DynTypeId() const;
  virtual void DBWrite(const cls_WriteVisitor& visitor) const;

  /// Returns whether the type has that method.
  [[nodiscard]] virtual bool IsMethod(const cow_String& name) const;
  /// Calls a method by name. Throws for a stale object, an unknown name, and a number of arguments
  /// that the method does not take, tested in this order.
  [[nodiscard]] virtual omu_Primitive* CallMethod(const cow_String& name,
                                                  const omu_PrimTuple& arguments);
  /// Returns a member of the type's table by its name. This and the next two operations throw for a
  /// stale object, an unknown name, and a member that cannot be changed or deleted.
  [[nodiscard]] virtual omu_Primitive* GetMember(const cow_String& name) const;
  /// Changes a member; see GetMember.
  virtual void SetMember(const cow_String& name, const omu_Primitive& value);
  /// Deletes a member; see GetMember.
  virtual void DeleteMember(const cow_String& name);
  /// Returns the names of the members in table order, without the deprecated names.
  virtual std::vector<cow_String> MemberList() const;
  /// Returns MemberList without MemberExcludeListForQry, which is empty unless a class overrides
  /// it.
  virtual std::vector<cow_String> MemberListForQry() const;
  /// Returns the members that queries leave out: none.
  virtual std::vector<cow_String> MemberExcludeListForQry() const;
  /// Returns the names of the methods in table order, without the deprecated names.
  virtual std::vector<cow_String> MethodList() const;
  /// Returns AsString(), then a line for the members and a line for the methods, if there are any.
  virtual cow_String FullRepr() const;
  /// Returns the name of the object in a journal: the type name with a lower-case initial.
  virtual cow_String JournalVariable() const;
  /// Returns the shortcut.
  virtual const omu_Shortcut& BaseShortcut() const;
  /// Returns the shortcut, or null when it leads nowhere. The object owns it.
  virtual const omu_Shortcut* BaseShortcutGetABC() const;
  /// Returns the command path of the shortcut.
  virtual cow_String CommandPath() const;

  /// Returns a copy of `other` when it is an object of this type, otherwise null.
  [[nodiscard]] virtual omu_InterfaceObj* Coerce(const omu_InterfaceObj& other) const;
  /// Returns a copy of this object when its type has that name. Throws otherwise.
  [[nodiscard]] virtual omu_InterfaceObj* Cast(const cow_String& typeName) const;
  /// The arithmetic of scripts. Throws unless a class overrides it.
  [[nodiscard]] virtual omu_InterfaceObj* Absolute() const;
  /// Returns the sum; see Absolute.
  [[nodiscard]] virtual omu_InterfaceObj* AddOperation(const omu_InterfaceObj& other) const;
  /// Returns the difference; see Absolute.
  [[nodiscard]] virtual omu_InterfaceObj* SubOperation(const omu_InterfaceObj& other) const;
  /// Returns the product; see Absolute.
  [[nodiscard]] virtual omu_InterfaceObj* MulOperation(const omu_InterfaceObj& other) const;
  /// Returns the quotient; see Absolute.
  [[nodiscard]] virtual omu_InterfaceObj* DivOperation(const omu_InterfaceObj& other) const;
  /// Returns the opposite; see Absolute.
  [[nodiscard]] virtual omu_InterfaceObj* UnaryNegative() const;
  /// Returns the truth value in a condition, which is true.
  [[nodiscard]] virtual bool NonZero() const;
  /// Returns the object that a script's constant wrapper holds, which is this object.
  virtual const omu_InterfaceObj* ConstGetWrapper() const;
  /// Returns whether the represented object is gone: SetStale was called, or the shortcut has
  /// expired.
  [[nodiscard]] virtual bool IsStale() const;
  /// Makes the object stale for ever.
  virtual void SetStale();
  /// Returns -1, 0 or 1 by type name, path and then address. Returns 0 only for equal objects.
  virtual int Compare(const omu_InterfaceObj& other) const;
  /// Returns -1, 0 or 1 by command path.
  virtual int ComparePath(const omu_InterfaceObj& other) const;

protected:
  /// Names the type of this object, and enters the type where scripts look types up. Constructors
  /// call it. omu_TypeDescription describes the tables; null is an empty table.
  void DescribeType(const char* typeName, const omu_MethodEntry* methods,
                    const omu_MemberEntry* members, const omu_DeprecatedEntry* deprecatedMethods,
                    const omu_DeprecatedEntry* deprecatedMembers);

private:
  void RefuseWhenStale() const;
  const omu_MemberEntry& MemberEntry(const cow_String& name) const;

  omu_Shortcut m_shortcut;
  const omu_TypeDescription* m_description;
  bool m_stale;
};

/// Compare objects of any two classes as the first object does. Without these operators, C++20
/// could not choose between the comparisons of the first and of the second object.
template <class A, class B>
[[nodiscard]] std::enable_if_t<
    std::is_base_of_v<omu_InterfaceObj, A> && std::is_base_of_v<omu_InterfaceObj, B>, bool>
operator==(const A& a, const B& b) {
  const omu_InterfaceObj& first = a;
  return first.operator==(b);
}

#endif
