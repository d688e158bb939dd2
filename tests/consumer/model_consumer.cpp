// What a program does that links gsl::model alone: a class of its own in a database, transactions,
// the list of roots, an exception caught across the libraries.

#include "check.h"

#include <gsl_Model.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using gsl_model::Access;
using gsl_model::Model;
using gsl_model::RootEntry;
using gsl_model::Transaction;

/// A class of the application, which the host's registrar need not know.
struct Bolt {
  static constexpr unsigned int kTypeId = 0x70000001;

  cls_Uid uid = cls_Uid::AllocateUid();
  double width = 0.0;

  explicit Bolt(double initialWidth) : width(initialWidth) {}
  explicit Bolt(const cls_ReadVisitor& visitor) : uid(visitor.GetUid()) {
    visitor.CheckTypeId(kTypeId);
    width = visitor.ReadDouble({-1, "width"}, 0.0);
  }

  void DBWrite(const cls_WriteVisitor& visitor) const {
    if (visitor.StartWrite(kTypeId, uid) != 0) visitor.WriteDouble({-1, "width"}, width);
  }
};

void ObjectsArePutReadAndRemoved(const std::string& path) {
  const Bolt small(2.5);
  {
    Model model(path);
    model.Write([&](Transaction& t) {
      t.Put("small", small);
      t.Put("large", Bolt(10.0));
    });
    model.Write([](Transaction& t) { Check(t.Remove("large"), "there is a root to remove"); });
  }
  const Model model(path, Access::Read);
  const Bolt read = model.Get<Bolt>("small");
  Check(read.width == 2.5 && read.uid == small.uid, "the object is restored");
  Check(!model.Has("large"), "a removed root is gone");
  const std::vector<RootEntry> roots = model.Roots();
  Check(roots.size() == 1 && roots[0].typeId == Bolt::kTypeId, "the roots are listed");
}

void FailureStoresNothing(const std::string& path) {
  Model model(path);
  try {
    model.Write([](Transaction& t) {
      t.Put("small", Bolt(99.0));
      throw std::runtime_error("no");
    });
    Check(false, "the exception of the caller arrives");
  } catch (const std::runtime_error&) {
  }
  Check(model.Get<Bolt>("small").width == 2.5, "nothing of a failed transaction is stored");
}

void ErrorsAreCaught(const std::string& path) {
  try {
    const Model model(path + ".none", Access::Read);
    Check(false, "a missing file is refused");
  } catch (const gsl_RecordError& error) {
    Check(std::string(error.what()).find(path) == 0, "the message begins with the path");
  }
}

} // namespace

int main() {
  std::string folder = (std::filesystem::temp_directory_path() / "model_consumer_XXXXXX").string();
  Check(mkdtemp(folder.data()) != nullptr, "there is a folder");
  const std::string path = folder + "/part.gslm";
  ObjectsArePutReadAndRemoved(path);
  FailureStoresNothing(path);
  ErrorsAreCaught(path);
  std::filesystem::remove_all(folder);
}
