#ifndef CLS_FIELD_HANDLE_H
#define CLS_FIELD_HANDLE_H

/// Names a field of a record. The index, where it is not -1, is the field's place in write order.
/// The name alone decides which field is meant.
class cls_FieldHandle {
public:
  /// `name` must outlive the handle: a literal.
  constexpr cls_FieldHandle(int fieldIndex, const char* fieldName)
      : index(fieldIndex), name(fieldName) {}

  constexpr int Index() const { return index; }
  constexpr const char* Name() const { return name; }

private:
  int index;
  const char* name;
};

#endif
