// The adapter of the stand-in host, and an example of an adapter.

#include "HostAdapter.h"

#include <atr_String.h>
#include <cls_MetadataRegistrar.h>
#include <gsl_RecordStore.h>
#include <mem_LifeCycle.h>
#include <omu_PrimTuple.h>
#include <optional>
#include <sstream>
#include <typ_ArchCompTable.h>

namespace {

/// Delivers its text when it is flushed.
class Buffer : public std::stringbuf {
public:
  std::string delivered;

protected:
  int sync() override {
    delivered += str();
    str("");
    return 0;
  }
};

class StreamOutput : public host_adapter::Output {
public:
  aio_ostream& Stream() override { return m_stream; }
  std::string Delivered() override { return m_buffer.delivered; }

private:
  Buffer m_buffer;
  std::ostream m_stream{&m_buffer};
};

class StreamInput : public host_adapter::Input {
public:
  explicit StreamInput(const std::string& text) : m_stream(text) {}
  aio_istream& Stream() override { return m_stream; }

private:
  std::istringstream m_stream;
};

class RecordStore : public host_adapter::Store {
public:
  void Save(const std::function<void(const cls_WriteVisitor&)>& write) override {
    write(cls_WriteVisitor(m_save));
  }
  void Load(std::size_t root, const std::function<void(const cls_ReadVisitor&)>& read) override {
    if (!m_load.has_value()) m_load.emplace(m_store);
    read(cls_ReadVisitor(*m_load, root));
  }

private:
  gsl_RecordStore m_store;
  cls_Save m_save{m_store};
  std::optional<cls_Load> m_load;
};

std::vector<std::string>& TheJournal() {
  static std::vector<std::string> journal;
  return journal;
}

void Note(const char* prefix, bool isStart, int) {
  TheJournal().push_back((isStart ? "+" : "-") + std::string(prefix));
}

const cls_ClassRegistrar& Classes() {
  return omi_Singleton<cls_MetadataRegistrar>::Instance().ClassRegistrar();
}

} // namespace

namespace host_adapter {

Thrown Describe(const nex_Exception& exception) {
  return {exception.Message().CStr(), exception.SourceName().CStr(), exception.LineNumber(),
          exception.Uid()};
}

std::unique_ptr<Output> MakeOutput() {
  return std::make_unique<StreamOutput>();
}

std::unique_ptr<Input> MakeInput(const std::string& text) {
  return std::make_unique<StreamInput>(text);
}

std::unique_ptr<Store> MakeStore() {
  return std::make_unique<RecordStore>();
}

std::vector<TypeRow> TypeTable(unsigned int module) {
  const typ_ArchCompEntry entry = typ_ArchCompTable::FindEntry(module);
  std::vector<TypeRow> rows;
  for (unsigned int i = 0; i < entry.RowCount(); ++i) {
    const typ_Entry& row = entry.Row(i);
    rows.push_back({row.kind, row.secondWord, row.className != nullptr ? row.className : ""});
  }
  return rows;
}

std::vector<RegisteredClass> RegisteredClasses() {
  std::vector<RegisteredClass> classes;
  for (std::size_t i = 0; i < Classes().ClassCount(); ++i) {
    const cls_ClassMetadata& metadata = Classes().Class(i);
    RegisteredClass described = {metadata.TypeId(),           metadata.Name(),
                                 metadata.Adapter().Number(), metadata.Flags(),
                                 metadata.Dtor() != nullptr,  {}};
    for (const cls_ClassMetadata::Attribute& a : metadata.Attributes())
      described.attributes.push_back({a.name, a.type, a.argument, a.collection});
    classes.push_back(described);
  }
  return classes;
}

bool MakeAndDestroy(unsigned int typeId, const cls_ReadVisitor& visitor) {
  const cls_ClassMetadata* const found = Classes().FindClass(typeId);
  if (found == nullptr || found->Dtor() == nullptr) return false;
  found->Dtor()(found->Adapter().Create(visitor));
  return true;
}

std::vector<std::string> Journal() {
  mem_LifeCycle::SetListener(&Note);
  return TheJournal();
}

void Translate(const char* format, const char* text) {
  atr_SetTranslation(format, text);
}

std::string ScriptType(const omu_InterfaceObj& object) {
  return object.TypeString().CStr();
}

omu_Primitive* CallMethod(omu_InterfaceObj& object, const char* method) {
  return object.CallMethod(method, omu_PrimTuple());
}

std::vector<double> NumbersOf(const omu_Primitive& primitive) {
  const auto& tuple = dynamic_cast<const omu_PrimTuple&>(primitive);
  std::vector<double> numbers;
  for (std::size_t i = 0; i < tuple.Count(); ++i)
    numbers.push_back(tuple.Number(i));
  return numbers;
}

void Append(cls_xp1DArrayListUint& list, unsigned int number) {
  list.Append(number);
}

std::vector<unsigned int> NumbersOf(const cls_xp1DArrayListUint& list) {
  return {list.begin(), list.end()};
}

std::vector<float> NumbersOf(const g3d_Sphere& sphere) {
  const g3d_Point& c = sphere.Centre();
  return {c.x, c.y, c.z, c.w, sphere.Radius()};
}

} // namespace host_adapter
