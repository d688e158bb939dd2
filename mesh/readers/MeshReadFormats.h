#ifndef GSL_MESH_READ_FORMATS_H
#define GSL_MESH_READ_FORMATS_H

#include "Mesh.h"
#include "MeshPolygon.h"
#include "OneLine.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// What the mesh readers share. Not for use outside them.
namespace gsl_sweep {

/// A whole file in memory, with the name that messages use.
struct MeshSource {
  std::string_view bytes;
  std::string file;
};

Mesh ReadStl(const MeshSource& source);
Mesh ReadObj(const MeshSource& source);
Mesh ReadPly(const MeshSource& source);
Mesh ReadOff(const MeshSource& source);

/// True for a file that is a binary STL by its size or, when the size is wrong, by its bytes.
bool IsBinaryStl(std::string_view bytes);

/// True when the first word is an OFF keyword such as OFF, COFF or STNOFF.
bool BeginsWithOffKeyword(std::string_view bytes);

/// Throws MeshError: file, then the message; the second form puts the line of `position` between.
[[noreturn]] void FailRead(const MeshSource& source, const std::string& message);
[[noreturn]] void FailReadAt(const MeshSource& source, const char* position,
                             const std::string& message);

[[noreturn]] void FailUnknownFormat(const MeshSource& source);

/// `text` in quotes, made fit for a message: shortened, control characters as '?'.
std::string Quoted(std::string_view text);

/// Number, from 1, of the line that holds `position`; LF, CRLF and CR each end a line.
std::size_t LineOf(std::string_view bytes, const char* position);

/// All of `token` as a number, correctly rounded; a leading '+' and the names that C libraries
/// print for NaN and infinity are read too. False when it is anything else.
bool ParseReal(std::string_view token, double& value);

/// All of `token` as a decimal integer of at most 64 bits.
bool ParseInteger(std::string_view token, std::int64_t& value);

inline bool IsSpace(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

/// True when `text` begins with `lowerCase`, letters compared in any case.
bool BeginsWithNoCase(std::string_view text, std::string_view lowerCase);

/// Physical memory in bytes; 0 when it is not known.
std::uint64_t MemoryOfMachine();

/// `bytes` without the mark that some editors put before UTF-8 text.
std::string_view WithoutByteOrderMark(std::string_view bytes);

/// White-space separated words of a text, wherever its lines end. A '#' begins a comment when
/// `comments` is set.
class WordScanner {
public:
  WordScanner(const MeshSource& source, std::string_view text, bool comments)
      : m_source(source), m_next(text.data()), m_end(text.data() + text.size()),
        m_word(text.data()), m_comments(comments) {}

  /// The next word; empty at the end of the text.
  std::string_view Next();

  /// The next word if it stands on the line of the last one, else empty.
  std::string_view NextOnLine();

  /// Goes behind the end of the line of the last word.
  void SkipLine();

  /// The next word as a number; `what` names it in the error.
  double Real(const char* what);
  std::int64_t Integer(const char* what);

  bool AtEnd();
  std::size_t BytesLeft() const { return static_cast<std::size_t>(m_end - m_next); }
  const char* Position() const { return m_next; }

  /// Throws MeshError for the line of the last word.
  [[noreturn]] void Fail(const std::string& message) const {
    FailReadAt(m_source, m_word, message);
  }

private:
  void SkipSpace(bool stayOnLine);
  std::string_view Word();

  const MeshSource& m_source;
  const char* m_next;
  const char* m_end;
  const char* m_word; ///< where the last word began
  bool m_comments;
};

/// Takes faces in file order and appends their triangles to a mesh.
class FaceCollector {
public:
  FaceCollector(const MeshSource& source, Mesh& mesh) : m_source(source), m_mesh(mesh) {}

  /// Appends the triangles of one face; `position` is where messages say that it stands, or null.
  void Add(const gsl_arithmetic::Coord3* ring, std::size_t count, const char* position);

  /// Writes the warning about faces that were left out.
  void Finish();

private:
  const MeshSource& m_source;
  Mesh& m_mesh;
  PolygonTriangulator m_triangulator;
  std::size_t m_faces = 0;
  std::size_t m_leftOut = 0;
  std::size_t m_firstLeftOut = 0;
};

} // namespace gsl_sweep

#endif
