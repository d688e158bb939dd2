#include "HelpFormatter.h"

#include <sstream>

namespace gsl_tools {

namespace {

constexpr std::size_t kLineWidth = 79; // some terminals break a line that fills all 80 columns
constexpr std::size_t kTextColumn = 26;
constexpr std::size_t kNameIndent = 2;
constexpr std::size_t kLeastGap = 2;

/// "-d, --direction X,Y,Z", or "    --offset X,Y,Z" so that the long names are below each other.
std::string NamesOf(const CLI::Option* option, bool isPositional) {
  if (isPositional) return option->get_name(true);
  std::string names = option->get_snames().empty() ? "    " : "-" + option->get_snames()[0] + ", ";
  names += "--" + option->get_lnames().at(0);
  const std::string value = option->get_type_name();
  return option->get_type_size() == 0 || value.empty() ? names : names + " " + value;
}

} // namespace

std::vector<std::string> WrappedLines(std::string_view text, std::size_t width) {
  std::istringstream words{std::string(text)};
  std::vector<std::string> lines;
  for (std::string word; words >> word;) {
    const bool fits = !lines.empty() && lines.back().size() + 1 + word.size() <= width;
    if (fits) {
      lines.back() += " " + word;
    } else {
      lines.push_back(word);
    }
  }
  return lines;
}

std::string HelpFormatter::make_usage(const CLI::App* /*app*/, std::string name) const {
  return "\nUsage: " + name + " " + m_usage + "\n";
}

std::string HelpFormatter::make_description(const CLI::App* app) const {
  std::string text;
  for (const std::string& line : WrappedLines(app->get_description(), kLineWidth))
    text += line + "\n";
  return text;
}

std::string HelpFormatter::make_group(std::string group, bool isPositional,
                                      std::vector<const CLI::Option*> options) const {
  std::string text = "\n" + group + ":\n";
  for (const CLI::Option* option : options)
    text += make_option(option, isPositional);
  return text;
}

std::string HelpFormatter::make_option(const CLI::Option* option, bool isPositional) const {
  std::string text = std::string(kNameIndent, ' ') + NamesOf(option, isPositional);
  std::size_t column = text.size() + kLeastGap <= kTextColumn ? text.size() : kTextColumn + 1;
  for (const std::string& line :
       WrappedLines(option->get_description(), kLineWidth - kTextColumn)) {
    if (column > kTextColumn) {
      text += "\n";
      column = 0;
    }
    text += std::string(kTextColumn - column, ' ') + line;
    column = kTextColumn + 1; // any further line is a new one
  }
  return text + "\n";
}

} // namespace gsl_tools
