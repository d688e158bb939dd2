#include "MeshImporter.h"
#include "readers/MeshReadAssimp.h"

int main(int argc, char** argv) {
  return gsl_mesh::RunMeshImporter(argc, argv, gsl_mesh::ImportWithAssimp);
}
