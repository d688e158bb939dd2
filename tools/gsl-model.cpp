#include "ModelOptions.h"
#include "OutputFile.h"
#include "TemporaryFiles.h"
#include "gsl_RecordError.h"
#include "support/InputText.h"
#include "support/ModelFile.h"
#include "support/NearName.h"
#include "support/Program.h"
#include "support/RecordCheck.h"
#include "support/RecordDiff.h"
#include "support/RecordJson.h"
#include "support/RecordText.h"

#include <charconv>
#include <csignal>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace {

using namespace gsl_tools;

/// The answer of diff; every other command ends with Same.
enum ExitStatus { Same = 0, Different = 1 };

gsl_RecordStore LoadFromStandardInput() {
  InputText input("-");
  std::string bytes;
  for (std::string_view part; !(part = input.Next()).empty();)
    bytes += part;
  if (IsDatabase(bytes)) {
    throw InputError(input.Name() + ": is a database; expected the byte form of records");
  }
  try {
    return gsl_RecordStore::FromBytes(reinterpret_cast<const unsigned char*>(bytes.data()),
                                      bytes.size());
  } catch (const gsl_RecordError& error) {
    throw InputError(input.Name() + ": " + error.what());
  }
}

/// Reads a file. Errors begin with its name.
gsl_RecordStore Load(const std::string& file) {
  if (file == "-") return LoadFromStandardInput();
  try {
    return LoadModelFile(file);
  } catch (const gsl_RecordError& error) {
    throw InputError(error.what());
  }
}

/// Reads a file whose records can be shown.
gsl_RecordStore LoadToShow(const std::string& file) {
  gsl_RecordStore records = Load(file);
  const std::string problem = CheckNesting(records);
  if (!problem.empty()) throw InputError(NameOfInput(file) + ": " + problem);
  return records;
}

std::optional<std::size_t> NumberOf(const std::string& text) {
  std::size_t number = 0;
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, number);
  if (result.ec != std::errc() || result.ptr != end) return std::nullopt;
  return number;
}

/// Finds a root by its name, or else by its number.
std::size_t FindRoot(const gsl_RecordStore& records, const ModelOptions& options) {
  const std::size_t count = records.RootCount();
  const std::size_t named = records.FindRoot(options.root);
  if (named < count) return named;
  const std::optional<std::size_t> number = NumberOf(options.root);
  if (number && *number < count) return *number;
  const std::string file = NameOfInput(options.file);
  if (number) {
    throw UsageError(file + " has no root " + options.root + "; it has " + std::to_string(count));
  }
  std::vector<std::string> names;
  for (std::size_t i = 0; i < count; ++i)
    names.emplace_back(records.RootName(i));
  const std::string meant = NearName(options.root, names);
  throw UsageError(file + " has no root named " + options.root +
                   (meant.empty() ? "; list shows the roots" : "; did you mean " + meant + "?"));
}

/// Writes text, or JSON where it is asked for. `write` is called once, with the place for it.
template <class WriteText, class WriteJson>
void Print(const ModelOptions& options, const WriteText& writeText, const WriteJson& writeJson) {
  TextPortions out(WriteStdout);
  if (options.JsonToStdout()) return writeJson(out);
  if (!options.jsonFile.empty()) {
    gsl_mesh::OutputFile file(options.jsonFile, options.force);
    TextPortions json([&](std::string_view text) { file.Write(text.data(), text.size()); });
    writeJson(json);
    file.Commit();
  }
  if (!options.quiet) writeText(out);
}

void List(const ModelOptions& options) {
  const gsl_RecordStore records = Load(options.file);
  Print(
      options,
      [&](TextPortions& out) {
        out.Add(ListAsText(records));
        out.Finish();
      },
      [&](TextPortions& out) { ListAsJson(records, options.file, out); });
}

void Show(const ModelOptions& options) {
  const gsl_RecordStore records = LoadToShow(options.file);
  const std::size_t root = FindRoot(records, options);
  Print(
      options, [&](TextPortions& out) { ShowAsText(records, root, out); },
      [&](TextPortions& out) { ShowAsJson(records, root, options.file, out); });
}

void Check(const ModelOptions& options) {
  const gsl_RecordStore records = LoadToShow(options.file);
  const std::string problem = CheckCycles(records);
  if (!problem.empty()) throw InputError(NameOfInput(options.file) + ": " + problem);
  if (options.quiet) return;
  const std::string list = ListAsText(records);
  WriteStdout(NameOfInput(options.file) + ": no problem; " + list.substr(0, list.find('\n') + 1));
}

void Convert(const ModelOptions& options) {
  gsl_mesh::CheckOutputPath(options.output, options.force);
  SaveModelFile(Load(options.file), options.output);
}

ExitStatus Diff(const ModelOptions& options) {
  const std::vector<std::string> lines =
      DifferencesOf(LoadToShow(options.file), LoadToShow(options.other));
  if (!options.quiet) {
    TextPortions out(WriteStdout);
    for (const std::string& line : lines)
      out.Add(line + '\n');
    out.Finish();
    if (lines.size() == kMostDifferences) {
      PrintLine("gsl-model", "at most " + std::to_string(kMostDifferences) +
                                 " differences are listed; there may be more");
    }
  }
  return lines.empty() ? Same : Different;
}

ExitStatus Run(const ModelOptions& options) {
  if (!options.jsonFile.empty() && !options.JsonToStdout()) {
    gsl_mesh::CheckOutputPath(options.jsonFile, options.force);
  }
  switch (options.command) {
  case ModelCommand::List:
    List(options);
    return Same;
  case ModelCommand::Show:
    Show(options);
    return Same;
  case ModelCommand::Check:
    Check(options);
    return Same;
  case ModelCommand::Convert:
    Convert(options);
    return Same;
  case ModelCommand::Diff:
    return Diff(options);
  }
  return Same;
}

int ParseAndRun(int argc, char** argv) {
  ModelOptions options;
  const std::string text = ParseModelOptions(argc, argv, options);
  if (!text.empty()) {
    WriteStdout(text);
    return 0;
  }
  gsl_mesh::RemoveTemporaryFilesOnSignals();
  // A write beyond the limit for files then fails with a message and does not end the program.
  std::signal(SIGXFSZ, SIG_IGN);
  return Run(options);
}

} // namespace

int main(int argc, char** argv) {
  return Guarded("gsl-model", [&] { return ParseAndRun(argc, argv); });
}
