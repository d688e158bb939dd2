#ifndef GSL_TOOLS_REPORT_H
#define GSL_TOOLS_REPORT_H

#include "AnswerNames.h"
#include "Mesh.h"
#include "gsl_Matrix.h"
#include "gsl_Sweep.h"

#include <optional>
#include <string>
#include <vector>

/// The result of the sweep of mesh files, for people and for programs.
namespace gsl_tools {

using gsl_arithmetic::Coord3;
using gsl_mesh::Mesh;
using gsl_sweep::Answer;
using gsl_sweep::Body;
using gsl_sweep::ContactKind;
using gsl_view::KindName;

/// What a report says of a body apart from the contact.
struct BodyCounts {
  std::size_t triangles = 0; ///< of the mesh
  std::size_t skipped = 0;   ///< with a NaN or infinite corner
  std::size_t leftOut = 0;   ///< by oneSided
};

/// One of the bodies that stay.
struct FixedBody {
  std::string file; ///< as it was given; "-" is standard input
  BodyCounts counts;
};

/// What a report says apart from the answers.
struct SceneReport {
  std::string movingFile;         ///< as it was given; "-" is standard input
  double allowance = 0.0;         ///< by which the moving body was grown first
  double deviation = 0.0;         ///< the greatest amount by which a plane is off the allowance
  std::optional<gsl_Matrix> pose; ///< where the moving body was placed, before the offset
  Coord3 offset{0.0, 0.0, 0.0};   ///< added to the moving body
  double maxDistance = std::numeric_limits<double>::infinity(); ///< as requested
  bool oneSided = false;
  gsl_sweep::Rule rule = gsl_sweep::Rule::Touch;
  double clearance = 0.0;  ///< 0 for contact
  bool last = false;       ///< the answers are last contacts
  std::string toolVersion; ///< version of the program that reports
  BodyCounts moving;
  std::vector<FixedBody> fixed; ///< in the order of the answer; at least one
  std::vector<std::string> warnings;
};

/// All pairs of triangles that touch at the first contact.
struct PatchReport {
  std::size_t pairCount = 0;
  Coord3 low{0.0, 0.0, 0.0}, high{0.0, 0.0, 0.0}; ///< the box around them; of no use without a pair
  std::vector<gsl_sweep::Contact> listed;         ///< the first of them
};

struct SweepReport : SceneReport {
  Answer answer;
  std::optional<PatchReport> patch; ///< where it was requested
};

inline bool Touches(const Answer& answer) {
  return answer.status == gsl_sweep::SweepStatus::Contact ||
         answer.status == gsl_sweep::SweepStatus::Start;
}

/// Returns the name of a body in the text: "standard input" for "-".
std::string NameInText(const std::string& file);

/// Returns one line for each body, each ended by a newline.
std::string BodiesAsText(const SceneReport& report);

/// Returns what is not exact, in lines that end with newlines: what has an error bound, in words
/// such as "each coordinate is", and an allowance. An empty text means that everything is exact.
std::string ErrorsAsText(const SceneReport& report, const char* what, double errorBound);

/// Returns three lines, each ended by a newline, one more for a patch, and those of ErrorsAsText.
/// Without a contact each fixed body has its own line. A body that is around the other has no
/// triangle in its line.
std::string ReportAsText(const SweepReport& report);

/// Returns one strict JSON document, ended by a newline; docs/gsl-sweep.md and
/// docs/gsl-sweep.schema.json describe it. Numbers read back as the same doubles. Bytes of file
/// names that are not UTF-8 become U+FFFD.
std::string ReportAsJson(const SweepReport& report);

/// Returns one line when the sizes of two bodies (the diagonals of their boxes) differ by a factor
/// of 25.4, within a tenth of it, or of 400 to 10000, as if their units differed; else an empty
/// text.
std::string SizeWarning(const std::string& movingFile, const Body& moving,
                        const std::string& fixedFile, const Body& fixed);

/// Returns one line when the sweep skipped triangles of a mesh; else an empty text.
std::string SkippedWarning(const std::string& file, const BodyCounts& body);

/// Throws std::overflow_error when the offset moves a triangle beyond the range of double; messages
/// call the body `name`.
void RequireOffsetInRange(const Body& body, const Coord3& offset, const std::string& name);

/// Adds `step` to every corner. Throws std::overflow_error when that moves a finite corner beyond
/// the range of double; what() begins with `cause`.
void Translate(Mesh& mesh, const Coord3& step, const std::string& cause);

/// Returns the body after its travel. Throws std::overflow_error as Translate does.
Mesh MovedMesh(Mesh mesh, const Answer& answer);

} // namespace gsl_tools

#endif
