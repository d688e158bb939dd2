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

/// Returns the whole file. It is not mapped: a file that is cut while it is read would then end the
/// program.
std::string Load(const std::string& path, Reporter& reporter) {
  // Without O_NONBLOCK, opening a pipe would wait for its other end.
  const FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (file.Get() < 0) FailFile(path, std::string("cannot be opened: ") + std::strerror(errno));
  std::string bytes(CheckedSize(file, path), '\0');
  for (std::size_t done = 0; done < bytes.size();) {
    const std::size_t step = std::min(kLoadingStep, bytes.size() - done);
    if (ReadBytes(file.Get(), path, bytes.data() + done, step) < step) {
      FailFile(path, "became shorter while it was read");
    }
    done += step;
    reporter.Report(kLoadingPart * static_cast<double>(done) / static_cast<double>(bytes.size()));
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

MeshFormat FormatOfContents(std::string_view bytes) {
  const std::string_view text = WithoutByteOrderMark(bytes);
  if (text.substr(0, 4) == "ply\n" || text.substr(0, 4) == "ply\r") return MeshFormat::Ply;
  if (bytes.substr(0, 4) == "glTF") return MeshFormat::Assimp;
  if (HasSizeOfBinaryStl(bytes) || IsTextStl(bytes)) return MeshFormat::Stl;
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
  return ImportMesh(MeshImportProgram(), source.file, ImportLimitsFor(source.bytes.size()));
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

Mesh ReadChecked(const MeshSource& source, MeshFormat format) {
  Mesh mesh = ReadSource(source, format);
  mesh.file = source.file;
  if (mesh.corners.empty()) FailRead(source, "holds no triangles");
  return mesh;
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
    const std::string bytes = Load(path, reporter);
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
