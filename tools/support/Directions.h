#ifndef GSL_TOOLS_DIRECTIONS_H
#define GSL_TOOLS_DIRECTIONS_H

#include "gsl_Sweep.h"
#include "support/InputText.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Many directions, one in each line of text, and their answers, one JSON document in each line.
namespace gsl_tools {

/// A line that is neither empty nor a comment.
struct DirectionLine {
  std::size_t line = 0; ///< from 1; empty lines and comments are counted
  gsl_arithmetic::Coord3 direction{0.0, 0.0, 0.0};
  std::string error; ///< of a line that is not a direction; else empty
};

/// Cuts text that arrives in parts into lines. A line ends with a newline, also after a carriage
/// return; '#' begins a comment that ends with the line. A line of more than 4096 bytes is not a
/// direction. A byte order mark before the first line is left out.
class DirectionLines {
public:
  /// Returns the lines that `text` ends.
  std::vector<DirectionLine> Add(std::string_view text);

  /// Returns the last line, which no newline ends; no line when there is nothing after a newline.
  std::vector<DirectionLine> Finish();

private:
  void TakeLine(std::vector<DirectionLine>& lines);

  std::string m_rest; ///< of a line that has not ended, at most one byte beyond the limit
  std::size_t m_line = 0;
};

/// Returns a JSON document in one line, ended by a newline; docs/gsl-sweep.md describes it.
/// `deviation` is that of a moving body that was grown by an allowance.
std::string AnswerAsJsonLine(std::size_t line, const gsl_sweep::Answer& answer,
                             gsl_sweep::Rule rule, std::optional<double> deviation,
                             const std::vector<std::string>& warnings);
std::string ErrorAsJsonLine(std::size_t line, const std::string& error);

/// What became of the lines.
struct DirectionTally {
  std::size_t touching = 0;    ///< lines with a contact
  std::size_t wrong = 0;       ///< lines that are not directions
  std::size_t firstWrong = 0;  ///< number of the first of them
  std::size_t beyond = 0;      ///< lines whose travel or point is beyond the range of double
  std::size_t firstBeyond = 0; ///< number of the first of them
};

/// What AnswerDirections calls, and what each answer says of the moving body.
struct DirectionOutput {
  std::function<void(const std::string&)> write; ///< takes one line of JSON with its newline
  std::function<std::vector<std::string>(const gsl_sweep::Answer&)> warn; ///< of one answer
  std::function<void(double)> progress; ///< takes the part that is done, of a file only
  std::optional<double> deviation;      ///< where the moving body was grown by an allowance
};

/// Answers the questions in parallel, as gsl_sweep::Pair::First and Last do.
using AnswerQuestions = std::function<void(const gsl_sweep::Question* questions, std::size_t count,
                                           gsl_sweep::Answer* answers, const gsl_sweep::Run& run)>;

/// Answers the lines of a text in their order. Lines that have arrived are answered, in batches of
/// at most 64, before more of the text is waited for.
DirectionTally AnswerDirections(InputText& input, const AnswerQuestions& ask,
                                const gsl_sweep::Question& question, const gsl_sweep::Run& run,
                                const DirectionOutput& output);

} // namespace gsl_tools

#endif
