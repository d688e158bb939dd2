#ifndef GSL_TOOLS_STAGES_H
#define GSL_TOOLS_STAGES_H

#include "support/Progress.h"

#include <string>
#include <vector>

namespace gsl_tools {

/// Measures the time and the memory of the stages of a program and says them on stderr, one line
/// for each stage. One stage runs at a time.
class Stages {
public:
  /// Says nothing unless `isOn`. The progress is cleared before each line.
  Stages(bool isOn, Progress& progress) : m_isOn(isOn), m_progress(progress) {}

  /// Pauses the stage that runs, and begins or continues a stage.
  void Enter(const std::string& name);

  /// Ends a stage, which may be paused, and writes its line. Does nothing for a stage that was not
  /// begun.
  void End(const std::string& name);

private:
  struct Stage {
    std::string name;
    double wall = 0.0, processor = 0.0; ///< seconds
  };

  void Pause();

  bool m_isOn;
  Progress& m_progress;
  std::vector<Stage> m_stages; ///< that have not ended
  std::string m_running;       ///< empty for none
  double m_wall = 0.0, m_processor = 0.0;
};

} // namespace gsl_tools

#endif
