#ifndef OMU_PRIMITIVE_H
#define OMU_PRIMITIVE_H

#include "cow_String.h"

#include <type_traits>

/// Base of the values that the scripting layer passes on.
class GSL_HOST_API omu_Primitive {
public:
  virtual ~omu_Primitive();
  [[nodiscard]] virtual bool operator==(const omu_Primitive& other) const = 0;
  [[nodiscard]] bool operator!=(const omu_Primitive& other) const { return !(*this == other); }
  /// Returns a heap copy of the dynamic type, which the caller owns.
  [[nodiscard]] virtual omu_Primitive* Copy() const = 0;
  /// Returns the value as text. The style is for values with several texts; 0 is the plain text.
  virtual cow_String AsString(int style = 0) const = 0;

protected:
  omu_Primitive() = default;
  omu_Primitive(const omu_Primitive&) = default;
  omu_Primitive& operator=(const omu_Primitive&) = default;
};

/// Compare primitives of any two classes as the first primitive does. Without these operators,
/// C++20 could not choose between the comparisons of the first and of the second primitive.
template <class A, class B>
[[nodiscard]] std::enable_if_t<
    std::is_base_of_v<omu_Primitive, A> && std::is_base_of_v<omu_Primitive, B>, bool>
operator==(const A& a, const B& b) {
  const omu_Primitive& first = a;
  return first.operator==(b);
}

#endif
