#ifndef OMU_PRIM_ENUM_BASE_H
#define OMU_PRIM_ENUM_BASE_H

#include "atr_String.h"
#include "cow_Map.h"
#include "cow_String.h"
#include "omu_Primitive.h"

#include <cstdint>

class cls_ReadVisitor;
class cls_WriteVisitor;

/// The current value and name of an enumeration primitive; the class derived for each enumeration
/// supplies the names.
class GSL_HOST_API omu_PrimEnumBase : public omu_Primitive {
public:
  ~omu_PrimEnumBase() override;

  std::int32_t GetValue() const { return m_currentValue; }
  /// Returns the name of the current value.
  const atr_String& GetString() const { return m_currentName; }
  cow_String AsString(int style = 0) const override;

  /// Returns the names that this enumeration allows, in the order of its table, with ", " between
  /// them.
  cow_String PermissibleValuesAsString() const;
  /// Returns every name with its value, in the order of the table.
  virtual cow_Map<cow_String, unsigned int> PermissibleValues() const = 0;

  /// Returns whether `other` is an enumeration primitive with the same name and value. The
  /// enumerations themselves are not compared.
  [[nodiscard]] bool operator==(const omu_Primitive& other) const override;

  /// Writes a record with one field, "_string", which holds the name.
  void DBWrite(const cls_WriteVisitor& visitor) const;

protected:
  /// Sets the value 0 and no name, until the derived class sets both.
  omu_PrimEnumBase();
  /// Reads the name as it is stored, empty when the record has no name. The value is 0.
  explicit omu_PrimEnumBase(const cls_ReadVisitor& visitor);
  omu_PrimEnumBase(const omu_PrimEnumBase&) = default;
  /// After std::bad_alloc the value and the name are as they were.
  omu_PrimEnumBase& operator=(const omu_PrimEnumBase& other) {
    m_currentName = other.m_currentName;
    m_currentValue = other.m_currentValue;
    return *this;
  }

  /// Changes the value and its name.
  void Set(std::int32_t newValue, const char* newName);

private:
  std::int32_t m_currentValue;
  atr_String m_currentName;
};

#endif
