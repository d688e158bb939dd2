#ifndef CLS_FIELD_HANDLE_H
#define CLS_FIELD_HANDLE_H

class cls_FieldHandle {
public:
  constexpr cls_FieldHandle(int place, const char* name) : m_name(name), m_place(place) {}
  constexpr const char* Name() const { return m_name; }
  constexpr int xh_Place() const { return m_place; }

private:
  const char* m_name;
  int m_place;
};

#endif
