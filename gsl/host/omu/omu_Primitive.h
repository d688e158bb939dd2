#ifndef OMU_PRIMITIVE_H
#define OMU_PRIMITIVE_H

#include "cow_String.h"

#include <type_traits>

/// Base of the values that the scripting layer hands around.
class GSL_HOST_API omu_Primitive {
public:
  virtual ~omu_Primitive();
  [[nodiscard]] virtual bool operator==(const omu_Primitive& other) const = 0;
  [[nodiscard]] bool operator!=(const omu_Primitive& other) const { return !(*this == other); }
  /// A heap copy of the dynamic type that the caller owns.
  [[nodiscard]] virtual omu_Primitive* Copy() const = 0;
  /// The value as text. The style is for kinds of value that have several; 0 is the plain one.
  virtual cow_String AsString(int style = 0) const = 0;

protected:
  omu_Primitive() = default;
  omu_Primitive(const omu_Primitive&) = default;
  omu_Primitive& operator=(const omu_Primitive&) = default;
};

/// Primitives of any two classes, compared as the first one does. C++20 also tries the comparison
/// of the second, turned round, and could not choose between the two.
template <class A, class B>
[[nodiscard]] std::enable_if_t<
    std::is_base_of_v<omu_Primitive, A> && std::is_base_of_v<omu_Primitive, B>, bool>
operator==(const A& a, const B& b) {
  const omu_Primitive& first = a;
  return first.operator==(b);
}

#endif
