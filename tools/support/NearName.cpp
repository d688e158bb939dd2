#include "NearName.h"

#include <algorithm>
#include <cstddef>

namespace gsl_tools {

namespace {

constexpr std::size_t kMostErrors = 2;
constexpr std::size_t kLeastLetters = 3;

/// Typing errors between two words (optimal string alignment distance).
std::size_t TypingErrors(std::string_view a, std::string_view b) {
  // Row i holds the errors between the first i letters of a and the first j of b.
  std::vector<std::vector<std::size_t>> errors(a.size() + 1,
                                               std::vector<std::size_t>(b.size() + 1));
  for (std::size_t i = 0; i <= a.size(); ++i) {
    for (std::size_t j = 0; j <= b.size(); ++j) {
      if (i == 0 || j == 0) {
        errors[i][j] = i + j;
        continue;
      }
      const std::size_t wrong = a[i - 1] == b[j - 1] ? 0 : 1;
      errors[i][j] =
          std::min({errors[i - 1][j] + 1, errors[i][j - 1] + 1, errors[i - 1][j - 1] + wrong});
      const bool exchanged = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
      if (exchanged) errors[i][j] = std::min(errors[i][j], errors[i - 2][j - 2] + 1);
    }
  }
  return errors[a.size()][b.size()];
}

bool IsBeginningOf(std::string_view name, std::string_view word) {
  const std::size_t dashes = std::min(word.find_first_not_of('-'), word.size());
  return word.size() >= dashes + kLeastLetters && name.substr(0, word.size()) == word;
}

} // namespace

std::string NearName(std::string_view word, const std::vector<std::string>& names) {
  std::string nearest;
  std::size_t least = kMostErrors + 1;
  for (const std::string& name : names) {
    const std::size_t errors = IsBeginningOf(name, word) ? 0 : TypingErrors(word, name);
    if (errors > least) continue;
    const bool alone = errors < least;
    nearest = alone ? name : std::string();
    least = errors;
  }
  return least <= kMostErrors ? nearest : std::string();
}

} // namespace gsl_tools
