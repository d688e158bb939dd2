#include "support/Pose.h"

#include "MeshSource.h"
#include "support/VectorText.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <vector>

namespace gsl_tools {

namespace {

constexpr std::size_t kLongestFile = 65536;
constexpr std::size_t kShownBytes = 40;
constexpr double kRigidTolerance = 1e-6;
constexpr const char* kSpaces = " \t\r\n\f\v";

struct Word {
  std::string text; ///< empty between two commas
  std::size_t line; ///< from 1
};

/// Splits a text into words at white space and at single commas, and leaves comments out.
class Words {
public:
  explicit Words(std::string_view text) : m_rest(text) {
    SkipSpace();
    while (!m_rest.empty())
      Take();
    if (m_isAfterComma) m_words.push_back({"", m_line});
  }

  const std::vector<Word>& Get() const { return m_words; }

  /// Returns the number of the last line.
  std::size_t LastLine() const { return m_line; }

private:
  void Take() {
    const std::size_t size = std::min(m_rest.find_first_of(" \t\r\n\f\v,#"), m_rest.size());
    m_words.push_back({std::string(m_rest.substr(0, size)), m_line});
    m_rest.remove_prefix(size);
    SkipSpace();
    m_isAfterComma = !m_rest.empty() && m_rest.front() == ',';
    if (!m_isAfterComma) return;
    m_rest.remove_prefix(1);
    SkipSpace();
  }

  void SkipSpace() {
    while (!m_rest.empty()) {
      const bool isComment = m_rest.front() == '#';
      std::size_t size = isComment ? m_rest.find('\n') : m_rest.find_first_not_of(kSpaces);
      size = std::min(size, m_rest.size());
      if (size == 0) return;
      const std::string_view skipped = m_rest.substr(0, size);
      m_line += static_cast<std::size_t>(std::count(skipped.begin(), skipped.end(), '\n'));
      m_rest.remove_prefix(size);
    }
  }

  std::string_view m_rest;
  std::size_t m_line = 1;
  bool m_isAfterComma = false;
  std::vector<Word> m_words;
};

[[noreturn]] void FailLine(const std::string& name, std::size_t line, const std::string& message) {
  throw InputError(name + ": line " + std::to_string(line) + ": " + message);
}

std::string Shown(const std::string& word) {
  if (word.empty()) return "an empty value";
  return word.size() > kShownBytes ? word.substr(0, kShownBytes) + "..." : word;
}

double Determinant(const double (&m)[3][3]) {
  return m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) -
         m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
         m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
}

/// Powers of two scale the columns, so that products stay within the range of double.
bool Mirrors(const double (&m)[4][4]) {
  double scaled[3][3];
  for (int c = 0; c < 3; ++c) {
    int exponent = 0;
    std::frexp(std::max({std::fabs(m[0][c]), std::fabs(m[1][c]), std::fabs(m[2][c])}), &exponent);
    for (int r = 0; r < 3; ++r)
      scaled[r][c] = std::ldexp(m[r][c], -exponent);
  }
  return Determinant(scaled) < 0.0;
}

bool KeepsLengths(const double (&m)[4][4]) {
  for (int a = 0; a < 3; ++a) {
    for (int b = a; b < 3; ++b) {
      const double dot = m[0][a] * m[0][b] + m[1][a] * m[1][b] + m[2][a] * m[2][b];
      if (!(std::fabs(dot - (a == b ? 1.0 : 0.0)) <= kRigidTolerance)) return false;
    }
  }
  return true;
}

void RequireLastRow(const gsl_Matrix& pose, const std::vector<Word>& words,
                    const std::string& name) {
  const double(&last)[4] = pose.m[3];
  if (last[0] == 0.0 && last[1] == 0.0 && last[2] == 0.0 && last[3] == 1.0) return;
  FailLine(name, words[12].line,
           "the last row of a pose must be 0 0 0 1 (got " + Shown(words[12].text) + " " +
               Shown(words[13].text) + " " + Shown(words[14].text) + " " + Shown(words[15].text) +
               ")");
}

} // namespace

gsl_Matrix ParsePose(std::string_view text, const std::string& name) {
  const Words parsed(gsl_mesh::WithoutByteOrderMark(text));
  const std::vector<Word>& words = parsed.Get();
  gsl_Matrix pose;
  for (std::size_t k = 0; k < words.size(); ++k) {
    const std::string nth = "number " + std::to_string(k + 1);
    if (k == 16) FailLine(name, words[k].line, nth + " is too many; expected 12 or 16 numbers");
    const auto number = ParseNumber(words[k].text);
    if (!number) {
      FailLine(name, words[k].line,
               nth + " of the pose must be a finite number (got " + Shown(words[k].text) + ")");
    }
    pose.m[k / 4][k % 4] = *number;
  }
  if (words.size() != 12 && words.size() != 16) {
    FailLine(name, parsed.LastLine(),
             "the pose ends after " + std::to_string(words.size()) +
                 (words.size() == 1 ? " number" : " numbers") + "; expected 12 or 16");
  }
  RequireLastRow(pose, words, name);
  pose.isIdentity = -1;
  return pose;
}

gsl_Matrix ReadPose(const std::string& file) {
  InputText input(file);
  std::string text;
  for (std::string_view part; !(part = input.Next()).empty();) {
    text += part;
    if (text.size() > kLongestFile) {
      throw InputError(input.Name() + ": is longer than " + std::to_string(kLongestFile) +
                       " bytes; expected 12 or 16 numbers");
    }
  }
  return ParsePose(text, input.Name());
}

std::string PoseWarning(const gsl_Matrix& pose, const std::string& name) {
  std::string warning;
  if (!KeepsLengths(pose.m)) warning = "is not rigid: it changes lengths or angles";
  if (Mirrors(pose.m)) {
    warning += std::string(warning.empty() ? "" : ", and it ") +
               "mirrors the body, whose triangles then face the other way";
  }
  return warning.empty() ? warning : name + ": the pose " + warning;
}

gsl_sweep::Body PosedBody(const gsl_sweep::Body& body, const gsl_Matrix& pose,
                          const std::string& name) {
  gsl_sweep::Body posed = body.Moved(pose);
  if (posed.SkippedCount() == body.SkippedCount()) return posed;
  throw std::overflow_error("--pose moves a corner of " + name + " beyond the range of double");
}

void PoseMesh(gsl_mesh::Mesh& mesh, const gsl_Matrix& pose) {
  gsl_Point point;
  for (gsl_arithmetic::Coord3& corner : mesh.corners) {
    point.x = corner.x;
    point.y = corner.y;
    point.z = corner.z;
    pose.Transform(point);
    corner = {point.x, point.y, point.z};
  }
}

} // namespace gsl_tools
