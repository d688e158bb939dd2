#ifndef GSL_TRANSFORM_INT_OBJ_H
#define GSL_TRANSFORM_INT_OBJ_H

#include "cow_String.h"
#include "gsl_Export.h"
#include "gsl_Matrix.h"
#include "omu_InterfaceObj.h"

/// A rigid transform as scripts see it: its type is "Transform", and it has no members and one
/// method.
///
/// matrix()  returns a new tuple of 12 numbers, rows 0 to 2 of the transform column by column: the
///           images of the X, Y and Z axes, then the image of the origin. The fourth row is never
///           included.
/// Copies    share the shortcut and the text, and each holds its own copy of the matrix.
/// Errors    nex_CommandException, as in omu_InterfaceObj, for an unknown method, for arguments,
///           and for a stale object. std::bad_alloc without memory.
class GSL_API gsl_TransformIntObj : public omu_InterfaceObj {
public:
  /// Copies m. `text` is kept for the creator; nothing here reads it.
  gsl_TransformIntObj(const omu_Shortcut& s, const gsl_Matrix& m, const cow_String& text);
  gsl_TransformIntObj(const gsl_TransformIntObj&);
  gsl_TransformIntObj& operator=(const gsl_TransformIntObj&);

  ~gsl_TransformIntObj() override;
  /// Returns a new object with the same shortcut, matrix and text.
  [[nodiscard]] gsl_TransformIntObj* Copy() const override;

  const gsl_Matrix& GetMatrix() const { return m_matrix; }
  const cow_String& GetText() const { return m_text; }

  /// Returns the name of the script type, "Transform".
  static constexpr const char* TypeName() { return "Transform"; }

private:
  [[nodiscard]] omu_Primitive* MatrixMethod(const omu_PrimTuple& arguments);

  static const omu_MethodEntry methodTable[];
  static const omu_MemberEntry memberTable[];

  gsl_Matrix m_matrix;
  cow_String m_text;
};

#endif
