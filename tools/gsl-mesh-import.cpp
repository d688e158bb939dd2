#include "MeshImporter.h"
#include "readers/MeshReadAssimp.h"

int main(int argc, char** argv) {
  return gsl_sweep::RunMeshImporter(argc, argv, gsl_sweep::ImportWithAssimp);
}
