// Loads any bytes as a file of records, and lists, shows, checks, converts and compares it as
// gsl-model does. A file is refused, or its conversion has the same contents.

#include "Reframed.h"
#include "gsl_RecordError.h"
#include "gsl_RecordFile.h"
#include "gsl_RecordStore.h"
#include "support/RecordCheck.h"
#include "support/RecordDiff.h"
#include "support/RecordJson.h"
#include "support/RecordText.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

namespace {

using namespace gsl_tools;

/// A file may hold a record at very many places; output after this much is not looked at.
constexpr std::size_t kMostText = std::size_t{1} << 20;
struct TooMuch {};

/// A file in memory, which has a path.
class MemoryFile {
public:
  explicit MemoryFile(const std::vector<unsigned char>& bytes) : m_file(memfd_create("model", 0)) {
    Require(m_file >= 0);
    Require(write(m_file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
  }
  ~MemoryFile() { close(m_file); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  std::string Path() const { return "/proc/self/fd/" + std::to_string(m_file); }

private:
  int m_file;
};

/// Returns what `write` writes, or an empty text for too much.
template <class Write>
std::string TextOf(const Write& write) {
  std::string text;
  TextPortions out([&](std::string_view portion) {
    text += portion;
    if (text.size() > kMostText) throw TooMuch();
  });
  try {
    write(out);
  } catch (const TooMuch&) {
    return {};
  }
  return text;
}

void RequireJson(const std::string& text) {
  if (!text.empty()) Require(nlohmann::json::accept(text));
}

void Show(const gsl_RecordStore& records) {
  RequireJson(TextOf([&](TextPortions& out) { ListAsJson(records, "a file", out); }));
  Require(!ListAsText(records).empty());
  CheckCycles(records);
  if (!CheckNesting(records).empty()) return;
  for (std::size_t i = 0; i < records.RootCount(); ++i) {
    TextOf([&](TextPortions& out) { ShowAsText(records, i, out); });
    RequireJson(TextOf([&](TextPortions& out) { ShowAsJson(records, i, "a file", out); }));
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  gsl_RecordStore records;
  try {
    records = gsl_LoadRecords(MemoryFile(Reframed(data, size)).Path());
  } catch (const gsl_RecordError&) {
    return 0;
  }
  const std::vector<unsigned char> bytes = records.ToBytes();
  const gsl_RecordStore converted = gsl_LoadRecords(MemoryFile(bytes).Path());
  Require(converted.ToBytes() == bytes);
  Show(records);
  if (CheckNesting(records).empty()) Require(DifferencesOf(records, converted).empty());
  return 0;
}
