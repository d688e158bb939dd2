#include "MeshRead.h"

#include "FileDescriptor.h"
#include "MachineMemory.h"
#include "MeshForeign.h"
#include "MeshImport.h"
#include "MeshSource.h"
#include "readers/MeshReaders.h"
#include "readers/WordScanner.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace gsl_mesh {

namespace {

[[noreturn]] void FailFile(const std::string& path, const std::string& message) {
  FailRead({{}, path}, message);
}

const char* KindOf(mode_t mode) {
  if (S_ISDIR(mode)) return "a directory";
  if (S_ISFIFO(mode)) return "a pipe";
  if (S_ISSOCK(mode)) return "a socket";
  return "a device";
}

/// Returns the size of a regular file that fits into memory.
std::size_t CheckedSize(const FileDescriptor& file, const std::string& path) {
  struct stat status {};
  if (fstat(file.Get(), &status) != 0) {
    FailFile(path, std::string("cannot be read: ") + std::strerror(errno));
  }
  if (!S_ISREG(status.st_mode)) {
    FailFile(path, std::string("is ") + KindOf(status.st_mode) + ", not a mesh file");
  }
  if (status.st_size <= 0) FailFile(path, "is empty");
  const auto size = static_cast<std::uint64_t>(status.st_size);
  const std::uint64_t memory = MemoryOfMachine();
  if (memory > 0 && size > memory) {
    FailFile(path, "has " + std::to_string(size) + " bytes, more than the memory of this machine");
  }
  return size;
}

/// Reads `size` bytes, or fewer at the end of the file.
std::size_t ReadBytes(int descriptor, const std::string& name, char* bytes, std::size_t size) {
  std::size_t done = 0;
  while (done < size) {
    const ssize_t got = read(descriptor, bytes + done, size - done);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0 && errno == EAGAIN) {
      // The caller of the program may have left a pipe in this mode.
      pollfd waited{descriptor, POLLIN, 0};
      poll(&waited, 1, -1);
      continue;
    }
    if (got < 0) FailFile(name, std::string("cannot be read: ") + std::strerror(errno));
    if (got == 0) break;
    done += static_cast<std::size_t>(got);
  }
  return done;
}

/// The part of the work that loading a file is, before its reader begins.
constexpr double kLoadingPart = 0.25;
constexpr std::size_t kLoadingStep = std::size_t{1} << 23;

/// The progress of loading a file and of its reader, in one.
class Reporter {
public:
  explicit Reporter(const MeshProgress& progress)
      : m_progress(progress),
        m_ofReader([this](double part) { Report(kLoadingPart + (1.0 - kLoadingPart) * part); }) {}
  Reporter(const Reporter&) = delete;
  Reporter& operator=(const Reporter&) = delete;

  void Report(double part) {
    if (!m_progress) return;
    // A reader may look ahead and come back.
    m_reported = std::max(m_reported, part);
    m_progress(m_reported);
  }

  /// Returns what the reader reports to; null when nobody wants to know.
  const MeshProgress* OfReader() const { return m_progress ? &m_ofReader : nullptr; }

private:
  const MeshProgress& m_progress;
  MeshProgress m_ofReader;
  double m_reported = 0.0;
};

/// A file that is being read. It is not mapped: a file that is cut while it is read would then end
/// the program.
class InputFile {
public:
  // Without O_NONBLOCK, opening a pipe would wait for its other end.
  explicit InputFile(const std::string& path)
      : m_path(path), m_file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
    if (m_file.Get() < 0) FailFile(path, std::string("cannot be opened: ") + std::strerror(errno));
    m_size = CheckedSize(m_file, path);
  }

  std::size_t Size() const { return m_size; }

  /// Returns the part that has been read.
  double Part() const { return static_cast<double>(m_done) / static_cast<double>(m_size); }

  /// Reads the next `size` bytes. Requires that the file had as many when it was opened.
  void Read(char* bytes, std::size_t size) {
    if (ReadBytes(m_file.Get(), m_path, bytes, size) < size) {
      FailFile(m_path, "became shorter while it was read");
    }
    m_done += size;
  }

private:
  const std::string& m_path;
  FileDescriptor m_file;
  std::size_t m_size = 0;
  std::size_t m_done = 0;
};

