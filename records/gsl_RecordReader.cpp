#include "gsl_RecordReader.h"

gsl_RecordReader::~gsl_RecordReader() = default;

std::size_t gsl_RecordReader::FindRoot(std::string_view name) const {
  const std::size_t count = RootCount();
  if (name.empty()) return count;
  std::size_t i = 0;
  while (i < count && RootName(i) != name)
    ++i;
  return i;
}

gsl_RecordReader::Header gsl_RecordReader::ReadHeader(gsl_RecordIndex record) const {
  return {TypeId(record), Collection(record), Identity(record), FirstField(record)};
}
