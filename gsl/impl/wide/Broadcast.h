#ifndef GSL_WIDE_BROADCAST_H
#define GSL_WIDE_BROADCAST_H

namespace gsl_wide {

/// How one number becomes the factor of a vector of eight doubles: in a register, or in the operand
/// of the multiplication. A processor that splits such vectors loses a quarter of its arithmetic to
/// the register. Others gain a tenth. The results are the same.
enum class Broadcast { InOperand, InRegister };

} // namespace gsl_wide

#endif
