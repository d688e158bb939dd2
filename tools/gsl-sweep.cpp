#include "MeshRead.h"
#include "MeshWrite.h"
#include "OutputFile.h"
#include "Printable.h"
#include "SweepOptions.h"
#include "gsl_Sweep.h"
#include "support/InputText.h"
#include "support/MeshView.h"
#include "support/Pose.h"
#include "support/Progress.h"
#include "support/Report.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <new>
#include <optional>
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
  question.offset = options.offset;
  question.oneSided = options.oneSided;
  question.maxDistance = options.maxDistance;
  return question;
}

Mesh ReadBody(const std::string& file, const SweepOptions& options) {
  if (file == "-") return ReadMeshFromStream(STDIN_FILENO, NameOfInput(file), options.format);
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

/// A mesh and its body.
struct Part {
  std::string file; ///< as it was given
  Mesh mesh;        ///< as it was read
  Body body;        ///< where it is asked
};

/// All that is asked.
struct Scene {
  std::optional<gsl_Matrix> pose;
  Part moving;
  std::vector<Part> fixed;
};

Part ReadPart(const std::string& file, const SweepOptions& options, Progress& progress) {
  progress.Begin("Reading " + NameOfInput(file));
  Mesh mesh = ReadBody(file, options);
  const Body body(ViewOf(mesh));
  if (body.SkippedCount() == body.TriangleCount()) {
    throw MeshError(mesh.file + ": every triangle has a NaN or infinite corner");
  }
  return {file, std::move(mesh), body};
}

Scene ReadScene(const SweepOptions& options, Progress& progress) {
  std::optional<gsl_Matrix> pose;
  if (!options.poseFile.empty()) pose = ReadPose(options.poseFile);
  Scene scene{pose, ReadPart(options.movingFile, options, progress), {}};
  Part& moving = scene.moving;
  if (pose) moving.body = PosedBody(moving.body, *pose, moving.mesh.file);
  RequireOffsetInRange(moving.body, options.offset, moving.mesh.file);
  for (const std::string& file : options.fixedFiles)
    scene.fixed.push_back(ReadPart(file, options, progress));
  return scene;
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

/// Returns the moving body at its contact.
Mesh MeshAtContact(Mesh mesh, const SweepReport& report) {
  if (report.pose) PoseMesh(mesh, *report.pose);
  Translate(mesh, report.offset, "--offset");
  return MovedMesh(std::move(mesh), report.answer);
}

void WriteResults(const SweepOptions& options, const SweepReport& report, Mesh moving) {
  const bool touches = report.answer.status != SweepStatus::None;
  if (touches && !options.outputFile.empty()) {
    WriteMesh(options.outputFile, MeshAtContact(std::move(moving), report), options.force);
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
void Search(const SweepOptions& options, const Scene& scene, Progress& progress,
            SweepReport& report) {
  const Question question = QuestionOf(options);
  Run run;
  run.threads = options.threads;
  run.progress = [&progress](double part) {
    progress.Update(part);
    return true;
  };
  std::vector<Body> fixed;
  for (const Part& part : scene.fixed)
    fixed.push_back(part.body);
  const Pair pair(scene.moving.body, fixed, run);
  report.answer = pair.First(question, run);
  for (const Part& part : scene.fixed) {
    const LeftOut leftOut = Pair(scene.moving.body, {part.body}).CountLeftOut(question);
    report.moving = CountsOf(scene.moving.body, leftOut.moving);
    report.fixed.push_back({part.file, CountsOf(part.body, leftOut.fixed)});
  }
}

/// Warns of what was left out, of the pose and of sizes that do not fit, in the order of the
/// bodies.
void AddWarnings(const SweepOptions& options, const Scene& scene, SweepReport& report) {
  const Part& moving = scene.moving;
  report.warnings = moving.mesh.warnings;
  for (const Part& part : scene.fixed) {
    report.warnings.insert(report.warnings.end(), part.mesh.warnings.begin(),
                           part.mesh.warnings.end());
  }
  AddWarning(report, SkippedWarning(moving.mesh.file, report.moving));
  for (std::size_t k = 0; k < scene.fixed.size(); ++k)
    AddWarning(report, SkippedWarning(scene.fixed[k].mesh.file, report.fixed[k].counts));
  if (scene.pose) AddWarning(report, PoseWarning(*scene.pose, NameOfInput(options.poseFile)));
  for (const Part& part : scene.fixed)
    AddWarning(report, SizeWarning(moving.mesh.file, moving.body, part.mesh.file, part.body));
}

ExitStatus SweepFiles(const SweepOptions& options) {
  CheckOutputs(options);
  Progress progress(options.quiet ? ProgressStyle::Never : options.progress);
  Scene scene = ReadScene(options, progress);

  progress.Begin("Searching");
  SweepReport report;
  report.movingFile = options.movingFile;
  report.pose = scene.pose;
  report.offset = options.offset;
  report.maxDistance = options.maxDistance;
  report.oneSided = options.oneSided;
  report.toolVersion = GSL_VERSION;
  Search(options, scene, progress, report);
  progress.Clear();

  AddWarnings(options, scene, report);
  for (const std::string& warning : report.warnings) {
    if (!options.quiet) PrintLine("warning: " + warning);
  }
  const bool touches = report.answer.status != SweepStatus::None;
  WriteResults(options, report, std::move(scene.moving.mesh));
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
  } catch (const InputError& error) {
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
