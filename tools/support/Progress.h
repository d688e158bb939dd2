#ifndef GSL_TOOLS_PROGRESS_H
#define GSL_TOOLS_PROGRESS_H

#include <chrono>
#include <string>

namespace gsl_sweep {

enum class ProgressStyle {
  Auto,  ///< one line that is written over and removed at the end
  Plain, ///< whole lines, without control characters
  Never
};

/// Tells a person at a terminal how far a long computation is. Writes to stderr, and only when that
/// is a terminal; Auto is Plain on a terminal that cannot write over a line (TERM is dumb or
/// unset).
class Progress {
public:
  explicit Progress(ProgressStyle style);
  ~Progress() { Clear(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// Names what is done now.
  void Begin(const std::string& stage);

  /// The part of the stage that is done, from 0 to 1; shown at most ten times a second, in plain
  /// style once a second.
  void Update(double part);

  /// Removes what was written over; before other output.
  void Clear();

private:
  using Clock = std::chrono::steady_clock;

  void Show(const std::string& text);

  ProgressStyle m_style;
  std::string m_stage;
  Clock::time_point m_shown;
  bool m_onLine = false;
};

} // namespace gsl_sweep

#endif
