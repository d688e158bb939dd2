#include "MeshForeign.h"

#include "MeshFormat.h"
#include "readers/WordScanner.h"

#include <algorithm>
#include <initializer_list>

namespace gsl_mesh {

namespace {

bool IsOneOf(std::string_view extension, std::initializer_list<std::string_view> names) {
  return std::find(names.begin(), names.end(), extension) != names.end();
}

/// The header of a STEP file names the schema of the rest of the file.
bool IsBuildingModel(std::string_view bytes) {
  const std::string_view header = bytes.substr(0, bytes.find("ENDSEC"));
  const std::size_t schema = header.find("FILE_SCHEMA");
  return schema != header.npos && header.find("'IFC", schema) != header.npos;
}

bool IsStep(std::string_view bytes, std::string_view extension) {
  std::string_view text = WithoutByteOrderMark(bytes);
  text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
  const bool begins = text.substr(0, 13) == "ISO-10303-21;";
  return (begins || IsOneOf(extension, {"step", "stp", "p21"})) && !IsBuildingModel(text);
}

/// IGES has records of 80 characters. Column 73 names the section, here the first section, and the
/// last seven columns hold the number of the record.
bool BeginsAsIges(std::string_view bytes) {
  constexpr std::size_t kSectionColumn = 72;
  constexpr std::size_t kRecordSize = 80;
  const std::string_view record = bytes.substr(0, kRecordSize);
  if (record.size() < kRecordSize || record[kSectionColumn] != 'S') return false;
  const std::string_view number = record.substr(kSectionColumn + 1);
  const std::size_t digit = std::min(number.find_first_not_of(" 0"), number.size());
  return number.substr(digit) == "1" && record.find_first_of("\r\n") == record.npos;
}

bool IsTextCharacter(char c) {
  return IsSpace(c) || (c >= ' ' && c <= '~');
}

/// True when every other byte from `first` on is zero and the bytes between are text.
bool HasZerosBetween(std::string_view bytes, std::size_t first) {
  constexpr std::size_t kLeast = 8;
  constexpr std::size_t kEnough = 64;
  const std::size_t size = std::min(bytes.size() / 2 * 2, kEnough);
  if (size < kLeast) return false;
  for (std::size_t k = 0; k < size; ++k) {
    const bool shouldBeZero = k % 2 == first;
    if (shouldBeZero ? bytes[k] != '\0' : !IsTextCharacter(bytes[k])) return false;
  }
  return true;
}

bool IsUtf16(std::string_view bytes) {
  const std::string_view mark = bytes.substr(0, 2);
  return mark == "\xFF\xFE" || mark == "\xFE\xFF" || HasZerosBetween(bytes, 1) ||
         HasZerosBetween(bytes, 0);
}

std::string NotAMesh(const std::string& kind) {
  return "is " + kind + " file, not a mesh; export a mesh from the CAD program, for example as STL";
}

} // namespace

std::string ForeignFile(std::string_view bytes, const std::string& name) {
  const std::string extension = ExtensionOf(name);
  if (IsStep(bytes, extension)) return NotAMesh("a STEP");
  if (BeginsAsIges(bytes) || IsOneOf(extension, {"igs", "iges"})) return NotAMesh("an IGES");
  const bool isGzip = bytes.substr(0, 2) == "\x1F\x8B";
  const bool isOurs = extension.empty() || MeshFormatNamed(extension) != MeshFormat::Unknown;
  if (extension == "gz" || (isOurs && isGzip)) {
    return "is compressed with gzip; unpack it first, for example with gunzip";
  }
  if (isOurs && IsUtf16(bytes)) {
    return "is text in UTF-16; convert it to UTF-8 first, for example with "
           "iconv -f UTF-16 -t UTF-8";
  }
  return {};
}

} // namespace gsl_mesh
