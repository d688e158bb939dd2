#include "atr_String.h"
#include "cls_RecordException.h"
#include "gsl_PersistentMatrix.h"
#include "gsl_RecordLayout.h"

#include <string>

namespace {

constexpr std::size_t kSize = 4;
constexpr const char* kSourceUnit = "generated/module/gsl/persist/gsl_PersistentMatrixRecord";
/// The line that the message names. It is fixed and does not move with the code.
constexpr int kWrongSizeLine = 62;
constexpr const char* kWrongSize = "A stored transform must have 4 by 4 entries (got %s by %s)";

[[noreturn]] void RefuseSize(const cls_xp2DArrayDouble& entries, const cls_Uid& uid) {
  atr_String message = atr_translate(kWrongSize);
  atr_SubstituteFormat(message, 1, std::to_string(entries.Rows()).c_str());
  atr_SubstituteFormat(message, 2, std::to_string(entries.Columns()).c_str());
  nex_Exception::Throw(cls_RecordException(cow_String(message.CStr(), message.Length()), uid),
                       kSourceUnit, kWrongSizeLine);
}

struct StoredMatrix {
  int isIdentity;
  cls_xp2DArrayDouble entries;
};

StoredMatrix StoredFormOf(const gsl_Matrix& matrix) {
  // Nothing refers to the array. It has no identity, so that equal objects have equal records.
  StoredMatrix stored = {0, cls_xp2DArrayDouble(kSize, kSize, cls_Uid())};
  for (std::size_t r = 0; r < kSize; ++r) {
    for (std::size_t c = 0; c < kSize; ++c)
      stored.entries(r, c) = matrix.m[r][c];
  }
  // IsIdentity() may rewrite the matrix, so the entries are copied first.
  stored.isIdentity = matrix.IsIdentity() ? 1 : 0;
  return stored;
}

} // namespace

// The class is registered under the name of the plain value class, which is stored.
template <>
struct gsl_RecordLayout<gsl_PersistentMatrix> {
  using Stored = StoredMatrix;
  static constexpr gsl_RecordAdapter kAdapter = {"gsl_Matrix", 203, false};
  static constexpr std::tuple kFields = {gsl_Field(-1, "_is_identity", &StoredMatrix::isIdentity),
                                         gsl_Field(-1, "DDBmatrix", &StoredMatrix::entries)};
};

template class cls_TypeAdapter<gsl_PersistentMatrix>;

gsl_PersistentMatrix::gsl_PersistentMatrix(const cls_ReadVisitor& visitor)
    : m_uid(visitor.GetUid()) {
  StoredMatrix stored = {0, cls_xp2DArrayDouble(0, 0, cls_Uid())};
  gsl_ReadRecord<gsl_PersistentMatrix>(visitor, stored);
  // The entries are not compared with the identity.
  m_matrix.isIdentity = stored.isIdentity;
  if (stored.entries.Rows() == 0 && stored.entries.Columns() == 0) return;
  if (stored.entries.Rows() != kSize || stored.entries.Columns() != kSize) {
    RefuseSize(stored.entries, m_uid);
  }
  for (std::size_t r = 0; r < kSize; ++r) {
    for (std::size_t c = 0; c < kSize; ++c)
      m_matrix.m[r][c] = stored.entries(r, c);
  }
}

unsigned int gsl_PersistentMatrix::DynTypeId() const {
  return TypeId();
}

void gsl_PersistentMatrix::DBWrite(const cls_WriteVisitor& visitor) const {
  // A declined record does not read the matrix, because IsIdentity() may rewrite the matrix.
  if (visitor.StartWrite(TypeId(), m_uid) == 0) return;
  gsl_WriteFields<gsl_PersistentMatrix>(visitor, StoredFormOf(m_matrix));
}

void gsl_PersistentMatrix::InitializeMetadata(cls_ClassRegistrar& registrar) {
  gsl_RegisterRecord<gsl_PersistentMatrix>(registrar);
}
