#include "support/Directions.h"

#include "JsonDocuments.h"
#include "SweepShapes.h"
#include "TemporaryFolder.h"
#include "support/MeshView.h"
#include "support/Report.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <string>
#include <vector>

namespace {

using namespace gsl_tools;
using gsl_sweep::Answer;
using gsl_sweep::Body;
using gsl_sweep::Pair;
using gsl_sweep::Question;
using gsl_sweep::Run;
using gsl_sweep::SweepStatus;
using nlohmann::json;
using sweep_shapes::Box;

std::vector<DirectionLine> LinesOf(const std::string& text) {
  DirectionLines parser;
  std::vector<DirectionLine> lines = parser.Add(text);
  const std::vector<DirectionLine> last = parser.Finish();
  lines.insert(lines.end(), last.begin(), last.end());
  return lines;
}

void ExpectLine(const DirectionLine& line, std::size_t number, double x, double y, double z) {
  EXPECT_EQ(line.error, "");
  EXPECT_EQ(line.line, number);
  EXPECT_EQ(line.direction.x, x);
  EXPECT_EQ(line.direction.y, y);
  EXPECT_EQ(line.direction.z, z);
}

TEST(Directions, LinesAreReadInEveryForm) {
  const auto lines = LinesOf("x\n-Z\n1,2,-3.5\n0 0 -1\r\n\t 1e-300 , 0,0 # tiny\n+y");
  ASSERT_EQ(lines.size(), 6u);
  ExpectLine(lines[0], 1, 1, 0, 0);
  ExpectLine(lines[1], 2, 0, 0, -1);
  ExpectLine(lines[2], 3, 1, 2, -3.5);
  ExpectLine(lines[3], 4, 0, 0, -1);
  ExpectLine(lines[4], 5, 1e-300, 0, 0);
  ExpectLine(lines[5], 6, 0, 1, 0);
}

TEST(Directions, EmptyLinesAndCommentsAreCountedAndPassedOver) {
  const auto lines = LinesOf("\n# x\n  \t\r\nx\n#\n\n-x\n\n");
  ASSERT_EQ(lines.size(), 2u);
  ExpectLine(lines[0], 4, 1, 0, 0);
  ExpectLine(lines[1], 7, -1, 0, 0);
  EXPECT_TRUE(LinesOf("").empty());
  EXPECT_TRUE(LinesOf("\n").empty());
}

TEST(Directions, ByteOrderMarkIsLeftOutOfTheFirstLineOnly) {
  const auto lines = LinesOf("\xef\xbb\xbfx\n\xef\xbb\xbfy\n");
  ASSERT_EQ(lines.size(), 2u);
  ExpectLine(lines[0], 1, 1, 0, 0);
  EXPECT_NE(lines[1].error, "");
}

TEST(Directions, LinesMayArriveInParts) {
  DirectionLines parser;
  EXPECT_TRUE(parser.Add("").empty());
  EXPECT_TRUE(parser.Add("1,").empty());
  EXPECT_TRUE(parser.Add("2,").empty());
  auto lines = parser.Add("3\n\n-");
  ASSERT_EQ(lines.size(), 1u);
  ExpectLine(lines[0], 1, 1, 2, 3);
  lines = parser.Finish();
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0].line, 3u);
  EXPECT_EQ(lines[0].error, "a direction must be X,Y,Z or an axis such as z or -z (got -)");
}

std::string ErrorOf(const std::string& line) {
  const auto lines = LinesOf(line);
  return lines.size() == 1 ? lines[0].error : "not one line";
}

TEST(Directions, LinesThatAreNotDirectionsSayWhy) {
  const std::string forms = "a direction must be X,Y,Z or an axis such as z or -z (got ";
  EXPECT_EQ(ErrorOf("up"), forms + "up)");
  EXPECT_EQ(ErrorOf("1,2"), forms + "1,2)");
  EXPECT_EQ(ErrorOf("  1 2 nan # n\n"), forms + "1 2 nan)");
  EXPECT_EQ(ErrorOf("x y"), forms + "x y)");
  EXPECT_EQ(ErrorOf(std::string("x\0", 2)), forms + "x?)");
  EXPECT_EQ(ErrorOf(std::string(41, 'a')), forms + std::string(40, 'a') + "...)");
  EXPECT_EQ(ErrorOf("0,0,-0"), "a direction must be a vector that is not zero (got 0,0,-0)");
}

TEST(Directions, LongestLineIsClosed) {
  const std::string longest = "x" + std::string(4095, ' ');
  ExpectLine(LinesOf(longest + "\ny\n").at(0), 1, 1, 0, 0);
  EXPECT_EQ(ErrorOf(longest + " \n"), "a line must have at most 4096 bytes");
  // A line without an end takes no more memory than the longest line.
  DirectionLines parser;
  for (int k = 0; k < 1000; ++k)
    EXPECT_TRUE(parser.Add(longest).empty());
  const auto lines = parser.Add("\ny\n");
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].error, "a line must have at most 4096 bytes");
  ExpectLine(lines[1], 2, 0, 1, 0);
}

