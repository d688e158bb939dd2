#include "MeshFacts.h"
#include "MeshOptions.h"
#include "MeshRead.h"
#include "MeshWrite.h"
#include "OutputFile.h"
#include "TemporaryFiles.h"
#include "gsl_Sweep.h"
#include "support/InputText.h"
#include "support/MeshReport.h"
#include "support/MeshView.h"
#include "support/Pose.h"
#include "support/Program.h"
#include "support/Progress.h"
#include "support/Report.h"

#include <algorithm>
#include <csignal>
#include <future>
#include <stdexcept>
#include <string>
#include <vector>

#include <unistd.h>

namespace {

using namespace gsl_mesh;
using namespace gsl_tools;

/// The answer of check; every other command ends with Sound.
enum ExitStatus { Sound = 0, Faulty = 1, BadInput = kBadInput };

void PrintLine(const std::string& line) {
  gsl_tools::PrintLine("gsl-mesh", line);
}

Mesh Read(const std::string& file, const MeshOptions& options, Progress& progress) {
  progress.Begin("Reading " + NameOfInput(file));
  const auto shown = [&progress](double part) { progress.Update(part); };
  Mesh mesh = file == "-"
                  ? ReadMeshFromStream(STDIN_FILENO, NameOfInput(file), options.format, shown)
                  : ReadMesh(file, shown);
  progress.Clear();
  return mesh;
}

void ShowWarnings(const MeshOptions& options, const std::vector<std::string>& warnings) {
  for (const std::string& warning : warnings) {
    if (!options.quiet) PrintLine("warning: " + warning);
  }
}

MeshReport Examined(const std::string& file, const MeshOptions& options, Progress& progress) {
  MeshReport report;
  report.file = file;
  const Mesh mesh = Read(file, options, progress);
  report.warnings = mesh.warnings;
  progress.Begin("Checking " + NameOfInput(file));
  // Counting needs as long as the search for crossings, and neither needs the other.
  std::future<gsl_mesh::MeshFacts> facts = std::async([&mesh] { return FactsOf(mesh); });
  const gsl_sweep::Body body(ViewOf(mesh));
  report.fault = body.IsSolid().Reason();
  gsl_sweep::Run run;
  run.progress = [&progress](double part) {
    progress.Update(part);
    return true;
  };
  report.crossings.resize(kNamedCrossings);
  report.crossingCount =
      gsl_sweep::Crossings(body, report.crossings.data(), report.crossings.size(), run);
  report.crossings.resize(std::min(report.crossings.size(), report.crossingCount));
  report.facts = facts.get();
  progress.Clear();
  return report;
}

/// Examines a file. One that cannot be read does not keep the others from being examined.
MeshReport Checked(const std::string& file, const MeshOptions& options, Progress& progress) {
  try {
    return Examined(file, options, progress);
  } catch (const MeshError& error) {
    progress.Clear();
    PrintLine(error.what());
    MeshReport report;
    report.file = file;
    report.error = error.what();
    return report;
  }
}

ExitStatus StatusOf(const std::vector<MeshReport>& reports) {
  ExitStatus status = Sound;
  for (const MeshReport& report : reports) {
    if (!report.IsReadable()) return BadInput;
    if (!FindingsOf(report).empty()) status = Faulty;
  }
  return status;
}

ExitStatus Check(const MeshOptions& options) {
  if (!options.jsonFile.empty() && !options.JsonToStdout()) {
    CheckOutputPath(options.jsonFile, options.force);
  }
  Progress progress(options.quiet ? ProgressStyle::Never : ProgressStyle::Auto);
  std::vector<MeshReport> reports;
  for (const std::string& file : options.files) {
    reports.push_back(Checked(file, options, progress));
    ShowWarnings(options, reports.back().warnings);
    if (!reports.back().IsReadable() || options.quiet || options.JsonToStdout()) continue;
    WriteStdout(MeshReportAsText(reports.back()));
  }
  if (options.JsonToStdout()) {
    WriteStdout(MeshReportsAsJson(reports, GSL_VERSION));
  } else if (!options.jsonFile.empty()) {
    WriteTextFile(options.jsonFile, MeshReportsAsJson(reports, GSL_VERSION), options.force);
  }
  return StatusOf(reports);
}

/// Writes the mesh, and says so.
void Write(const MeshOptions& options, const Mesh& mesh) {
  WriteMesh(options.output, mesh, options.force);
  if (options.quiet) return;
  WriteStdout(NameInText(options.output) + ": " + std::to_string(mesh.TriangleCount()) +
              (mesh.TriangleCount() == 1 ? " triangle\n" : " triangles\n"));
}

void Convert(const MeshOptions& options) {
  CheckOutputPath(options.output, options.force);
  Progress progress(options.quiet ? ProgressStyle::Never : ProgressStyle::Auto);
  const Mesh mesh = Read(options.files.front(), options, progress);
  ShowWarnings(options, mesh.warnings);
  Write(options, mesh);
}

void Move(const MeshOptions& options) {
  CheckOutputPath(options.output, options.force);
  const gsl_Matrix matrix = ReadPose(options.matrixFile);
  Progress progress(options.quiet ? ProgressStyle::Never : ProgressStyle::Auto);
  Mesh mesh = Read(options.files.front(), options, progress);
  std::vector<std::string> warnings = mesh.warnings;
  const std::string warning = PoseWarning(matrix, NameOfInput(options.matrixFile));
  if (!warning.empty()) warnings.push_back(warning);
  ShowWarnings(options, warnings);
  const auto isFinite = [](const Mesh& body) {
    return std::count_if(body.corners.begin(), body.corners.end(), IsFinite);
  };
  const auto before = isFinite(mesh);
  PoseMesh(mesh, matrix);
  if (isFinite(mesh) != before) {
    throw std::overflow_error("--matrix moves a corner of " + mesh.file +
                              " beyond the range of double");
  }
  Write(options, mesh);
}

int Run(const MeshOptions& options) {
  switch (options.command) {
  case MeshCommand::Check:
    return Check(options);
  case MeshCommand::Convert:
    Convert(options);
    return Sound;
  case MeshCommand::Move:
    Move(options);
    return Sound;
  }
  return Sound;
}

int ParseAndRun(int argc, char** argv) {
  MeshOptions options;
  const std::string text = ParseMeshOptions(argc, argv, options);
  if (!text.empty()) {
    WriteStdout(text);
    return 0;
  }
  RemoveTemporaryFilesOnSignals();
  // A write beyond the limit for files then fails with a message and does not end the program.
  std::signal(SIGXFSZ, SIG_IGN);
  return Run(options);
}

} // namespace

int main(int argc, char** argv) {
  return Guarded("gsl-mesh", [&] { return ParseAndRun(argc, argv); });
}
