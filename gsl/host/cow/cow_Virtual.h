#ifndef COW_VIRTUAL_H
#define COW_VIRTUAL_H

/// Clones an object of a class hierarchy through its virtual Copy, which keeps the dynamic type and
/// may return null.
template <class T>
struct cow_Virtual {
  /// Returns a copy of the dynamic type, or null.
  [[nodiscard]] static T* Clone(const T& source) { return source.Copy(); }
};

#endif
