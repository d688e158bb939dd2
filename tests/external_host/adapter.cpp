// The adapter of the second host for the conformance suite.

#include "HostAdapter.h"

#include "atr_String.h"
#include "cls_MetadataRegistrar.h"
#include "omu_PrimTuple.h"
#include "typ_ArchCompTable.h"
#include "xh_Journal.h"

#include <sstream>

namespace {

class OwnOutput : public host_adapter::Output {
public:
  aio_ostream& Stream() override { return m_stream; }
  std::string Delivered() override { return m_stream.xh_Delivered(); }

private:
  aio_ostream m_stream;
};

class OwnInput : public host_adapter::Input {
public:
  explicit OwnInput(const std::string& text) : m_stream(text.c_str()) {}
  aio_istream& Stream() override { return m_stream; }

private:
  aio_istream m_stream;
};

class OwnStore : public host_adapter::Store {
public:
  using Write = std::function<void(const cls_WriteVisitor&)>;
  using Read = std::function<void(const cls_ReadVisitor&)>;

  void Save(const Write& write) override {
    m_store.Save([](const cls_WriteVisitor& visitor,
                    const void* given) { (*static_cast<const Write*>(given))(visitor); },
                 &write);
  }
  void Load(std::size_t root, const Read& read) override {
    Read copy = read;
    m_store.Load(
        root,
        [](const cls_ReadVisitor& visitor, void* given) { (*static_cast<Read*>(given))(visitor); },
        &copy);
  }

private:
  xh_Store m_store;
};

cls_ClassRegistrar& Classes() {
  return omi_Singleton<cls_MetadataRegistrar>::Instance().ClassRegistrar();
}

} // namespace

namespace host_adapter {

Thrown Describe(const nex_Exception& exception) {
  return {exception.xh_Text().CStr(), exception.xh_Unit().CStr(), exception.xh_Line(),
          exception.xh_Subject()};
}

std::unique_ptr<Output> MakeOutput() {
  return std::make_unique<OwnOutput>();
}

std::unique_ptr<Input> MakeInput(const std::string& text) {
  return std::make_unique<OwnInput>(text);
}

std::unique_ptr<Store> MakeStore() {
  return std::make_unique<OwnStore>();
}

std::vector<TypeRow> TypeTable(unsigned int module) {
  std::vector<TypeRow> rows;
  const typ_ArchCompEntry* const table = typ_ArchCompTable::xh_Lookup(module);
  if (table == nullptr) return rows;
  for (const typ_Entry* row = table->xh_First(); row <= table->xh_Last(); ++row)
    rows.push_back({row->category, row->revision, row->label != nullptr ? row->label : ""});
  return rows;
}

std::vector<RegisteredClass> RegisteredClasses() {
  std::vector<RegisteredClass> classes;
  for (const cls_ClassMetadata& known : Classes().xh_Classes()) {
    const xh_Class& described = known.xh_Described();
    RegisteredClass one = {described.typeId,
                           described.name,
                           described.number,
                           known.xh_Flags(),
                           known.xh_Destroyer() != nullptr,
                           {}};
    for (const xh_Attribute& a : known.xh_Attributes())
      one.attributes.push_back({a.name, a.type, a.argument, a.collection});
    classes.push_back(one);
  }
  return classes;
}

bool MakeAndDestroy(unsigned int typeId, const cls_ReadVisitor& visitor) {
  const cls_ClassMetadata* const known = Classes().xh_Find(typeId);
  if (known == nullptr || known->xh_Destroyer() == nullptr) return false;
  known->xh_Destroyer()(known->xh_Described().make(visitor));
  return true;
}

std::vector<std::string> Journal() {
  std::vector<std::string> journal;
  std::istringstream text(xh_Journal());
  for (std::string word; text >> word;)
    journal.push_back(word);
  return journal;
}

void Translate(const char* format, const char* text) {
  xh_Translate(format, text);
}

std::string ScriptType(const omu_InterfaceObj& object) {
  return object.xh_TypeName();
}

omu_Primitive* CallMethod(omu_InterfaceObj& object, const char* method) {
  return object.xh_Call(method, omu_PrimTuple(0, '('));
}

std::vector<double> NumbersOf(const omu_Primitive& primitive) {
  const auto& numbers = dynamic_cast<const omu_PrimTuple&>(primitive).xh_Numbers();
  return {numbers.begin(), numbers.end()};
}

void Append(cls_xp1DArrayListUint& list, unsigned int number) {
  list.xh_Numbers().push_back(number);
}

std::vector<unsigned int> NumbersOf(const cls_xp1DArrayListUint& list) {
  return {list.xh_Numbers().begin(), list.xh_Numbers().end()};
}

std::vector<float> NumbersOf(const g3d_Sphere& sphere) {
  std::vector<float> numbers;
  for (int i = 0; i < 4; ++i)
    numbers.push_back(sphere.xh_Middle().xh_Value(i));
  numbers.push_back(sphere.xh_Size());
  return numbers;
}

} // namespace host_adapter
