#ifndef OMU_PRIM_TUPLE_H
#define OMU_PRIM_TUPLE_H

#include "omu_Primitive.h"

#include <cstddef>
#include <memory>
#include <vector>

/// Sequence of numbers and other primitives, as scripts pass and receive them.
///
/// Kind      the character code of the opening bracket: '(' (40) for a tuple, '[' for a list.
/// Errors    nex_CommandException for an element that does not exist or has the other kind.
///           std::bad_alloc without memory, with the tuple as it was.
class GSL_HOST_API omu_PrimTuple : public omu_Primitive {
public:
  /// Makes an empty tuple with room for `expectedCount` elements. A count below 1 is ignored.
  explicit omu_PrimTuple(int expectedCount = 0, int kind = '(');
  omu_PrimTuple(const omu_PrimTuple& other);
  omu_PrimTuple(omu_PrimTuple&&) noexcept = default;
  omu_PrimTuple& operator=(const omu_PrimTuple& other);
  omu_PrimTuple& operator=(omu_PrimTuple&&) noexcept = default;
  ~omu_PrimTuple() override;

  /// Returns whether `other` is a tuple of the same kind with equal elements in the same order.
  /// Numbers compare exactly, so a NaN is unequal even to itself.
  [[nodiscard]] bool operator==(const omu_Primitive& other) const override;
  [[nodiscard]] omu_PrimTuple* Copy() const override;
  /// Returns the elements between brackets, "(0.6, 0.0, 0.8)". Numbers have the fewest digits that
  /// read back the same, and always a point or an exponent. One element is "(1.0,)".
  cow_String AsString(int style = 0) const override;

  /// Appends a number.
  virtual void Put(double number);
  /// Appends a copy. `value` may be this tuple or one of its elements.
  virtual void Put(const omu_Primitive& value);

  int Kind() const { return m_kind; }
  std::size_t Count() const { return m_elements.size(); }
  /// Returns whether element i is a number.
  [[nodiscard]] bool IsNumber(std::size_t i) const { return At(i).object == nullptr; }
  /// Returns element i, which must be a number.
  double Number(std::size_t i) const;
  /// Returns an element that the tuple owns.
  const omu_Primitive& Primitive(std::size_t i) const;

private:
  struct Element {
    double number;
    std::unique_ptr<omu_Primitive> object; ///< null for a number
  };

  const Element& At(std::size_t i) const;

  std::vector<Element> m_elements;
  int m_kind;
};

#endif
