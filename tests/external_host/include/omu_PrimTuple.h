#ifndef OMU_PRIM_TUPLE_H
#define OMU_PRIM_TUPLE_H

#include "omu_Primitive.h"

#include <deque>

/// A tuple of numbers.
class XH_API omu_PrimTuple : public omu_Primitive {
public:
  omu_PrimTuple(int count, int bracket);
  ~omu_PrimTuple() override;
  omu_PrimTuple* Copy() const override;
  bool operator==(const omu_Primitive& other) const override;
  virtual void Put(double number);

  const std::deque<double>& xh_Numbers() const { return m_numbers; }
  int xh_Bracket() const { return m_bracket; }

private:
  std::deque<double> m_numbers;
  int m_bracket;
};

#endif
