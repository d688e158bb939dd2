#include "support/Directions.h"

#include "Printable.h"
#include "support/AnswerJson.h"
#include "support/Report.h"
#include "support/VectorText.h"

#include <algorithm>
#include <stdexcept>

namespace gsl_tools {

namespace {

using gsl_sweep::Question;
using gsl_sweep::Run;
using gsl_sweep::SweepStatus;

constexpr std::size_t kLongestLine = 4096;
constexpr std::size_t kShownBytes = 40;
constexpr std::size_t kBatch = 64;
constexpr const char* kByteOrderMark = "\xef\xbb\xbf";

std::string WhyNot(std::string_view text) {
  std::string shown(text.substr(0, kShownBytes));
  if (text.size() > kShownBytes) shown += "...";
  return std::string("a direction must ") +
         (ParseVector(text) ? "be a vector that is not zero" : kDirectionForms) + " (got " +
         gsl_mesh::Printable(shown) + ")";
}

std::string LineText(const Json& json) {
  return JsonText(json, -1) + "\n";
}

/// The lines of one batch and their answers.
class Batch {
public:
  Batch(const DirectionLine* lines, std::size_t count) : m_lines(lines), m_count(count) {}

  /// Asks a question along each line.
  void Answer(const AnswerQuestions& ask, Question question, const Run& run) {
    m_rule = question.rule;
    std::vector<Question> questions;
    for (std::size_t k = 0; k < m_count; ++k) {
      if (!m_lines[k].error.empty()) continue;
      question.direction = m_lines[k].direction;
      questions.push_back(question);
    }
    m_answers.resize(questions.size());
    try {
      ask(questions.data(), questions.size(), m_answers.data(), run);
    } catch (const std::overflow_error&) {
      // The answers that are beyond the range of double are Cancelled, and the others are there.
    }
  }

  void Write(const DirectionOutput& output, DirectionTally& tally) const {
    auto answer = m_answers.cbegin();
    for (std::size_t k = 0; k < m_count; ++k) {
      const DirectionLine& line = m_lines[k];
      if (!line.error.empty()) {
        Count(line.line, tally.wrong, tally.firstWrong);
        output.write(ErrorAsJsonLine(line.line, line.error));
      } else {
        WriteAnswer(line.line, *answer++, output, tally);
      }
    }
  }

private:
  static void Count(std::size_t line, std::size_t& count, std::size_t& first) {
    if (count++ == 0) first = line;
  }

  void WriteAnswer(std::size_t line, const gsl_sweep::Answer& answer, const DirectionOutput& output,
                   DirectionTally& tally) const {
    if (answer.status == SweepStatus::Cancelled) {
      Count(line, tally.beyond, tally.firstBeyond);
      output.write(ErrorAsJsonLine(line, "the travel or a point is beyond the range of double"));
      return;
    }
    if (Touches(answer)) ++tally.touching;
    output.write(AnswerAsJsonLine(line, answer, m_rule, output.deviation, output.warn(answer)));
  }

  const DirectionLine* m_lines;
  std::size_t m_count;
  gsl_sweep::Rule m_rule = gsl_sweep::Rule::Touch;
  std::vector<gsl_sweep::Answer> m_answers;
};

} // namespace

std::vector<DirectionLine> DirectionLines::Add(std::string_view text) {
  std::vector<DirectionLine> lines;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    const std::string_view part = text.substr(0, end);
    m_rest.append(part.substr(0, kLongestLine + 1 - m_rest.size()));
    if (end == std::string_view::npos) break;
    text.remove_prefix(end + 1);
    TakeLine(lines);
  }
  return lines;
}

std::vector<DirectionLine> DirectionLines::Finish() {
  std::vector<DirectionLine> lines;
  if (!m_rest.empty()) TakeLine(lines);
  return lines;
}

void DirectionLines::TakeLine(std::vector<DirectionLine>& lines) {
  const std::string whole = std::move(m_rest);
  m_rest.clear();
  DirectionLine line;
  line.line = ++m_line;
  std::string_view text = std::string_view(whole).substr(0, whole.find('#'));
  if (m_line == 1 && text.substr(0, 3) == kByteOrderMark) text.remove_prefix(3);
  const std::size_t last = text.find_last_not_of(" \t\r");
  if (last == std::string_view::npos) return;
  text = text.substr(0, last + 1);
  text.remove_prefix(text.find_first_not_of(" \t"));
  const auto direction = ParseDirection(text);
  if (whole.size() > kLongestLine) {
    line.error = "a line must have at most " + std::to_string(kLongestLine) + " bytes";
  } else if (direction) {
    line.direction = *direction;
  } else {
    line.error = WhyNot(text);
  }
  lines.push_back(std::move(line));
}

std::string AnswerAsJsonLine(std::size_t line, const Answer& answer, gsl_sweep::Rule rule,
                             std::optional<double> deviation,
                             const std::vector<std::string>& warnings) {
  Json json;
  json["line"] = line;
  json.update(AnswerAsJson(answer, rule));
  if (deviation) json["growing"] = GrowingAsJson(*deviation);
  json["warnings"] = warnings;
  return LineText(json);
}

std::string ErrorAsJsonLine(std::size_t line, const std::string& error) {
  Json json;
  json["line"] = line;
  json["error"] = error;
  return LineText(json);
}

DirectionTally AnswerDirections(InputText& input, const AnswerQuestions& ask,
                                const Question& question, const Run& run,
                                const DirectionOutput& output) {
  DirectionTally tally;
  DirectionLines parser;
  const auto size = static_cast<double>(input.Size());
  double done = 0.0;
  const auto answer = [&](const std::vector<DirectionLine>& lines, double bytes) {
    for (std::size_t begin = 0; begin < lines.size(); begin += kBatch) {
      Batch batch(lines.data() + begin, std::min(kBatch, lines.size() - begin));
      batch.Answer(ask, question, run);
      batch.Write(output, tally);
      const double part = static_cast<double>(std::min(begin + kBatch, lines.size())) /
                          static_cast<double>(lines.size());
      if (size > 0.0) output.progress(std::min((done + bytes * part) / size, 1.0));
    }
    done += bytes;
  };
  for (std::string_view text; !(text = input.Next()).empty();)
    answer(parser.Add(text), static_cast<double>(text.size()));
  answer(parser.Finish(), 0.0);
  return tally;
}

} // namespace gsl_tools
