#include "MachineMemory.h"
#include "readers/MeshReaders.h"
#include "readers/WordScanner.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

using gsl_arithmetic::Coord3;

namespace gsl_mesh {

namespace {

constexpr std::size_t kHeaderSize = 80;
constexpr std::size_t kPrefixSize = kBinaryStlPrefix; ///< header and count
constexpr std::size_t kRecordSize = 50; ///< normal, three corners, two attribute bytes

std::uint32_t LittleEndian32(const char* p) {
  const auto byte = [p](int k) {
    return static_cast<std::uint32_t>(static_cast<unsigned char>(p[k]));
  };
  return byte(0) | byte(1) << 8 | byte(2) << 16 | byte(3) << 24;
}

double LittleEndianFloat(const char* p) {
  const std::uint32_t bits = LittleEndian32(p);
  float value = 0.0F;
  std::memcpy(&value, &bits, sizeof value);
  return static_cast<double>(value);
}

Coord3 LittleEndianCorner(const char* p) {
  return {LittleEndianFloat(p), LittleEndianFloat(p + 4), LittleEndianFloat(p + 8)};
}

/// Appends the corners of a few records, whose memory is written once.
void AppendRecords(const char* records, std::size_t count, std::vector<Coord3>& corners) {
  constexpr std::size_t kBlock = 64;
  std::array<Coord3, 3 * kBlock> block;
  for (std::size_t begin = 0; begin < count; begin += kBlock) {
    const std::size_t size = std::min(kBlock, count - begin);
    for (std::size_t k = 0; k < size; ++k) {
      const char* const record = records + (begin + k) * kRecordSize;
      for (std::size_t c = 0; c < 3; ++c)
        block[3 * k + c] = LittleEndianCorner(record + 12 * (c + 1));
    }
    corners.insert(corners.end(), block.data(), block.data() + 3 * size);
  }
}

std::string_view WithoutLeadingSpace(std::string_view text) {
  while (!text.empty() && IsSpace(text.front()))
    text.remove_prefix(1);
  return text;
}

bool BeginsWithSolid(std::string_view bytes) {
  return BeginsWithNoCase(WithoutLeadingSpace(WithoutByteOrderMark(bytes)), "solid");
}

/// True for control characters other than white space, which no text holds.
bool HoldsBinary(std::string_view bytes) {
  return std::any_of(bytes.begin(), bytes.end(), [](char c) {
    return (static_cast<unsigned char>(c) < 0x20 && !IsSpace(c)) || c == '\x7f';
  });
}

/// A count that is too small would silently lose triangles. Fewer bytes than a record, or zeros
/// alone, cannot hold a triangle.
void CheckTrailing(const MeshSource& source, std::string_view trailing, std::size_t count,
                   Mesh& mesh) {
  if (trailing.empty()) return;
  const bool padding =
      std::all_of(trailing.begin(), trailing.end(), [](char c) { return c == '\0'; });
  if (trailing.size() >= kRecordSize && !padding) {
    FailRead(source, "the count of " + std::to_string(count) + " triangles leaves " +
                         std::to_string(trailing.size()) +
                         " bytes at the end of the file; the count or the file is damaged");
  }
  Warn(mesh, source,
       "ignored " + std::to_string(trailing.size()) + " bytes after the last triangle");
}

Mesh ReadBinary(const MeshSource& source) {
  const std::string_view bytes = source.bytes;
  if (bytes.size() < kPrefixSize) {
    FailRead(source, "is too short for an STL file (" + std::to_string(bytes.size()) +
                         " bytes); a binary file has at least 84, a text begins with 'solid'");
  }
  const std::size_t count = LittleEndian32(bytes.data() + kHeaderSize);
  const std::size_t room = (bytes.size() - kPrefixSize) / kRecordSize;
  if (count > room) {
    FailRead(source, "truncated: the count says " + std::to_string(count) +
                         " triangles, the file has room for " + std::to_string(room));
  }
  const char* records = bytes.data() + kPrefixSize;
  Mesh mesh = ReadBinaryStl(bytes.substr(0, kPrefixSize), [&](std::size_t size) {
    ReportPosition(source, records);
    return std::exchange(records, records + size);
  });
  CheckTrailing(source, bytes.substr(kPrefixSize + count * kRecordSize), count, mesh);
  return mesh;
}

void Expect(WordScanner& words, std::string_view keyword) {
  const std::string_view word = words.Next();
  if (word.size() == keyword.size() && BeginsWithNoCase(word, keyword)) return;
  const std::string expected = "expected '" + std::string(keyword) + "'";
  if (word.empty()) words.Fail("the file ends here; " + expected);
  const bool fourth = keyword == "endloop" && BeginsWithNoCase(word, "vertex");
  words.Fail(expected + ", found " + Quoted(word) + (fourth ? " (a facet has three corners)" : ""));
}

/// The normal is not used, and some writers print words that are not numbers. Three words are
/// skipped.
void SkipNormal(WordScanner& words) {
  Expect(words, "normal");
  for (int k = 0; k < 3; ++k) {
    const std::string_view word = words.Next();
    if (word.empty() || BeginsWithNoCase(word, "outer")) {
      words.Fail("expected three components of a normal");
    }
  }
}

void ReadFacet(WordScanner& words, Mesh& mesh) {
  SkipNormal(words);
  Expect(words, "outer");
  Expect(words, "loop");
  for (int k = 0; k < 3; ++k) {
    Expect(words, "vertex");
    const double x = words.Real("a coordinate");
    const double y = words.Real("a coordinate");
    const double z = words.Real("a coordinate");
    mesh.corners.push_back({x, y, z});
  }
  Expect(words, "endloop");
  Expect(words, "endfacet");
}

/// Reads from after the word 'solid' to the end of the line of 'endsolid'; a name may follow each.
void ReadSolid(WordScanner& words, Mesh& mesh) {
  words.SkipLine();
  for (;;) {
    const std::string_view word = words.Next();
    if (word.empty()) words.Fail("the file ends before 'endsolid'");
    if (BeginsWithNoCase(word, "endsolid")) break;
    if (word.size() != 5 || !BeginsWithNoCase(word, "facet")) {
      words.Fail("expected 'facet' or 'endsolid', found " + Quoted(word));
    }
    ReadFacet(words, mesh);
  }
  words.SkipLine();
}

Mesh ReadText(const MeshSource& source) {
  Mesh mesh;
  // A facet takes about 250 bytes, and at least 90 with one digit for each number.
  ReserveLarge(mesh.corners, source.bytes.size() / 80);
  WordScanner words(source, WithoutByteOrderMark(source.bytes), false);
  do {
    Expect(words, "solid");
    ReadSolid(words, mesh);
  } while (!words.AtEnd());
  return mesh;
}

/// Judges a file of the wrong size: it is a damaged binary file, unless its first bytes look like a
/// text.
bool IsDamagedBinaryStl(std::string_view bytes) {
  if (bytes.size() < kPrefixSize) return false;
  return !BeginsWithSolid(bytes) || HoldsBinary(bytes.substr(0, 512));
}

} // namespace

bool HasSizeOfBinaryStl(std::string_view prefix, std::size_t size) {
  return prefix.size() >= kPrefixSize &&
         size == kPrefixSize + LittleEndian32(prefix.data() + kHeaderSize) * kRecordSize;
}

Mesh ReadBinaryStl(std::string_view prefix, const std::function<const char*(std::size_t)>& next) {
  constexpr std::size_t kPart = kProgressStep / kRecordSize;
  const std::size_t count = LittleEndian32(prefix.data() + kHeaderSize);
  Mesh mesh;
  mesh.precision = Precision::Single;
  ReserveLarge(mesh.corners, 3 * count);
  for (std::size_t begin = 0; begin < count; begin += kPart) {
    const std::size_t size = std::min(kPart, count - begin);
    AppendRecords(next(size * kRecordSize), size, mesh.corners);
  }
  return mesh;
}

Mesh ReadStl(const MeshSource& source) {
  const std::string_view bytes = source.bytes;
  if (HasSizeOfBinaryStl(bytes, bytes.size())) return ReadBinary(source);
  if (!IsDamagedBinaryStl(bytes) && BeginsWithSolid(bytes)) return ReadText(source);
  const bool facetFirst = BeginsWithNoCase(WithoutLeadingSpace(bytes), "facet");
  if (facetFirst) FailRead(source, "line 1: expected 'solid' before the first facet");
  return ReadBinary(source);
}

} // namespace gsl_mesh
