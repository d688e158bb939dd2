#ifndef XH_RECORD_H
#define XH_RECORD_H

#include "cls_AttributeType.h"
#include "cls_Uid.h"
#include "cow_String.h"
#include "xh_Export.h"

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

struct xh_Record;

/// A value of a record. A record in a field may be null.
struct XH_API xh_Field {
  enum Kind { kInteger, kDouble, kBoolean, kText, kRecord };

  std::string name;
  Kind kind = kRecord;
  int integer = 0;
  double number = 0.0;
  cow_String text;
  std::shared_ptr<xh_Record> record;
};

/// A record in memory. Records that several fields share are one object. An entry of a list is a
/// field without a name.
struct XH_API xh_Record {
  unsigned int typeId = 0;
  cls_Uid uid;
  int collection = cls_NoCollection;
  std::vector<xh_Field> fields;
  std::vector<unsigned int> unsigneds;
  std::vector<double> doubles;
  std::size_t rows = 0;
  std::size_t columns = 0;
};

/// One save: which shared objects it has written. The objects are kept alive, so that no address
/// is used twice.
struct XH_API xh_Saving {
  std::map<const void*, std::shared_ptr<xh_Record>> written;
  std::vector<std::shared_ptr<const void>> kept;
};

/// One load: the objects of shared records that were read.
struct XH_API xh_Loading {
  std::map<const xh_Record*, std::shared_ptr<void>> read;
};

class cls_ReadVisitor;
class cls_WriteVisitor;

/// The store of this host: roots in memory. A root whose writing ends with an exception is left
/// out.
class XH_API xh_Store {
public:
  xh_Store();
  ~xh_Store();

  using Write = void (*)(const cls_WriteVisitor& visitor, const void* argument);
  using Read = void (*)(const cls_ReadVisitor& visitor, void* argument);

  void Save(Write write, const void* argument);
  void Load(std::size_t root, Read read, void* argument);
  std::size_t Count() const { return m_roots.size(); }
  xh_Record& Root(std::size_t i) { return *m_roots[i]; }

private:
  xh_Saving m_saving;
  xh_Loading m_loading;
  std::vector<std::shared_ptr<xh_Record>> m_roots;
};

#endif
