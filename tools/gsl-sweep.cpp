#include "MeshRead.h"
#include "MeshWrite.h"
#include "OutputFile.h"
#include "Printable.h"
#include "SweepOptions.h"
#include "gsl_Sweep.h"
#include "support/MeshView.h"
#include "support/Progress.h"
#include "support/Report.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <new>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include <unistd.h>

namespace {

using namespace gsl_mesh;
using namespace gsl_sweep;
using namespace gsl_tools;

enum ExitStatus { Touching = 0, NoContact = 1, Usage = 2, BadInput = 3, Failure = 4 };

Question QuestionOf(const SweepOptions& options) {
  Question question;
  question.direction = options.direction;
  question.oneSided = options.oneSided;
  question.maxDistance = options.maxDistance;
  return question;
}

/// Returns the name of a mesh in messages.
std::string NameOfMesh(const std::string& file) {
  return file == "-" ? "standard input" : file;
}

Mesh ReadBody(const std::string& file, const SweepOptions& options) {
  if (file == "-") return ReadMeshFromStream(STDIN_FILENO, NameOfMesh(file), options.format);
  return ReadMesh(file);
}

/// True also for one file under two paths, through folders or links.
bool NameSameFile(const std::string& a, const std::string& b) {
  if (a.empty() || b.empty()) return false;
  std::error_code error;
  const auto canonicalA = std::filesystem::weakly_canonical(a, error);
  if (error) return a == b;
  const auto canonicalB = std::filesystem::weakly_canonical(b, error);
  return error ? a == b : canonicalA == canonicalB;
}

/// Runs before the search, so that nothing is computed for an output that cannot be written.
void CheckOutputs(const SweepOptions& options) {
  if (options.JsonToFile() && NameSameFile(options.jsonFile, options.outputFile)) {
    throw UsageError("--json and --output name the same file");
  }
  if (options.JsonToFile()) CheckOutputPath(options.jsonFile, options.force);
  if (!options.outputFile.empty()) CheckOutputPath(options.outputFile, options.force);
}

void RequireFiniteTriangles(const std::string& file, const BodyCounts& body) {
  if (body.skipped < body.triangles) return;
  throw MeshError(file + ": every triangle has a NaN or infinite corner");
}

void AddWarning(SweepReport& report, const std::string& warning) {
  if (!warning.empty()) report.warnings.push_back(Printable(warning));
}

void PrintLine(const std::string& line) {
  std::fprintf(stderr, "gsl-sweep: %s\n", Printable(line).c_str());
}

void WriteStdout(const std::string& text) {
  errno = 0;
  const std::size_t written = std::fwrite(text.data(), 1, text.size(), stdout);
  if (written == text.size() && std::fflush(stdout) == 0) return;
  throw OutputError(std::string("standard output: cannot be written: ") + std::strerror(errno));
}

/// Returns the line of the report about --output.
std::string OutputLine(const SweepOptions& options, const Answer& answer) {
  if (options.outputFile.empty()) return {};
  const std::string file = Printable(options.outputFile);
  return "  moved   " + (answer.status == SweepStatus::None ? "nothing written to " + file : file) +
         "\n";
}

void WriteResults(const SweepOptions& options, const SweepReport& report, Mesh moving) {
  const bool touches = report.answer.status != SweepStatus::None;
  if (touches && !options.outputFile.empty()) {
    WriteMesh(options.outputFile, MovedMesh(std::move(moving), report.answer), options.force);
  }
  if (options.JsonToFile()) {
    WriteTextFile(options.jsonFile, ReportAsJson(report), options.force);
  }
  if (options.JsonToStdout()) {
    WriteStdout(ReportAsJson(report));
    if (!touches && !options.outputFile.empty() && !options.quiet) {
      PrintLine("no contact, so nothing is written to " + options.outputFile);
    }
  } else if (!options.quiet) {
    WriteStdout(ReportAsText(report) + OutputLine(options, report.answer));
  }
}

BodyCounts CountsOf(const Body& body, std::size_t leftOut) {
  return {body.TriangleCount(), body.SkippedCount(), leftOut};
}

/// Asks and writes down what was answered.
void Search(const SweepOptions& options, const Mesh& moving, const std::vector<Mesh>& fixed,
            Progress& progress, SweepReport& report) {
  const Question question = QuestionOf(options);
  Run run;
  run.threads = options.threads;
  run.progress = [&progress](double part) {
    progress.Update(part);
    return true;
  };
  const Body movingBody(ViewOf(moving));
  std::vector<Body> fixedBodies;
  fixedBodies.reserve(fixed.size());
  for (const Mesh& mesh : fixed)
    fixedBodies.emplace_back(ViewOf(mesh));
  const Pair pair(movingBody, fixedBodies, run);
  report.answer = pair.First(question, run);
  for (std::size_t k = 0; k < fixed.size(); ++k) {
    const LeftOut leftOut = Pair(movingBody, {fixedBodies[k]}).CountLeftOut(question);
    report.moving = CountsOf(movingBody, leftOut.moving);
    report.fixed.push_back({options.fixedFiles[k], CountsOf(fixedBodies[k], leftOut.fixed)});
  }
}

/// Warns of what was left out and of sizes that do not fit, in the order of the bodies.
void AddWarnings(const Mesh& moving, const std::vector<Mesh>& fixed, SweepReport& report) {
  report.warnings = moving.warnings;
  for (const Mesh& mesh : fixed)
    report.warnings.insert(report.warnings.end(), mesh.warnings.begin(), mesh.warnings.end());
  AddWarning(report, SkippedWarning(moving.file, report.moving));
  for (std::size_t k = 0; k < fixed.size(); ++k)
    AddWarning(report, SkippedWarning(fixed[k].file, report.fixed[k].counts));
  for (const Mesh& mesh : fixed)
    AddWarning(report, SizeWarning(moving, mesh));
}

ExitStatus SweepFiles(const SweepOptions& options) {
  CheckOutputs(options);

  Progress progress(options.quiet ? ProgressStyle::Never : options.progress);
  progress.Begin("Reading " + NameOfMesh(options.movingFile));
  Mesh moving = ReadBody(options.movingFile, options);
  Translate(moving, options.offset, "--offset");
  std::vector<Mesh> fixed;
  for (const std::string& file : options.fixedFiles) {
    progress.Begin("Reading " + NameOfMesh(file));
    fixed.push_back(ReadBody(file, options));
  }

  progress.Begin("Searching");
  SweepReport report;
  report.movingFile = options.movingFile;
  report.offset = options.offset;
  report.maxDistance = options.maxDistance;
  report.oneSided = options.oneSided;
  report.toolVersion = GSL_VERSION;
  Search(options, moving, fixed, progress, report);
  progress.Clear();

  RequireFiniteTriangles(moving.file, report.moving);
  for (std::size_t k = 0; k < fixed.size(); ++k)
    RequireFiniteTriangles(fixed[k].file, report.fixed[k].counts);
  AddWarnings(moving, fixed, report);
  for (const std::string& warning : report.warnings) {
    if (!options.quiet) PrintLine("warning: " + warning);
  }
  const bool touches = report.answer.status != SweepStatus::None;
  WriteResults(options, report, std::move(moving));
  return touches ? Touching : NoContact;
}

/// Runs `work`, and turns an exception into one line and an exit status.
template <class Work>
int Guarded(const Work& work) {
  try {
    return work();
  } catch (const UsageError& error) {
    PrintLine(error.what());
    return Usage;
  } catch (const MeshError& error) {
    PrintLine(error.what());
    return BadInput;
  } catch (const std::bad_alloc&) {
    PrintLine("out of memory");
    return Failure;
  } catch (const std::exception& error) {
    PrintLine(error.what());
    return Failure;
  }
}

int ParseAndRun(int argc, char** argv) {
  SweepOptions options;
  const std::string text = ParseSweepOptions(argc, argv, options);
  if (!text.empty()) {
    WriteStdout(text);
    return 0;
  }
  RemoveTemporaryFilesOnInterrupt();
  // A write beyond the limit for files then fails with a message and does not end the program.
  std::signal(SIGXFSZ, SIG_IGN);
  return SweepFiles(options);
}

} // namespace

int main(int argc, char** argv) {
  return Guarded([&] { return ParseAndRun(argc, argv); });
}
