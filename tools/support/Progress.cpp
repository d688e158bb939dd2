#include "support/Progress.h"

#include "Printable.h"

#include <cstdio>
#include <cstdlib>
#include <string_view>

#include <unistd.h>

namespace gsl_tools {

namespace {

ProgressStyle StyleFor(ProgressStyle wanted) {
  if (wanted == ProgressStyle::Never || isatty(STDERR_FILENO) == 0) return ProgressStyle::Never;
  if (wanted == ProgressStyle::Plain) return ProgressStyle::Plain;
  const char* const terminal = std::getenv("TERM");
  const bool canRewrite =
      terminal != nullptr && *terminal != 0 && terminal != std::string_view("dumb");
  return canRewrite ? ProgressStyle::Auto : ProgressStyle::Plain;
}

} // namespace

Progress::Progress(ProgressStyle style) : m_style(StyleFor(style)) {}

void Progress::Begin(const std::string& stage) {
  m_stage = gsl_mesh::Printable(stage);
  m_shown = Clock::now();
  Show(m_stage);
}

void Progress::Update(double part) {
  const auto pause = m_style == ProgressStyle::Plain ? std::chrono::milliseconds(1000)
                                                     : std::chrono::milliseconds(100);
  const Clock::time_point now = Clock::now();
  if (m_style == ProgressStyle::Never || now - m_shown < pause) return;
  m_shown = now;
  Show(m_stage + ": " + std::to_string(static_cast<int>(part * 100.0)) + " %");
}

void Progress::Show(const std::string& text) {
  if (m_style == ProgressStyle::Plain) {
    std::fprintf(stderr, "%s\n", text.c_str());
  } else if (m_style == ProgressStyle::Auto) {
    std::fprintf(stderr, "\r\033[K%s", text.c_str());
    m_onLine = true;
  }
}

void Progress::Clear() {
  if (m_onLine) std::fprintf(stderr, "\r\033[K");
  m_onLine = false;
}

} // namespace gsl_tools
