#include "gsl_TransformIntObj.h"

#include "omu_PrimTuple.h"

const omu_MethodEntry gsl_TransformIntObj::methodTable[] = {
    {"matrix", static_cast<omu_Method>(&gsl_TransformIntObj::MatrixMethod), 0, 0},
    {nullptr, nullptr, 0, 0},
};

const omu_MemberEntry gsl_TransformIntObj::memberTable[] = {
    {nullptr, nullptr, nullptr, nullptr},
};

gsl_TransformIntObj::gsl_TransformIntObj(const omu_Shortcut& s, const gsl_Matrix& m,
                                         const cow_String& t)
    : omu_InterfaceObj(s), m_matrix(m), m_text(t) {
  DescribeType(TypeName(), methodTable, memberTable, nullptr, nullptr);
}

gsl_TransformIntObj::gsl_TransformIntObj(const gsl_TransformIntObj&) = default;

gsl_TransformIntObj& gsl_TransformIntObj::operator=(const gsl_TransformIntObj&) = default;

gsl_TransformIntObj::~gsl_TransformIntObj() = default;

gsl_TransformIntObj* gsl_TransformIntObj::Copy() const {
  return new gsl_TransformIntObj(*this);
}

omu_Primitive* gsl_TransformIntObj::MatrixMethod(const omu_PrimTuple&) {
  double entries[4][4];
  m_matrix.AsArray(entries);
  constexpr int kColumns = 4;
  constexpr int kRows = 3;
  omu_PrimTuple tuple(kColumns * kRows, '(');
  for (int c = 0; c < kColumns; ++c) {
    for (int r = 0; r < kRows; ++r)
      tuple.Put(entries[r][c]);
  }
  return tuple.Copy();
}
