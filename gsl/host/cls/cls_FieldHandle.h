#ifndef CLS_FIELD_HANDLE_H
#define CLS_FIELD_HANDLE_H

/// Names a field of a record. The index, unless it is -1, is the field's place in write order. Only
/// the name decides which field is meant.
class cls_FieldHandle {
public:
  /// Requires that `name` outlives the handle.
  constexpr cls_FieldHandle(int fieldIndex, const char* fieldName)
      : index(fieldIndex), name(fieldName) {}

  constexpr int Index() const { return index; }
  constexpr const char* Name() const { return name; }

private:
  int index;
  const char* name;
};

#endif