TEST(Directions, AnswersAreOneLineOfJson) {
  Answer answer;
  answer.status = SweepStatus::None;
  answer.unitDirection = {0.0, 1.0, 0.0};
  const std::string line = AnswerAsJsonLine(5, answer, gsl_sweep::Rule::Touch, {}, {"one"});
  json_documents::Keep(line);
  EXPECT_EQ(
      line,
      R"({"line":5,"status":"none","travel":null,"exact":true,"error_bound":null,)"
      R"("direction":[0.0,1.0,0.0],"kind":null,"normal":null,"moving":{"triangle":null,"point":null},)"
      R"("fixed":{"triangle":null,"point":null},"fixed_body":null,)"
      R"("warnings":["one"]})"
      "\n");
  const std::string solid = AnswerAsJsonLine(5, answer, gsl_sweep::Rule::Solid, 0.5, {});
  json_documents::Keep(solid);
  EXPECT_EQ(json::parse(solid)["overlaps_at_start"], false);
  EXPECT_EQ(json::parse(solid)["growing"], json::parse(R"({"exact": false, "deviation": 0.5})"));
  const std::string error = ErrorAsJsonLine(7, "not \"x\"");
  json_documents::Keep(error);
  EXPECT_EQ(error, R"({"line":7,"error":"not \"x\""})"
                   "\n");
}

/// Two boxes, one of them above the other.
Pair TwoBoxes(double low, double high) {
  const gsl_mesh::Mesh moving = Box({0, 0, high}, {1, 1, 1.5 * high});
  const gsl_mesh::Mesh fixed = Box({0, 0, low - 0.5 * std::fabs(low)}, {1, 1, low});
  return {Body(ViewOf(moving)), {Body(ViewOf(fixed))}};
}

struct Answered {
  std::vector<json> lines;
  std::vector<double> progress;
  DirectionTally tally;
};

Answered AnswerText(const Pair& pair, const std::string& text) {
  const TemporaryFolder folder;
  InputText input(folder.Write("lines", text));
  Answered answered;
  DirectionOutput output;
  output.write = [&](const std::string& line) { answered.lines.push_back(json::parse(line)); };
  output.warn = [](const Answer& answer) {
    return std::vector<std::string>(Touches(answer) ? 1 : 0, "far down");
  };
  output.progress = [&](double part) { answered.progress.push_back(part); };
  const AnswerQuestions ask = [&](const Question* questions, std::size_t count, Answer* answers,
                                  const Run& run) { pair.First(questions, count, answers, run); };
  answered.tally = AnswerDirections(input, ask, Question(), Run(), output);
  return answered;
}

TEST(Directions, AreAnsweredInTheirOrder) {
  const Answered answered = AnswerText(TwoBoxes(1.0, 4.0), "z\nup\n-z\n\n0,0,0\n-z");
  ASSERT_EQ(answered.lines.size(), 5u);
  EXPECT_EQ(answered.lines[0]["status"], "none");
  EXPECT_EQ(answered.lines[0]["direction"], json::parse("[0.0, 0.0, 1.0]"));
  EXPECT_EQ(answered.lines[1]["line"], 2);
  EXPECT_TRUE(answered.lines[1].contains("error"));
  EXPECT_EQ(answered.lines[2]["line"], 3);
  EXPECT_EQ(answered.lines[2]["travel"], 3.0);
  EXPECT_EQ(answered.lines[3]["line"], 5);
  EXPECT_EQ(answered.lines[4]["line"], 6);
  EXPECT_EQ(answered.lines[4]["travel"], 3.0);
  EXPECT_EQ(answered.tally.touching, 2u);
  EXPECT_EQ(answered.tally.wrong, 2u);
  EXPECT_EQ(answered.tally.firstWrong, 2u);
  EXPECT_EQ(answered.tally.beyond, 0u);
}

TEST(Directions, MoreThanABatchKeepTheirOrder) {
  std::string text;
  for (int k = 1; k <= 200; ++k)
    text += k % 3 == 0 ? "no\n" : k % 3 == 1 ? "-z\n" : "x\n";
  const Answered answered = AnswerText(TwoBoxes(1.0, 4.0), text);
  ASSERT_EQ(answered.lines.size(), 200u);
  for (std::size_t k = 1; k <= 200; ++k) {
    const json& line = answered.lines[k - 1];
    EXPECT_EQ(line["line"], k);
    EXPECT_EQ(line.contains("error"), k % 3 == 0);
    if (k % 3 == 0) continue;
    EXPECT_EQ(line["status"], k % 3 == 1 ? "contact" : "none");
    EXPECT_EQ(line["warnings"].size(), k % 3 == 1 ? 1u : 0u);
  }
  EXPECT_EQ(answered.tally.wrong, 66u);
  EXPECT_EQ(answered.tally.firstWrong, 3u);
  EXPECT_EQ(answered.tally.touching, 67u);
  ASSERT_EQ(answered.progress.size(), 4u); // 64, 128, 192 and 200 lines
  EXPECT_DOUBLE_EQ(answered.progress[0], 64.0 / 200.0);
  EXPECT_EQ(answered.progress[3], 1.0);
}

TEST(Directions, TravelBeyondTheRangeOfDoubleIsTheErrorOfItsLine) {
  const Answered answered = AnswerText(TwoBoxes(-1e308, 1e308), "x\n-z\nz\n-z\n");
  ASSERT_EQ(answered.lines.size(), 4u);
  EXPECT_EQ(answered.lines[0]["status"], "none");
  EXPECT_EQ(answered.lines[2]["status"], "none");
  for (const std::size_t k : {1u, 3u}) {
    EXPECT_EQ(answered.lines[k]["line"], k + 1);
    EXPECT_EQ(answered.lines[k]["error"], "the travel or a point is beyond the range of double");
  }
  EXPECT_EQ(answered.tally.beyond, 2u);
  EXPECT_EQ(answered.tally.firstBeyond, 2u);
  EXPECT_EQ(answered.tally.touching, 0u);
}

TEST(Directions, NoLinesAreNoAnswers) {
  const Answered answered = AnswerText(TwoBoxes(1.0, 4.0), "# nothing\n\n");
  EXPECT_TRUE(answered.lines.empty());
  EXPECT_EQ(answered.tally.touching + answered.tally.wrong + answered.tally.beyond, 0u);
}

} // namespace
