#ifndef TEST_SUPPORT_FORWARDING_READER_H
#define TEST_SUPPORT_FORWARDING_READER_H

#include "gsl_RecordStore.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

/// A reader that is not a store: the visitor cannot see where the records are.
class ForwardingReader final : public gsl_RecordReader {
public:
  explicit ForwardingReader(const gsl_RecordStore& store) : m_store(store) {}
  std::size_t RootCount() const override { return m_store.RootCount(); }
  gsl_RecordIndex Root(std::size_t i) const override { return m_store.Root(i); }
  std::string_view RootName(std::size_t i) const override { return m_store.RootName(i); }
  std::string_view ClassName(std::uint32_t id) const override { return m_store.ClassName(id); }
  std::uint32_t TypeId(gsl_RecordIndex record) const override { return m_store.TypeId(record); }
  gsl_RecordIdentity Identity(gsl_RecordIndex record) const override {
    return m_store.Identity(record);
  }
  gsl_RecordCollection Collection(gsl_RecordIndex record) const override {
    return m_store.Collection(record);
  }
  Position FirstField(gsl_RecordIndex record) const override { return m_store.FirstField(record); }
  Position ReadField(Position position, gsl_RecordField& field) const override {
    return m_store.ReadField(position, field);
  }
  void ReadUnsigneds(gsl_RecordIndex record, std::vector<std::uint32_t>& values) const override {
    m_store.ReadUnsigneds(record, values);
  }
  void ReadDoubles(gsl_RecordIndex record, std::vector<double>& values, std::size_t& rows,
                   std::size_t& columns) const override {
    m_store.ReadDoubles(record, values, rows, columns);
  }

private:
  const gsl_RecordStore& m_store;
};

#endif