/// Returns the whole file, whose first bytes have been read.
std::string Load(InputFile& file, std::string_view first, Reporter& reporter) {
  std::string bytes;
  ReserveLarge(bytes, file.Size());
  bytes.resize(file.Size());
  std::copy(first.begin(), first.end(), bytes.begin());
  for (std::size_t done = first.size(); done < bytes.size();) {
    const std::size_t step = std::min(kLoadingStep - done % kLoadingStep, bytes.size() - done);
    file.Read(bytes.data() + done, step);
    done += step;
    reporter.Report(kLoadingPart * file.Part());
  }
  return bytes;
}

/// Reads to the end of a file or a pipe.
std::string LoadStream(int descriptor, const std::string& name) {
  constexpr std::size_t kLeastRoom = 1 << 16;
  const std::uint64_t memory = MemoryOfMachine();
  std::string bytes;
  for (std::size_t size = 0;;) {
    if (memory > 0 && size > memory) FailFile(name, "is larger than the memory of this machine");
    bytes.resize(size + std::max(kLeastRoom, size / 2));
    const std::size_t got = ReadBytes(descriptor, name, bytes.data() + size, bytes.size() - size);
    size += got;
    if (size < bytes.size()) {
      bytes.resize(size);
      return bytes;
    }
  }
}

/// Any text may begin with 'solid', so a facet or the end of the solid must follow.
bool IsTextStl(std::string_view bytes) {
  bytes = WithoutByteOrderMark(bytes);
  const std::size_t begin = bytes.find_first_not_of(" \t\r\n\v\f");
  if (begin == std::string_view::npos || !BeginsWithNoCase(bytes.substr(begin), "solid")) {
    return false;
  }
  const std::size_t lineEnd = bytes.find_first_of("\r\n", begin);
  if (lineEnd == std::string_view::npos) return false;
  const std::size_t word = bytes.find_first_not_of(" \t\r\n\v\f", lineEnd);
  if (word == std::string_view::npos) return false;
  return BeginsWithNoCase(bytes.substr(word), "facet") ||
         BeginsWithNoCase(bytes.substr(word), "endsolid");
}

/// Returns the format of a binary file, of which `first` holds at least the first kBinaryStlPrefix
/// bytes; Unknown when the rest of the file must be seen.
MeshFormat FormatOfFirstBytes(std::string_view first, std::size_t size) {
  const std::string_view text = WithoutByteOrderMark(first);
  if (text.substr(0, 4) == "ply\n" || text.substr(0, 4) == "ply\r") return MeshFormat::Ply;
  if (first.substr(0, 4) == "glTF") return MeshFormat::Assimp;
  return HasSizeOfBinaryStl(first, size) ? MeshFormat::Stl : MeshFormat::Unknown;
}

MeshFormat FormatOfContents(std::string_view bytes) {
  const MeshFormat format = FormatOfFirstBytes(bytes, bytes.size());
  if (format != MeshFormat::Unknown) return format;
  if (IsTextStl(bytes)) return MeshFormat::Stl;
  if (BeginsWithOffKeyword(bytes)) return MeshFormat::Off;
  return MeshFormat::Unknown;
}

MeshFormat FormatOfExtension(const std::string& extension) {
  const MeshFormat named = MeshFormatNamed(extension);
  if (named != MeshFormat::Unknown) return named;
  // The import program decides which other formats Assimp knows.
  return extension.empty() ? MeshFormat::Unknown : MeshFormat::Assimp;
}

Mesh ReadThroughAssimp(const MeshSource& source) {
#ifdef GSL_WITHOUT_ASSIMP
  FailRead(source,
           "cannot be read: this program was built without Assimp; expected STL, PLY, OBJ or OFF");
#else
  Mesh mesh = ImportMesh(MeshImportProgram(), source.file, ImportLimitsFor(source.bytes.size()));
  mesh.precision = Precision::Single; // as Assimp keeps coordinates
  return mesh;
#endif
}

Mesh ReadSource(const MeshSource& source, MeshFormat format) {
  switch (format) {
  case MeshFormat::Stl:
    return ReadStl(source);
  case MeshFormat::Obj:
    return ReadObj(source);
  case MeshFormat::Ply:
    return ReadPly(source);
  case MeshFormat::Off:
    return ReadOff(source);
  case MeshFormat::Assimp:
    return ReadThroughAssimp(source);
  case MeshFormat::Unknown:
    break;
  }
  FailUnknownFormat(source);
}

