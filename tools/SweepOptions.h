#ifndef GSL_TOOLS_SWEEP_OPTIONS_H
#define GSL_TOOLS_SWEEP_OPTIONS_H

#include "MeshFormat.h"
#include "support/Progress.h"
#include "support/UsageError.h"

#include "gsl_Arithmetic.h"

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

/// The command line of gsl-sweep.
namespace gsl_tools {

struct SweepOptions {
  std::string movingFile;                                      ///< as typed; "-" is standard input
  std::vector<std::string> fixedFiles;                         ///< at most one input of all is "-"
  gsl_mesh::MeshFormat format = gsl_mesh::MeshFormat::Unknown; ///< of a mesh on standard input
  gsl_arithmetic::Coord3 direction{0.0, 0.0, 0.0}; ///< not zero; of no use with many directions
  std::string directionsFile;                      ///< empty when not given; "-" is standard input
  std::size_t sphereCount = 0;                     ///< directions of --sphere; 0 when not given
  double allowance = 0.0; ///< by which the moving body is made thicker first
  std::string poseFile;   ///< empty when not given; "-" is standard input
  gsl_arithmetic::Coord3 offset{0.0, 0.0, 0.0};
  bool oneSided = false;
  bool leaving = false;          ///< may leave what it touches at the start
  bool solid = false;            ///< asks when the interiors of solids begin to overlap
  double clearance = 0.0;        ///< at least 0; 0 asks for contact
  bool last = false;             ///< asks for the last contact
  bool patch = false;            ///< asks for all pairs of the first contact
  std::size_t patchPairs = 1000; ///< the most pairs that are listed
  double maxDistance = std::numeric_limits<double>::infinity(); ///< at least 0
  std::string jsonFile, outputFile;                             ///< empty when not requested
  std::string viewFile;                                         ///< empty when not requested
  std::string pictureFile;                                      ///< empty when not requested
  unsigned threads = 1;
  ProgressStyle progress = ProgressStyle::Auto;
  bool quiet = false, verbose = false, force = false;

  bool ReadsMeshFromStdin() const {
    return movingFile == "-" ||
           std::find(fixedFiles.begin(), fixedFiles.end(), "-") != fixedFiles.end();
  }
  /// Returns whether anything lists the pairs of the patch.
  bool ListsPairs() const { return !jsonFile.empty() || !viewFile.empty() || !pictureFile.empty(); }
  bool JsonToStdout() const { return jsonFile == "-"; }
  bool JsonToFile() const { return !jsonFile.empty() && !JsonToStdout(); }
};

/// Reads the command line. Returns the text that is printed instead of a sweep, which is the help
/// or the version with a newline at its end; or returns an empty text.
///
/// Errors     UsageError. An unknown option is reported before a wrong value, a wrong value before
///            an unexpected argument, and a missing argument comes last.
std::string ParseSweepOptions(int argc, const char* const* argv, SweepOptions& options);

} // namespace gsl_tools

#endif
