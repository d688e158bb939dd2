#ifndef GSL_TOOLS_PROGRESS_H
#define GSL_TOOLS_PROGRESS_H

#include <chrono>
#include <string>

namespace gsl_tools {

enum class ProgressStyle {
  Auto,  ///< one line that is rewritten, and removed at the end
  Plain, ///< whole lines, without control characters
  Never
};

/// Shows a person at a terminal how far a long computation is. It writes to stderr, and only when
/// stderr is a terminal. Auto is Plain on a terminal that cannot rewrite a line (TERM is dumb or
/// unset).
class Progress {
public:
  explicit Progress(ProgressStyle style);
  ~Progress() { Clear(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// Begins a stage of the work and shows its name.
  void Begin(const std::string& stage);

  /// Shows the part of the stage that is done, from 0 to 1: at most ten times a second, in plain
  /// style once a second.
  void Update(double part);

  /// Removes the rewritten line. Call it before other output.
  void Clear();

private:
  using Clock = std::chrono::steady_clock;

  void Show(const std::string& text);

  ProgressStyle m_style;
  std::string m_stage;
  Clock::time_point m_shown;
  bool m_onLine = false;
};

} // namespace gsl_tools

#endif