Mesh Checked(Mesh mesh, const std::string& name) {
  mesh.file = name;
  if (mesh.corners.empty()) FailFile(name, "holds no triangles");
  return mesh;
}

Mesh ReadChecked(const MeshSource& source, MeshFormat format) {
  return Checked(ReadSource(source, format), source.file);
}

/// Reads a binary STL file part by part, so that its bytes are never in memory all at once.
Mesh ReadBinaryStlFile(InputFile& file, std::string_view first, Reporter& reporter) {
  std::string part;
  return ReadBinaryStl(first, [&](std::size_t size) {
    part.resize(size);
    reporter.Report(file.Part());
    file.Read(part.data(), size);
    return part.data();
  });
}

void RefuseForeign(const MeshSource& source) {
  const std::string foreign = ForeignFile(source.bytes, source.file);
  if (!foreign.empty()) FailRead(source, foreign);
}

Mesh ReadDetected(const MeshSource& source) {
  if (FormatOfContents(source.bytes) == MeshFormat::Unknown) RefuseForeign(source);
  return ReadChecked(source, DetectMeshFormat(source.bytes, source.file));
}

/// A stream has no extension: `wanted` takes its place.
MeshFormat FormatOfStream(const MeshSource& source, MeshFormat wanted) {
  const MeshFormat found = FormatOfContents(source.bytes);
  if (found == MeshFormat::Assimp) {
    FailRead(source, "is of a format that is read from files only; expected " +
                         MeshFormatNames("") + " here");
  }
  if (found == MeshFormat::Unknown) RefuseForeign(source);
  if (found == MeshFormat::Unknown && wanted == MeshFormat::Unknown) {
    FailRead(source,
             "its contents do not show the format; expected --format with " + MeshFormatNames(""));
  }
  if (found != MeshFormat::Unknown && wanted != MeshFormat::Unknown && found != wanted) {
    FailRead(source, "its contents are " + std::string(NameOf(found)) + ", but --format says " +
                         std::string(NameOf(wanted)));
  }
  return found != MeshFormat::Unknown ? found : wanted;
}

template <class Read>
Mesh WithMemory(const std::string& name, const Read& read) {
  try {
    return read();
  } catch (const std::bad_alloc&) {
    FailFile(name, "not enough memory to read it");
  } catch (const std::length_error&) {
    FailFile(name, "not enough memory to read it");
  }
}

} // namespace

MeshFormat DetectMeshFormat(std::string_view bytes, const std::string& name) {
  const MeshFormat format = FormatOfContents(bytes);
  return format != MeshFormat::Unknown ? format : FormatOfExtension(ExtensionOf(name));
}

Mesh ReadMeshFromMemory(std::string_view bytes, const std::string& name, MeshFormat format) {
  const MeshFormat readable = format == MeshFormat::Assimp ? MeshFormat::Unknown : format;
  return ReadChecked({bytes, name}, readable);
}

Mesh ReadMesh(const std::string& path, const MeshProgress& progress) {
  return WithMemory(path, [&] {
    Reporter reporter(progress);
    InputFile file(path);
    std::string first(std::min(file.Size(), kBinaryStlPrefix), '\0');
    file.Read(first.data(), first.size());
    if (FormatOfFirstBytes(first, file.Size()) == MeshFormat::Stl) {
      return Checked(ReadBinaryStlFile(file, first, reporter), path);
    }
    const std::string bytes = Load(file, first, reporter);
    return ReadDetected({bytes, path, reporter.OfReader()});
  });
}

Mesh ReadMeshFromStream(int descriptor, const std::string& name, MeshFormat format,
                        const MeshProgress& progress) {
  return WithMemory(name, [&] {
    Reporter reporter(progress);
    const std::string bytes = LoadStream(descriptor, name);
    if (bytes.empty()) FailFile(name, "is empty");
    const MeshSource source{bytes, name, reporter.OfReader()};
    return ReadChecked(source, FormatOfStream(source, format));
  });
}

} // namespace gsl_mesh
