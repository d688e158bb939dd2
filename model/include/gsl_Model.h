#ifndef GSL_MODEL_H
#define GSL_MODEL_H

#include "cls_ReadVisitor.h"
#include "cls_WriteVisitor.h"
#include "cow_String.h"
#include "gsl_RecordError.h"
#include "gsl_RecordReader.h"
#include "gsl_RecordWriter.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#if defined(__GNUC__)
#define GSL_MODEL_API __attribute__((visibility("default")))
#else
#define GSL_MODEL_API
#endif

/// Saved models in an embedded database: named roots that are put, read and removed one by one.
namespace gsl_model {

/// What a program does with the file of a model.
enum class Access {
  Read,  ///< the file must exist
  Write, ///< the file must exist
  Create ///< the file is created where it does not exist
};

/// A root of a model, as the list of roots shows it.
struct RootEntry {
  std::string name;            ///< empty for a root without a name
  std::string className;       ///< empty when the writer gave none
  std::uint32_t typeId = 0;    ///< the number of the class of the root
  gsl_RecordIdentity identity; ///< the identity of the root
  std::uint64_t bytes = 0;     ///< what the checksum of the root covers, shared objects included
};

/// The changes of one call of Model::Write: one save, and one scope of sharing. An object that two
/// roots of a transaction share is stored once and is shared again where both are read together.
class GSL_MODEL_API Transaction {
public:
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;

  /// Puts an object under a name. A root that has the name is replaced, and keeps its place in the
  /// list. Where writing the object throws, the transaction is as it was before the call.
  ///
  /// Requires  DBWrite of the object writes one record.
  /// Errors    gsl_RecordError for an empty name; what DBWrite throws; std::bad_alloc.
  template <class T>
  void Put(std::string_view name, const T& object) {
    const Replacing replacing(*this, name);
    object.DBWrite(cls_WriteVisitor(SaveOf(), cow_String(name.data(), name.size())));
    replacing.CheckWritten();
  }
  /// Removes the root of that name. Returns whether there was one.
  [[nodiscard]] bool Remove(std::string_view name);
  /// Takes records without their classes; roots may be without a name.
  gsl_RecordWriter& Writer();

private:
  friend class Model;

  /// Roots may replace roots of their names while this lives.
  class GSL_MODEL_API Replacing {
  public:
    Replacing(Transaction& transaction, std::string_view name);
    ~Replacing();
    Replacing(const Replacing&) = delete;
    Replacing& operator=(const Replacing&) = delete;
    void CheckWritten() const;

  private:
    Transaction& m_transaction;
    std::size_t m_rootsBefore;
  };
  struct Data;

  explicit Transaction(std::unique_ptr<Data> data);
  ~Transaction();
  cls_Save& SaveOf();

  std::unique_ptr<Data> m_data;
};

/// A model in a database file.
///
/// Changes    come in transactions. A transaction is on the disk when Write returns, or nothing of
///            it is; so it is too when the writer is killed or the machine loses its power. There
///            is one exception. Where the folder cannot be flushed, the transaction is in the file
///            and Write returns. Until a later change has flushed the folder, a loss of power may
///            undo it or damage the model.
/// Damage     every root has a checksum of everything that it reaches. What was changed outside of
///            this library is refused by name, and is not read as other contents.
/// Sharing    objects that a transaction stored once are shared again by everything that one call
///            reads: by one root with Get, by all roots with ReadAll. An object lives as long as a
///            root reaches it.
/// Processes  any number of programs read a model while one writes it. Each waits for the others,
///            as long as the constructor says.
/// Threads    a model belongs to one thread at a time.
/// Errors     gsl_RecordError in one line that begins with the path: what is wrong, then what was
///            expected. The file keeps its contents. std::bad_alloc.
class GSL_MODEL_API Model {
public:
  /// How long a program waits for others unless it says otherwise.
  static constexpr std::chrono::milliseconds kPatience{5000};

  /// Opens the file, and checks its structure in a time that is proportional to its size. Writers
  /// also check its indexes.
  explicit Model(const std::string& path, Access access = Access::Create,
                 std::chrono::milliseconds patience = kPatience);
  ~Model();
  Model(const Model&) = delete;
  Model& operator=(const Model&) = delete;
  Model(Model&&) noexcept;
  Model& operator=(Model&&) noexcept;

  /// Calls `work` and stores what it did. Where `work` throws, nothing of it is stored. `work` may
  /// read the model, and finds it as it was before.
  ///
  /// Errors  also for a call within `work`, and for a model that was opened for reading.
  void Write(const std::function<void(Transaction&)>& work);

  /// Returns the object that is stored under a name. `more` are further arguments of its
  /// constructor, after the visitor.
  template <class T, class... More>
  T Get(std::string_view name, More&&... more) const {
    const std::unique_ptr<const gsl_RecordReader> records = Read(name);
    cls_Load load(*records);
    return T(cls_ReadVisitor(load, 0), std::forward<More>(more)...);
  }
  /// Returns whether a root has that name.
  [[nodiscard]] bool Has(std::string_view name) const;
  /// Returns the roots in the order in which they were first put.
  std::vector<RootEntry> Roots() const;

  /// Returns the records of one root, and of all roots, without their classes.
  std::unique_ptr<const gsl_RecordReader> Read(std::string_view name) const;
  /// Returns the records of all roots, without their classes.
  std::unique_ptr<const gsl_RecordReader> ReadAll() const;

private:
  struct Data;

  std::unique_ptr<Data> m_data;
};

} // namespace gsl_model

#endif
