#include "RecordBorder.h"

#include "TemporaryFolder.h"
#include "gsl_RecordFile.h"

#include <vector>

namespace {

/// The store itself, and what comes back from its bytes and from a file.
class InMemory {
public:
  static constexpr const char* kName = "InMemory";

  void Write(const std::function<void(gsl_RecordWriter&)>& work) { work(m_store); }
  const gsl_RecordReader& Read() { return m_store; }

protected:
  gsl_RecordStore m_store;
};

class AsBytes : public InMemory {
public:
  static constexpr const char* kName = "AsBytes";

  const gsl_RecordReader& Read() {
    const std::vector<unsigned char> bytes = m_store.ToBytes();
    m_store = gsl_RecordStore::FromBytes(bytes.data(), bytes.size());
    return m_store;
  }
};

class InFile : public InMemory {
public:
  static constexpr const char* kName = "InFile";

  const gsl_RecordReader& Read() {
    gsl_SaveRecords(m_store, m_folder.Path("records.gslr"));
    m_store = gsl_LoadRecords(m_folder.Path("records.gslr"));
    return m_store;
  }

private:
  TemporaryFolder m_folder;
};

} // namespace

using RecordStores = testing::Types<InMemory, AsBytes, InFile>;
INSTANTIATE_TYPED_TEST_SUITE_P(Store, RecordBorder, RecordStores, NamesOfStorages);
