#ifndef HOST_ADAPTER_H
#define HOST_ADAPTER_H

#include <aio_istream.h>
#include <aio_ostream.h>
#include <cls_ReadVisitor.h>
#include <cls_WriteVisitor.h>
#include <cls_xp1DArrayListUint.h>
#include <g3d_Sphere.h>
#include <nex_Exception.h>
#include <omu_InterfaceObj.h>
#include <omu_Primitive.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

/// What the suite needs of a host beyond what the library needs: ways to look into the host's own
/// objects. A vendor implements these functions in one source file. Every one of them does
/// something that the host can do anyway.
namespace host_adapter {

/// What an exception carries.
struct Thrown {
  std::string message;
  std::string sourceUnit;
  int line;
  cls_Uid uid;
};
Thrown Describe(const nex_Exception& exception);

/// An output stream whose reader sees only what was flushed.
class Output {
public:
  virtual ~Output() = default;
  virtual aio_ostream& Stream() = 0;
  /// Returns all text that was flushed so far.
  virtual std::string Delivered() = 0;
};
std::unique_ptr<Output> MakeOutput();

/// An input stream with that text.
class Input {
public:
  virtual ~Input() = default;
  virtual aio_istream& Stream() = 0;
};
std::unique_ptr<Input> MakeInput(const std::string& text);

/// A place where roots are saved, one after the other, and read again in any order. All roots are
/// of one save, and all that is read is of one load.
class Store {
public:
  virtual ~Store() = default;
  /// Calls `write` with the visitor of a new root. An exception of `write` comes out, and there is
  /// no such root then.
  virtual void Save(const std::function<void(const cls_WriteVisitor&)>& write) = 0;
  /// Calls `read` with the visitor of root number `root`, from 0.
  virtual void Load(std::size_t root, const std::function<void(const cls_ReadVisitor&)>& read) = 0;
};
std::unique_ptr<Store> MakeStore();

/// A row of a type table.
struct TypeRow {
  unsigned int kind;
  unsigned int secondWord;
  std::string name; ///< empty for null
};
/// Returns the rows that the module entered.
std::vector<TypeRow> TypeTable(unsigned int module);

/// A class that is registered.
struct RegisteredClass {
  struct Attribute {
    std::string name;
    int type;
    unsigned int argument;
    int collection;
  };

  unsigned int typeId;
  std::string name;
  int number;
  int flags;
  bool hasDestructor;
  std::vector<Attribute> attributes;
};
/// Returns the classes in the order of their first registration.
std::vector<RegisteredClass> RegisteredClasses();
/// Makes an object from the record as the registrar does, destroys it with the function that the
/// class registered, and returns whether the class has both.
bool MakeAndDestroy(unsigned int typeId, const cls_ReadVisitor& visitor);

/// Returns the starts and stops of the host's libraries so far, "+mem", "-mem" and so on.
std::vector<std::string> Journal();

/// Gives a message another text in the user's language.
void Translate(const char* format, const char* text);

/// Returns the name that the object gave to DescribeType.
std::string ScriptType(const omu_InterfaceObj& object);
/// Calls the method as a script does, without arguments. The caller owns the result.
omu_Primitive* CallMethod(omu_InterfaceObj& object, const char* method);
/// Returns the numbers of a tuple.
std::vector<double> NumbersOf(const omu_Primitive& tuple);

void Append(cls_xp1DArrayListUint& list, unsigned int number);
std::vector<unsigned int> NumbersOf(const cls_xp1DArrayListUint& list);

/// Returns x, y, z and w of the centre, and the radius.
std::vector<float> NumbersOf(const g3d_Sphere& sphere);

} // namespace host_adapter

#endif
