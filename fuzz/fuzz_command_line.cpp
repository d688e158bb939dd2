// Feeds any words to the parsers of the command lines. Each returns options, a text to print, or
// one line of error without control characters.
//
// The first byte chooses the program; the words are separated by newlines.

#include "FuzzInput.h"
#include "MeshOptions.h"
#include "ModelOptions.h"
#include "SweepOptions.h"

#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace gsl_tools;

std::vector<std::string> WordsOf(std::string_view text) {
  std::vector<std::string> words(1);
  for (const char c : text) {
    if (c == '\n') {
      words.emplace_back();
    } else if (c != '\0') { // no word of a command line holds it
      words.back() += c;
    }
  }
  return words;
}

std::string Parse(std::uint8_t program, int argc, const char* const* argv) {
  if (program % 3 == 0) {
    SweepOptions options;
    std::string text = ParseSweepOptions(argc, argv, options);
    Require(!text.empty() || (!options.movingFile.empty() && !options.fixedFiles.empty()));
    return text;
  }
  if (program % 3 == 1) {
    MeshOptions options;
    return ParseMeshOptions(argc, argv, options);
  }
  ModelOptions options;
  return ParseModelOptions(argc, argv, options);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
  if (count == 0) return 0;
  const std::vector<std::string> words =
      WordsOf({reinterpret_cast<const char*>(bytes + 1), count - 1});
  std::vector<const char*> argv = {"program"};
  for (const std::string& word : words)
    argv.push_back(word.c_str());
  const int argc = static_cast<int>(argv.size());
  argv.push_back(nullptr);
  try {
    const std::string text = Parse(bytes[0], argc, argv.data());
    Require(text.empty() || text.back() == '\n');
  } catch (const UsageError& error) {
    const std::string_view message = error.what();
    Require(!message.empty());
    for (const char c : message)
      Require(static_cast<unsigned char>(c) >= 0x20 && c != 0x7f);
  }
  return 0;
}
