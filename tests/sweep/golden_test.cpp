#include "ClearanceScenes.h"
#include "RandomNumbers.h"
#include "SweepScenes.h"
#include "SweepShapes.h"
#include "gsl_Sweep.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

/// Asks 500 questions and compares every bit of the answers with recorded ones.
///
/// The scenes are the same on every machine, and so must be the answers: for every compiler, level
/// of optimisation and processor. GSL_WRITE_GOLDEN names a file to write the answers to, in place
/// of a comparison.

namespace {

using namespace gsl_sweep;

Body BodyOf(const std::vector<Coord3>& corners) {
  TriangleView view;
  view.triangleCount = corners.size() / 3;
  view.vertexCount = corners.size();
  view.vertices = corners.empty() ? nullptr : &corners.front().x;
  return Body(view);
}

/// Hexadecimal, so that no bit is lost.
std::string TextOf(double x) {
  char text[64];
  std::snprintf(text, sizeof text, "%a", x);
  return text;
}

std::string TextOf(const Coord3& p) {
  return "(" + TextOf(p.x) + " " + TextOf(p.y) + " " + TextOf(p.z) + ")";
}

std::string TextOf(const Contact& c) {
  return TextOf(c.travel) + " kind " + std::to_string(static_cast<int>(c.kind)) +
         (c.overlapsAtStart ? " overlapping" : "") + (c.movingIsInside ? " moving inside" : "") +
         " pair " + std::to_string(c.movingTriangle) + " " + std::to_string(c.fixedTriangle) + " " +
         TextOf(c.movingPoint) + " " + TextOf(c.fixedPoint) +
         (c.hasNormal ? " normal " + TextOf(c.normal) : "");
}

std::string TextOf(const Answer& answer) {
  std::string text = "status " + std::to_string(static_cast<int>(answer.status)) + " along " +
                     TextOf(answer.unitDirection);
  const bool touches = answer.status == SweepStatus::Contact || answer.status == SweepStatus::Start;
  if (touches) text += " " + TextOf(answer.contact);
  if (!answer.isExact) text += " within " + TextOf(answer.errorBound);
  return text;
}

std::string TextOf(const PatchSummary& patch) {
  return TextOf(patch.first) + " " + std::to_string(patch.pairCount) + " pairs in " +
         TextOf(patch.low) + " " + TextOf(patch.high);
}

/// An answer, or the error in its place.
template <class Ask>
std::string Answered(Ask ask) {
  try {
    return TextOf(ask());
  } catch (const std::overflow_error&) {
    return "too far";
  }
}

/// One line for each question, the scene first.
class Record {
public:
  void AskSurfaces(std::size_t count) {
    for (std::size_t k = 0; k < count; ++k) {
      const reference::Scene scene =
          reference::MakeScene(k % reference::FamilyCount(), 5000 + k / reference::FamilyCount());
      const Pair pair(BodyOf(scene.question.moving), {BodyOf(scene.question.fixed)});
      Question question;
      question.direction = scene.question.direction;
      question.oneSided = scene.question.oneSided;
      if (scene.question.notLeaving || k % 7 == 3) question.rule = Rule::NotLeaving;
      const std::string name = scene.name + ", ";
      if (k % 5 == 1) {
        Add(name + "last", Answered([&] { return pair.Last(question); }));
      } else if (k % 5 == 2) {
        Add(name + "patch", Answered([&] { return pair.FindPatch(question, nullptr, 0); }));
      } else {
        Add(name + "first", Answered([&] { return pair.First(question); }));
      }
    }
  }

