#ifndef GSL_VIEW_CORNER_BOX_H
#define GSL_VIEW_CORNER_BOX_H

#include "gsl_Arithmetic.h"

#include <cmath>

namespace gsl_view {

/// A box around corners.
struct CornerBox {
  gsl_arithmetic::Coord3 low{0.0, 0.0, 0.0}, high{0.0, 0.0, 0.0};
  bool isEmpty = true;

  void Take(const gsl_arithmetic::Coord3& p) {
    if (isEmpty) low = high = p;
    isEmpty = false;
    gsl_arithmetic::LowerTo(low, p);
    gsl_arithmetic::RaiseTo(high, p);
  }
  double Diagonal() const {
    const gsl_arithmetic::Coord3 d = gsl_arithmetic::Subtract(high, low);
    return std::hypot(d.x, d.y, d.z);
  }
  gsl_arithmetic::Coord3 Centre() const {
    return gsl_arithmetic::Add(gsl_arithmetic::Multiply(low, 0.5),
                               gsl_arithmetic::Multiply(high, 0.5));
  }
};

} // namespace gsl_view

#endif
