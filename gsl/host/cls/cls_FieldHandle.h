#ifndef CLS_FIELD_HANDLE_H
#define CLS_FIELD_HANDLE_H

/// Names a field of a record. The index, unless it is -1, is the field's place in write order. Only
/// the name decides which field is meant.
class cls_FieldHandle {
public:
  /// Requires that `name` outlives the handle.
  constexpr cls_FieldHandle(int fieldIndex, const char* fieldName)
      : m_index(fieldIndex), m_name(fieldName) {}

  constexpr int Index() const { return m_index; }
  constexpr const char* Name() const { return m_name; }

private:
  int m_index;
  const char* m_name;
};

#endif
