#include "MeshWrite.h"

#include "writers/MeshWriters.h"

namespace gsl_mesh {

namespace {

using MeshWriter = void (*)(const Mesh& mesh, MeshOutput& output);

MeshWriter WriterOf(MeshFormat format) {
  switch (format) {
  case MeshFormat::Stl:
    return WriteStl;
  case MeshFormat::Ply:
    return WritePly;
  case MeshFormat::Obj:
    return WriteObj;
  case MeshFormat::Off:
    return WriteOff;
  case MeshFormat::Assimp:
  case MeshFormat::Unknown:
    break;
  }
  return nullptr;
}

} // namespace

MeshFormat MeshFormatToWrite(const std::string& path) {
  return MeshFormatNamed(ExtensionOf(path));
}

void WriteMesh(const std::string& path, const Mesh& mesh, bool force) {
  const MeshWriter write = WriterOf(MeshFormatToWrite(path));
  if (write == nullptr) {
    throw OutputError(path + ": cannot be written in this format; expected a name in " +
                      MeshFormatNames("."));
  }
  OutputFile file(path, force);
  MeshOutput output(path, file);
  write(mesh, output);
  output.Flush();
  file.Commit();
}

} // namespace gsl_mesh
