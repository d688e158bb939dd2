#ifndef GSL_TOOLS_HELP_FORMATTER_H
#define GSL_TOOLS_HELP_FORMATTER_H

#include <CLI/CLI.hpp>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace gsl_tools {

/// Breaks `text` between words into lines of at most `width` bytes; a longer word has its own line.
std::vector<std::string> WrappedLines(std::string_view text, std::size_t width);

/// Formats help whose lines fit a terminal of 80 columns.
class HelpFormatter : public CLI::Formatter {
public:
  /// `usage` follows the name of the program.
  explicit HelpFormatter(std::string usage) : m_usage(std::move(usage)) {}

  std::string make_usage(const CLI::App* app, std::string name) const override;
  std::string make_description(const CLI::App* app) const override;
  std::string make_group(std::string group, bool isPositional,
                         std::vector<const CLI::Option*> options) const override;
  std::string make_option(const CLI::Option* option, bool isPositional) const override;

private:
  std::string m_usage;
};

} // namespace gsl_tools

#endif
