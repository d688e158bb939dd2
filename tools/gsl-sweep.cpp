#include "MeshRead.h"
#include "MeshWrite.h"
#include "OneLine.h"
#include "OutputFile.h"
#include "Progress.h"
#include "Report.h"
#include "Search.h"
#include "VectorText.h"

#include <CLI/CLI.hpp>

#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <limits>
#include <new>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>

namespace {

using namespace gsl_sweep;

enum ExitStatus { Touching = 0, NoContact = 1, Usage = 2, BadInput = 3, Failure = 4 };

constexpr unsigned mostThreads = 1024;

struct Options {
  std::string movingFile, fixedFile;
  std::string direction, offset, maxDistance; ///< as typed
  std::string jsonFile, outputFile;
  std::string progress = "auto";
  unsigned threads = 0; ///< 0: as many as there are
  bool oneSided = false, quiet = false, force = false;

  bool JsonToStdout() const { return jsonFile == "-"; }
  bool JsonToFile() const { return !jsonFile.empty() && !JsonToStdout(); }
};

/// What was typed makes no sense; what() is one line.
class UsageError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

const char* const description =
    "How far does one body travel along a direction before it touches another, and where?\n"
    "Reads two meshes (STL, OBJ, PLY, OFF, 3MF, glTF and others), moves the first along the\n"
    "direction and finds the first contact.";

const char* const footer = "Exit status: 0 contact, or in contact from the start; 1 no contact;\n"
                           "2 wrong usage; 3 a mesh is unreadable or rejected; 4 other failure.\n"
                           "Example: gsl-sweep bolt.stl bracket.stl --direction 0,0,-1 --json -";

void Declare(CLI::App& app, Options& options) {
  app.set_version_flag("--version", std::string("gsl-sweep ") + GSL_VERSION,
                       "Print the version and exit");
  app.add_option("MOVING", options.movingFile, "Mesh file of the body that moves")->required();
  app.add_option("FIXED", options.fixedFile, "Mesh file of the body that stays")->required();
  app.add_option("--direction", options.direction,
                 "Direction of travel, of any length: X,Y,Z or +x -x +y -y +z -z")
      ->required()
      ->type_name("X,Y,Z");
  app.add_option("--offset", options.offset, "Moves the moving body first")->type_name("X,Y,Z");
  app.add_flag("--one-sided", options.oneSided,
               "Leaves out triangles of MOVING whose normal points against the direction and of "
               "FIXED whose normal points along it");
  app.add_option("--max-distance", options.maxDistance, "Greatest travel that counts, itself too")
      ->type_name("L");
  app.add_option("--json", options.jsonFile,
                 "Writes the answer as JSON; - for stdout, instead of the text")
      ->type_name("FILE");
  app.add_option("--output", options.outputFile,
                 "Writes the moving body at its contact: .stl, .ply, .obj or .off")
      ->type_name("MOVED.stl");
  app.add_option("--threads", options.threads,
                 "Number of threads; the answer does not depend on it")
      ->check(CLI::Range(1u, mostThreads));
  app.add_option("--progress", options.progress,
                 "How to show progress, on stderr and only on a terminal")
      ->check(CLI::IsMember({"auto", "plain", "never"}));
  app.add_flag("--quiet", options.quiet,
               "Only errors on stderr, and nothing on stdout but --json -");
  app.add_flag("--force", options.force, "Replaces existing output files");
  app.footer(footer);
}

SweepQuestion QuestionOf(const Options& options) {
  SweepQuestion question;
  const auto direction = ParseDirection(options.direction);
  if (!direction) {
    throw UsageError("--direction: " + OneLine(options.direction) +
                     " is neither X,Y,Z with a number that is not zero nor +x -x +y -y +z -z");
  }
  question.direction = *direction;
  question.oneSided = options.oneSided;
  if (!options.maxDistance.empty()) {
    const auto limit = ParseNumber(options.maxDistance);
    if (!limit || *limit < 0.0) {
      throw UsageError("--max-distance: " + OneLine(options.maxDistance) +
                       " is not a number of at least zero");
    }
    question.maxDistance = *limit;
  }
  const unsigned available = std::max(1u, std::thread::hardware_concurrency());
  question.threads = options.threads != 0 ? options.threads : std::min(available, mostThreads);
  return question;
}

Coord3 OffsetOf(const Options& options) {
  if (options.offset.empty()) return {0.0, 0.0, 0.0};
  const auto offset = ParseVector(options.offset);
  if (!offset) {
    throw UsageError("--offset: " + OneLine(options.offset) + " is not X,Y,Z");
  }
  return *offset;
}

bool IsFinite(const Coord3& p) {
  return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

void MoveBy(const Coord3& offset, Mesh& mesh) {
  for (Coord3& corner : mesh.corners) {
    const Coord3 moved = gsl_arithmetic::Add(corner, offset);
    if (IsFinite(corner) && !IsFinite(moved)) {
      throw std::overflow_error("--offset moves a corner of " + OneLine(mesh.file) +
                                " beyond the range of double");
    }
    corner = moved;
  }
}

ProgressStyle StyleOf(const Options& options) {
  if (options.quiet || options.progress == "never") return ProgressStyle::Never;
  return options.progress == "plain" ? ProgressStyle::Plain : ProgressStyle::Auto;
}

/// True also for two ways to write one path, through folders or links.
bool NameSameFile(const std::string& a, const std::string& b) {
  if (a.empty() || b.empty()) return false;
  std::error_code error;
  const auto canonicalA = std::filesystem::weakly_canonical(a, error);
  if (error) return a == b;
  const auto canonicalB = std::filesystem::weakly_canonical(b, error);
  return error ? a == b : canonicalA == canonicalB;
}

/// Before the work, so that it is not done in vain.
void CheckOutputs(const Options& options) {
  if (!options.outputFile.empty() && MeshFormatToWrite(options.outputFile) == MeshFormat::Unknown) {
    throw UsageError("--output must end in " + MeshFormatNames(".") + " (got " +
                     OneLine(options.outputFile) + ")");
  }
  if (options.JsonToFile() && NameSameFile(options.jsonFile, options.outputFile)) {
    throw UsageError("--json and --output name the same file");
  }
  if (options.JsonToFile()) CheckOutputPath(options.jsonFile, options.force);
  if (!options.outputFile.empty()) CheckOutputPath(options.outputFile, options.force);
}

void RequireFiniteTriangles(const std::string& file, const SweptBody& body) {
  if (body.skipped < body.triangles) return;
  throw MeshError(OneLine(file) + ": every triangle has a NaN or infinite corner");
}

void AddWarning(SweepReport& report, const std::string& warning) {
  if (!warning.empty()) report.warnings.push_back(warning);
}

void PrintLine(const std::string& line) {
  std::fprintf(stderr, "gsl-sweep: %s\n", line.c_str());
}

void WriteStdout(const std::string& text) {
  errno = 0;
  const std::size_t written = std::fwrite(text.data(), 1, text.size(), stdout);
  if (written == text.size() && std::fflush(stdout) == 0) return;
  throw OutputError(std::string("standard output: cannot be written: ") + std::strerror(errno));
}

/// What the text says about --output.
std::string OutputLine(const Options& options, const SweepAnswer& answer) {
  if (options.outputFile.empty()) return {};
  const std::string file = OneLine(options.outputFile);
  return "  moved   " + (answer.status == SweepStatus::None ? "nothing written to " + file : file) +
         "\n";
}

void WriteResults(const Options& options, const SweepReport& report, Mesh moving) {
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
      PrintLine("no contact, so nothing is written to " + OneLine(options.outputFile));
    }
  } else if (!options.quiet) {
    WriteStdout(ReportAsText(report) + OutputLine(options, report.answer));
  }
}