  /// A box or a plate meets a plate with a hole, on a coarse lattice, so that many walls coincide.
  void AskSolids(std::size_t count) {
    std::mt19937_64 random(6000);
    const auto whole = [&random](int low, int high) {
      return static_cast<double>(WholesIn<int>(low, high)(random));
    };
    for (std::size_t k = 0; k < count; ++k) {
      // One draw a line: compilers evaluate arguments in different orders.
      const double hole = whole(1, 3);
      const double outer = hole + whole(1, 3);
      const double low = whole(-3, -1);
      const double high = whole(0, 2);
      const gsl_mesh::Mesh fixed = sweep_shapes::PlateWithHole(outer, hole, low, high);
      const double size = whole(1, 3);
      const gsl_mesh::Mesh box = sweep_shapes::Box({-hole, -hole, -1.0}, {hole, hole, size});
      const gsl_mesh::Mesh plate = sweep_shapes::PlateWithHole(4.0, size, -1.0, 1.0);
      gsl_mesh::Mesh moving = k % 3 == 0 ? plate : box;
      moving = sweep_shapes::Moved(std::move(moving), {whole(-1, 1), whole(-1, 1), whole(-6, 6)});
      if (k % 10 == 9) {
        const double x = 0.5 * (hole + outer); // in the middle of a wall
        moving = sweep_shapes::Box({x - 0.125, -0.125, -0.125}, {x + 0.125, 0.125, -0.0625});
      }
      const Pair pair(BodyOf(moving.corners), {BodyOf(fixed.corners)});
      Question question;
      question.rule = Rule::Solid;
      question.direction = {whole(-1, 1), whole(-1, 1), whole(0, 1) == 0.0 ? -1.0 : 1.0};
      Add("solids " + std::to_string(k), Answered([&] { return pair.First(question); }));
    }
  }

  void AskClearances(std::size_t count) {
    const std::size_t families = reference::ClearanceFamilyCount();
    for (std::size_t k = 0; k < count; ++k) {
      const reference::ClearanceScene scene =
          reference::MakeClearanceScene(k % families, 7000 + k / families);
      const Pair pair(BodyOf(scene.moving), {BodyOf(scene.fixed)});
      Question question;
      question.direction = scene.direction;
      question.offset = scene.offset;
      question.clearance = scene.clearance;
      Add(scene.name + ", clearance", Answered([&] { return pair.First(question); }));
    }
  }

  const std::vector<std::string>& Lines() const { return m_lines; }

private:
  void Add(const std::string& question, const std::string& answer) {
    m_lines.push_back(question + ": " + answer);
  }

  std::vector<std::string> m_lines;
};

std::vector<std::string> LinesOf(const std::string& file) {
  std::ifstream stream(file);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);)
    lines.push_back(line);
  return lines;
}

/// Returns one number for all lines, to show in a table.
std::uint64_t HashOf(const std::vector<std::string>& lines) {
  std::uint64_t state = 0;
  for (const std::string& line : lines) {
    for (const char c : line) {
      state = (state ^ static_cast<unsigned char>(c)) * 0x9E3779B97F4A7C15ull;
      state ^= state >> 29;
    }
  }
  return state;
}

} // namespace

TEST(SweepGolden, AnswersAreTheSameBitsEverywhere) {
  Record record;
  record.AskSurfaces(400);
  record.AskSolids(50);
  record.AskClearances(50);
  if (const char* const file = std::getenv("GSL_WRITE_GOLDEN")) {
    std::ofstream stream(file);
    for (const std::string& line : record.Lines())
      stream << line << '\n';
    return;
  }
  const std::vector<std::string> recorded = LinesOf(GSL_GOLDEN_ANSWERS);
  ASSERT_EQ(recorded.size(), 500u);
  ASSERT_EQ(record.Lines().size(), recorded.size());
  for (std::size_t k = 0; k < recorded.size(); ++k)
    EXPECT_EQ(record.Lines()[k], recorded[k]);
  std::printf("answers 0x%016llx\n", static_cast<unsigned long long>(HashOf(record.Lines())));
}

TEST(SweepGolden, EveryKindOfAnswerIsRecorded) {
  std::ostringstream all;
  for (const std::string& line : LinesOf(GSL_GOLDEN_ANSWERS))
    all << line << '\n';
  const std::string text = all.str();
  for (const char* const part : {"status 0", "status 1", "status 2", "kind 0", "kind 1", "kind 2",
                                 "kind 3", "kind 4", "kind 5", "kind 6", "kind 7", "overlapping",
                                 "normal", "within", "pairs in", "last", "p-", "p+", "-0x"}) {
    EXPECT_NE(text.find(part), std::string::npos) << part;
  }
}
