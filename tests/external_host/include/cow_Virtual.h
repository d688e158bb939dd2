#ifndef COW_VIRTUAL_H
#define COW_VIRTUAL_H

template <class T>
class cow_Virtual {
public:
  static T* Clone(const T& source) { return source.Copy(); }
};

#endif
