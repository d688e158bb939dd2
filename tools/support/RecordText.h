#ifndef GSL_TOOLS_RECORD_TEXT_H
#define GSL_TOOLS_RECORD_TEXT_H

#include "gsl_RecordStore.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// Records as text for people. The tool reads records without the classes that wrote them.
namespace gsl_tools {

/// Passes text on in larger portions.
class TextPortions {
public:
  explicit TextPortions(std::function<void(std::string_view)> write) : m_write(std::move(write)) {}

  void Add(std::string_view text) {
    m_text += text;
    if (m_text.size() >= kPortion) Finish();
  }
  void Finish() {
    m_write(m_text);
    m_text.clear();
  }

private:
  static constexpr std::size_t kPortion = std::size_t{1} << 16;

  std::function<void(std::string_view)> m_write;
  std::string m_text;
};

/// Returns "0x030A0006".
std::string TypeIdText(std::uint32_t typeId);

/// Returns the name of the class, or its type id where the writer gave no name.
std::string ClassText(const gsl_RecordReader& records, std::uint32_t typeId);

/// Returns the prefix in 16 hexadecimal digits, a colon and the serial; "null" for the null
/// identity.
std::string IdentityText(const gsl_RecordIdentity& identity);

/// Returns the bits of a double, "0x7ff8000000000000".
std::string BitsText(double value);

/// Returns whether a decimal number does not say everything: for NaN, an infinity and -0.
bool NeedsBits(double value);

/// Returns the shortest decimal number that reads back as the same double; the bits of a NaN
/// follow.
std::string RealText(double value);

/// Returns the value of a field in one line. A record is its class and identity.
std::string ValueText(const gsl_RecordReader& records, const gsl_RecordField& field);

/// Returns the elements of a record that is a list of numbers, in one line; else an empty text.
std::string ElementsText(const gsl_RecordReader& records, gsl_RecordIndex record);

/// Returns the name of a root in quotes where it is needed, or "root 3".
std::string RootText(const gsl_RecordReader& records, std::size_t root);

/// Returns one line for each root and a first line with their number.
std::string ListAsText(const gsl_RecordStore& records);

/// Writes a root and everything that it holds, one line for each field. Requires records that
/// CheckNesting accepts.
void ShowAsText(const gsl_RecordReader& records, std::size_t root, TextPortions& out);

} // namespace gsl_tools

#endif