ExitStatus Run(const Options& options) {
  SweepQuestion question = QuestionOf(options);
  const Coord3 offset = OffsetOf(options);
  CheckOutputs(options);

  Progress progress(StyleOf(options));
  progress.Begin("Reading " + OneLine(options.movingFile));
  Mesh moving = ReadMesh(options.movingFile);
  MoveBy(offset, moving);
  progress.Begin("Reading " + OneLine(options.fixedFile));
  const Mesh fixed = ReadMesh(options.fixedFile);

  progress.Begin("Searching");
  question.progress = [&progress](double part) { progress.Update(part); };
  SweepReport report;
  report.movingFile = options.movingFile;
  report.fixedFile = options.fixedFile;
  report.maxDistance = question.maxDistance;
  report.answer = Sweep(moving, fixed, question);
  progress.Clear();

  RequireFiniteTriangles(options.movingFile, report.answer.moving);
  RequireFiniteTriangles(options.fixedFile, report.answer.fixed);
  report.warnings = moving.warnings;
  report.warnings.insert(report.warnings.end(), fixed.warnings.begin(), fixed.warnings.end());
  AddWarning(report, SkippedWarning(options.movingFile, report.answer.moving));
  AddWarning(report, SkippedWarning(options.fixedFile, report.answer.fixed));
  AddWarning(report, SizeWarning(moving, fixed));
  for (const std::string& warning : report.warnings) {
    if (!options.quiet) PrintLine("warning: " + warning);
  }
  const bool touches = report.answer.status != SweepStatus::None;
  WriteResults(options, report, std::move(moving));
  return touches ? Touching : NoContact;
}

/// Runs `work` and turns what it throws into one line and an exit status.
template <class Work>
int Guarded(const Work& work) {
  try {
    return work();
  } catch (const UsageError& error) {
    PrintLine(std::string(error.what()) + " (see gsl-sweep --help)");
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
  CLI::App app(description, "gsl-sweep");
  Options options;
  Declare(app, options);
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    WriteStdout(app.help());
    return 0;
  } catch (const CLI::CallForVersion& version) {
    WriteStdout(std::string(version.what()) + "\n");
    return 0;
  } catch (const CLI::ParseError& error) {
    throw UsageError(OneLine(error.what()));
  }
  RemoveTemporaryFilesOnInterrupt();
  // A write beyond the limit for files then fails, and is told, instead of ending the program.
  std::signal(SIGXFSZ, SIG_IGN);
  return Run(options);
}

} // namespace

int main(int argc, char** argv) {
  return Guarded([&] { return ParseAndRun(argc, argv); });
}
