#include "GltfScene.h"
#include "MeshRead.h"
#include "MeshWrite.h"
#include "OutputFile.h"
#include "Picture.h"
#include "Printable.h"
#include "SphereMap.h"
#include "SphereTally.h"
#include "SweepOptions.h"
#include "TemporaryFiles.h"
#include "ViewerPage.h"
#include "gsl_Sweep.h"
#include "support/Directions.h"
#include "support/EvenDirections.h"
#include "support/InputText.h"
#include "support/MeshView.h"
#include "support/Pose.h"
#include "support/Program.h"
#include "support/Progress.h"
#include "support/Report.h"
#include "support/Resolution.h"
#include "support/SceneView.h"
#include "support/Sphere.h"
#include "support/Stages.h"
#include "support/VectorText.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include <unistd.h>

namespace {

using namespace gsl_mesh;
using namespace gsl_sweep;
using namespace gsl_tools;

enum ExitStatus { Touching = 0, NoContact = 1, Usage = kUsage, Failure = kFailure };

Rule RuleOf(const SweepOptions& options) {
  if (options.solid) return Rule::Solid;
  return options.leaving ? Rule::NotLeaving : Rule::Touch;
}

Question QuestionOf(const SweepOptions& options) {
  Question question;
  question.direction = options.direction;
  question.offset = options.offset;
  question.oneSided = options.oneSided;
  question.rule = RuleOf(options);
  question.clearance = options.clearance;
  question.maxDistance = options.maxDistance;
  return question;
}

Mesh ReadBody(const std::string& file, const SweepOptions& options, const MeshProgress& progress) {
  if (file == "-") {
    return ReadMeshFromStream(STDIN_FILENO, NameOfInput(file), options.format, progress);
  }
  return ReadMesh(file, progress);
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
  struct Output {
    std::string option, file;
  };
  const Output outputs[] = {{"--json", options.JsonToFile() ? options.jsonFile : ""},
                            {"--output", options.outputFile},
                            {"--view", options.viewFile},
                            {"--picture", options.pictureFile}};
  for (auto output = std::begin(outputs); output != std::end(outputs); ++output) {
    for (auto other = std::begin(outputs); other != output; ++other) {
      if (NameSameFile(other->file, output->file)) {
        throw UsageError(other->option + " and " + output->option + " name the same file");
      }
    }
  }
  for (const Output& output : outputs) {
    if (!output.file.empty()) CheckOutputPath(output.file, options.force);
  }
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
  std::optional<double> deviation; ///< of a moving body that was grown
  Part moving;
  std::vector<Part> fixed;
};

/// What is shown while the program works.
class Display {
public:
  explicit Display(const SweepOptions& options)
      : m_progress(options.quiet ? ProgressStyle::Never : options.progress),
        m_stages(options.verbose, m_progress) {}

  /// Begins a stage, under the name that progress shows and the name in the lines of --verbose.
  void Begin(const std::string& shown, const std::string& stage) {
    m_progress.Begin(shown);
    m_stages.Enter(stage);
  }
  /// Begins or continues a stage that shows no progress of its own.
  void Enter(const std::string& stage) {
    m_progress.Clear();
    m_stages.Enter(stage);
  }
  void End(const std::string& stage) {
    m_progress.Clear();
    m_stages.End(stage);
  }
  void Update(double part) { m_progress.Update(part); }

private:
  Progress m_progress;
  Stages m_stages;
};

Part ReadPart(const std::string& file, const SweepOptions& options, Display& display) {
  const std::string name = NameOfInput(file);
  display.Begin("Reading " + name, "read " + name);
  Mesh mesh = ReadBody(file, options, [&](double part) { display.Update(part); });
  Run run;
  run.threads = options.threads;
  const Body body(ViewOf(mesh), run);
  if (body.SkippedCount() == body.TriangleCount()) {
    throw MeshError(mesh.file + ": every triangle has a NaN or infinite corner");
  }
  display.End("read " + name);
  return {file, std::move(mesh), body};
}

[[noreturn]] void RefuseFault(const std::string& file, const std::string& fault) {
  throw MeshError(file + ": not a solid" + fault +
                  "; --solid expects a closed surface whose triangles face outwards");
}

/// Makes the body thicker, or thinner, and returns the deviation. A body that is not a solid may
/// have no outside. Where it is to be one, and no pose can make it one, it is refused; otherwise
/// that is warned of.
double Grow(Part& part, const SweepOptions& options) {
  const Solidity solidity = part.body.IsSolid();
  const std::string fault = solidity ? "" : ": " + solidity.Reason();
  if (!solidity && options.solid && options.poseFile.empty()) RefuseFault(part.mesh.file, fault);
  if (!solidity) {
    part.mesh.warnings.push_back(Printable(
        part.mesh.file + ": not a solid" + fault +
        "; --allowance takes the side that each triangle faces for its outside, which may "
        "be wrong"));
  }
  double deviation = 0.0;
  try {
    part.body = part.body.Grown(options.allowance, &deviation);
  } catch (const std::invalid_argument& error) {
    throw MeshError(part.mesh.file + ": " + error.what() +
                    (solidity ? "; expected an --allowance that is closer to 0"
                              : "; the body is not a solid" + fault));
  }
  return deviation;
}

Scene ReadScene(const SweepOptions& options, Display& display) {
  std::optional<gsl_Matrix> pose;
  if (!options.poseFile.empty()) pose = ReadPose(options.poseFile);
  Scene scene{pose, std::nullopt, ReadPart(options.movingFile, options, display), {}};
  Part& moving = scene.moving;
  if (options.allowance != 0.0) {
    display.Begin("Growing " + NameOfInput(moving.file), "allowance");
    scene.deviation = Grow(moving, options);
    display.End("allowance");
  }
  if (pose) {
    display.Begin("Placing " + NameOfInput(moving.file), "pose");
    moving.body = PosedBody(moving.body, *pose, moving.mesh.file);
    display.End("pose");
  }
  RequireOffsetInRange(moving.body, options.offset, moving.mesh.file);
  for (const std::string& file : options.fixedFiles)
    scene.fixed.push_back(ReadPart(file, options, display));
  return scene;
}

void AddWarning(std::vector<std::string>& warnings, const std::string& warning) {
  if (!warning.empty()) warnings.push_back(Printable(warning));
}

void PrintLine(const std::string& line) {
  gsl_tools::PrintLine("gsl-sweep", line);
}

/// Writes what --json asks for, to its file or to stdout.
void WriteJson(const SweepOptions& options, const std::string& json) {
  if (options.JsonToStdout()) {
    WriteStdout(json);
  } else {
    WriteTextFile(options.jsonFile, json, options.force);
  }
}

/// Returns the line of the report about --output. A scene may have an origin of its own.
std::string OutputLine(const SweepOptions& options, const Answer& answer, const Coord3& origin) {
  if (options.outputFile.empty()) return {};
  const std::string file = Printable(options.outputFile);
  const std::string what = gsl_view::IsGltfName(options.outputFile) ? "  scene   " : "  moved   ";
  if (!Touches(answer)) return what + "nothing written to " + file + "\n";
  const bool isMoved = origin.x != 0.0 || origin.y != 0.0 || origin.z != 0.0;
  return what + file + (isMoved ? ", with its origin at " + VectorText(origin) : "") + "\n";
}

/// Returns the line of the report about --view.
std::string ViewLine(const SweepOptions& options) {
  return options.viewFile.empty() ? "" : "  view    " + Printable(options.viewFile) + "\n";
}

/// Returns the line of the report about --picture.
std::string PictureLine(const SweepOptions& options) {
  if (options.pictureFile.empty()) return {};
  return "  picture " + Printable(options.pictureFile) + "\n";
}

/// Returns the moving body at its contact.
Mesh MeshAtContact(Mesh mesh, const SweepReport& report) {
  if (report.pose) PoseMesh(mesh, *report.pose);
  Translate(mesh, report.offset, "--offset");
  return MovedMesh(std::move(mesh), report.answer);
}

/// Writes what --output asks for: the moving body, or all bodies as a scene. Returns the origin of
/// the scene. Takes the mesh of the moving body.
Coord3 WriteOutput(const SweepOptions& options, const SweepReport& report, const Question& question,
                   Scene& scene) {
  const Coord3 origin{0.0, 0.0, 0.0};
  if (options.outputFile.empty() || !Touches(report.answer)) return origin;
  const Mesh moved = MeshAtContact(std::move(scene.moving.mesh), report);
  if (!gsl_view::IsGltfName(options.outputFile)) {
    WriteMesh(options.outputFile, moved, options.force);
    return origin;
  }
  std::vector<TriangleView> surfaces = {ViewOf(moved)};
  for (const Part& part : scene.fixed)
    surfaces.push_back(ViewOf(part.mesh));
  return gsl_view::WriteGltfScene(options.outputFile, ViewSceneOf(report, question, surfaces),
                                  surfaces.front(), options.force);
}

void WriteResults(const SweepOptions& options, const SweepReport& report, const Coord3& origin) {
  const bool touches = Touches(report.answer);
  if (!options.jsonFile.empty()) WriteJson(options, ReportAsJson(report));
  if (options.quiet) return;
  if (!options.JsonToStdout()) {
    WriteStdout(ReportAsText(report) + OutputLine(options, report.answer, origin) +
                ViewLine(options) + PictureLine(options));
  } else if (!touches && !options.outputFile.empty()) {
    const std::string what =
        report.clearance > 0.0 ? "not within " + NumberText(report.clearance) : "no contact";
    PrintLine(what + ", so nothing is written to " + options.outputFile);
  }
}

BodyCounts CountsOf(const Body& body) {
  return {body.TriangleCount(), body.SkippedCount(), 0};
}

/// Says which travels, and whether the allowance, are as small as the resolution of the input.
class FineTravels {
public:
  FineTravels(const SweepOptions& options, const Scene& scene)
      : m_moving(scene.moving.mesh, scene.moving.body, scene.pose, options.offset,
                 scene.deviation.has_value()) {
    for (const Part& part : scene.fixed)
      m_fixed.emplace_back(part.mesh, part.body, std::nullopt, Coord3{0.0, 0.0, 0.0});
  }

  /// Returns the warning for an answer, and remembers the first; empty for an ordinary travel.
  std::string Check(const Answer& answer) {
    if (answer.status != SweepStatus::Contact) return {};
    std::string warning = ResolutionWarning(answer, m_moving, m_fixed.at(answer.contact.fixedBody));
    if (!warning.empty() && m_count++ == 0) m_first = Printable(warning);
    return Printable(warning);
  }

  /// Returns the warning for an allowance; empty for an ordinary one.
  std::string CheckAllowance(double allowance) {
    return AllowanceWarning(allowance, m_moving, m_fixed);
  }

  /// Returns one warning for all; empty when there was none.
  std::string ForAll() const {
    if (m_count <= 1) return m_first;
    return m_first + " (" + std::to_string(m_count) + " such travels in all)";
  }

private:
  Resolution m_moving;
  std::vector<Resolution> m_fixed;
  std::string m_first;
  std::size_t m_count = 0;
};

/// Returns the warnings of what was left out, of the pose, of the allowance and of sizes that do
/// not fit, in the order of the bodies.
std::vector<std::string> WarningsOf(const SweepOptions& options, const Scene& scene) {
  const Part& moving = scene.moving;
  std::vector<std::string> warnings = moving.mesh.warnings;
  for (const Part& part : scene.fixed)
    warnings.insert(warnings.end(), part.mesh.warnings.begin(), part.mesh.warnings.end());
  AddWarning(warnings, SkippedWarning(moving.mesh.file, CountsOf(moving.body)));
  for (const Part& part : scene.fixed)
    AddWarning(warnings, SkippedWarning(part.mesh.file, CountsOf(part.body)));
  if (scene.pose) AddWarning(warnings, PoseWarning(*scene.pose, NameOfInput(options.poseFile)));
  if (scene.deviation) {
    AddWarning(warnings, FineTravels(options, scene).CheckAllowance(options.allowance));
  }
  for (const Part& part : scene.fixed)
    AddWarning(warnings, SizeWarning(moving.mesh.file, moving.body, part.mesh.file, part.body));
  return warnings;
}

void ShowWarnings(const SweepOptions& options, const std::vector<std::string>& warnings) {
  for (const std::string& warning : warnings) {
    if (!options.quiet) PrintLine("warning: " + warning);
  }
}

/// Refuses a body that --solid cannot take. `changes` names the options that changed it, if any: a
/// pose can turn a body inside out, or make it flat. Where it was no solid before, that is the
/// fault, in the coordinates of the file.
void RequireSolid(const Part& part, const std::string& changes) {
  const Solidity solidity = part.body.IsSolid();
  if (solidity) return;
  if (changes.empty()) RefuseFault(part.mesh.file, ": " + solidity.Reason());
  const Solidity before = Body(ViewOf(part.mesh)).IsSolid();
  RefuseFault(part.mesh.file,
              before ? " after " + changes + ": " + solidity.Reason() : ": " + before.Reason());
}

void RequireSolids(const Scene& scene) {
  std::string changes = scene.deviation ? "--allowance" : "";
  if (scene.pose) changes += changes.empty() ? "--pose" : " and --pose";
  RequireSolid(scene.moving, changes);
  for (const Part& part : scene.fixed)
    RequireSolid(part, {});
}

/// Writes down everything but the answers.
void Describe(const SweepOptions& options, const Scene& scene, SceneReport& report) {
  report.movingFile = options.movingFile;
  report.allowance = options.allowance;
  report.deviation = scene.deviation.value_or(0.0);
  report.pose = scene.pose;
  report.offset = options.offset;
  report.maxDistance = options.maxDistance;
  report.oneSided = options.oneSided;
  report.rule = RuleOf(options);
  report.clearance = options.clearance;
  report.last = options.last;
  report.toolVersion = GSL_VERSION;
  report.moving = CountsOf(scene.moving.body);
  for (const Part& part : scene.fixed)
    report.fixed.push_back({part.file, CountsOf(part.body)});
  report.warnings = WarningsOf(options, scene);
}

Run RunOf(const SweepOptions& options, Display& display) {
  Run run;
  run.threads = options.threads;
  run.progress = [&display](double part) {
    display.Update(part);
    return true;
  };
  return run;
}

Pair PairOf(const Scene& scene, const Run& run) {
  std::vector<Body> fixed;
  for (const Part& part : scene.fixed)
    fixed.push_back(part.body);
  return {scene.moving.body, fixed, run};
}

/// Counts what only the JSON shows.
void CountLeftOut(const SweepOptions& options, const Scene& scene, const Question& question,
                  SceneReport& report) {
  if (!question.oneSided || options.jsonFile.empty()) return;
  for (std::size_t k = 0; k < scene.fixed.size(); ++k) {
    const LeftOut leftOut = Pair(scene.moving.body, {scene.fixed[k].body}).CountLeftOut(question);
    report.moving.leftOut = leftOut.moving;
    report.fixed[k].counts.leftOut = leftOut.fixed;
  }
}

/// Asks for the first contact, for the last, or for all pairs of the first.
void Ask(const SweepOptions& options, const Question& question, const Pair& pair, const Run& run,
         SweepReport& report) {
  if (options.last) {
    report.answer = pair.Last(question, run);
  } else if (options.patch) {
    std::vector<Contact> listed(options.ListsPairs() ? options.patchPairs : 0);
    const PatchSummary found = pair.FindPatch(question, listed.data(), listed.size(), run);
    listed.resize(std::min(listed.size(), found.pairCount));
    report.answer = found.first;
    report.patch = PatchReport{found.pairCount, found.low, found.high, listed};
  } else {
    report.answer = pair.First(question, run);
  }
}

/// Writes the picture of a scene, or of many answers. A build without pictures has refused the
/// option.
void WritePicture([[maybe_unused]] const SweepOptions& options,
                  [[maybe_unused]] const gsl_view::ViewScene& scene,
                  [[maybe_unused]] const std::vector<Answer>* answers) {
#ifndef GSL_WITHOUT_PICTURES
  if (options.pictureFile.empty()) return;
  const auto format = gsl_view::PictureFormatOf(options.pictureFile);
  WriteTextFile(options.pictureFile,
                answers != nullptr ? gsl_view::DrawSphereMap(scene, *answers, *format)
                                   : gsl_view::DrawPicture(scene, *format),
                options.force);
#endif
}

/// Writes what --view and --picture ask for. `makeScene` makes a scene of surfaces. `answers` are
/// those of many directions, or null.
template <class MakeScene>
void WriteScene(const SweepOptions& options, const Scene& scene, const std::vector<Answer>* answers,
                const MakeScene& makeScene) {
  if (options.viewFile.empty() && options.pictureFile.empty()) return;
  // The corners of the moving body as they were read, unless something has changed them.
  const bool isAsRead = !scene.pose && !scene.deviation && options.offset.x == 0.0 &&
                        options.offset.y == 0.0 && options.offset.z == 0.0;
  const std::vector<double> placed =
      isAsRead ? std::vector<double>() : PlacedCorners(scene.moving.body, options.offset);
  std::vector<TriangleView> surfaces = {isAsRead ? ViewOf(scene.moving.mesh) : ViewOf(placed)};
  for (const Part& part : scene.fixed)
    surfaces.push_back(ViewOf(part.mesh));
  const gsl_view::ViewScene shown = makeScene(surfaces);
  if (!options.viewFile.empty() && answers != nullptr) {
    gsl_view::WriteSpherePage(options.viewFile, shown, *answers, options.force);
  } else if (!options.viewFile.empty()) {
    gsl_view::WriteViewerPage(options.viewFile, shown, options.force);
  }
  WritePicture(options, shown, answers);
}

void WriteOne(const SweepOptions& options, const Scene& scene, const Question& question,
              const SweepReport& report) {
  WriteScene(options, scene, nullptr, [&](const std::vector<TriangleView>& surfaces) {
    return ViewSceneOf(report, question, surfaces);
  });
}

void WriteSphere(const SweepOptions& options, const Scene& scene, const SphereReport& report) {
  WriteScene(options, scene, &report.answers, [&](const std::vector<TriangleView>& surfaces) {
    gsl_view::ViewScene shown = SceneWithoutAnswer(report, QuestionOf(options), surfaces);
    shown.answer = report.answers.at(gsl_view::TallyOf(report.answers).ShownFirst());
    return shown;
  });
}

ExitStatus AnswerOne(const SweepOptions& options, Scene& scene, const Pair& pair,
                     Display& display) {
  const Question question = QuestionOf(options);
  display.Begin("Searching", "search");
  SweepReport report;
  Ask(options, question, pair, RunOf(options, display), report);
  Describe(options, scene, report);
  AddWarning(report.warnings, FineTravels(options, scene).Check(report.answer));
  CountLeftOut(options, scene, question, report);
  display.End("search");
  ShowWarnings(options, report.warnings);
  display.Enter("write");
  WriteOne(options, scene, question, report);
  const Coord3 origin = WriteOutput(options, report, question, scene);
  WriteResults(options, report, origin);
  display.End("write");
  return Touches(report.answer) ? Touching : NoContact;
}

/// Answers many questions about the first or the last contact.
AnswerQuestions AnswerOf(const SweepOptions& options, const Pair& pair) {
  return [&](const Question* questions, std::size_t count, Answer* answers, const Run& run) {
    if (options.last) {
      pair.Last(questions, count, answers, run);
    } else {
      pair.First(questions, count, answers, run);
    }
  };
}

/// Answers the questions. An overflow names the direction.
std::vector<Answer> AnswersOf(const std::vector<Question>& questions, const AnswerQuestions& answer,
                              const Run& run) {
  std::vector<Answer> answers(questions.size());
  try {
    answer(questions.data(), questions.size(), answers.data(), run);
  } catch (const std::overflow_error&) {
    const auto isLost = [](const Answer& told) { return told.status == SweepStatus::Cancelled; };
    const auto lost = std::find_if(answers.begin(), answers.end(), isLost) - answers.begin();
    throw std::overflow_error("the travel or a point along " +
                              VectorText(questions.at(static_cast<std::size_t>(lost)).direction) +
                              ", direction " + std::to_string(lost + 1) + " of " +
                              std::to_string(questions.size()) + ", is beyond the range of double");
  }
  return answers;
}

ExitStatus AnswerSphere(const SweepOptions& options, const Scene& scene, const Pair& pair,
                        Display& display) {
  display.Begin("Searching", "search");
  std::vector<Question> questions;
  for (const Coord3& direction : EvenDirections(options.sphereCount)) {
    questions.push_back(QuestionOf(options));
    questions.back().direction = direction;
  }
  SphereReport report;
  report.answers = AnswersOf(questions, AnswerOf(options, pair), RunOf(options, display));
  Describe(options, scene, report);
  FineTravels fine(options, scene);
  for (const Answer& answer : report.answers)
    fine.Check(answer);
  AddWarning(report.warnings, fine.ForAll());
  display.End("search");
  ShowWarnings(options, report.warnings);
  display.Enter("write");
  WriteSphere(options, scene, report);
  if (!options.jsonFile.empty()) WriteJson(options, SphereAsJson(report));
  if (!options.JsonToStdout() && !options.quiet) {
    WriteStdout(SphereAsText(report) + ViewLine(options) + PictureLine(options));
  }
  display.End("write");
  const bool touches = std::any_of(report.answers.begin(), report.answers.end(), Touches);
  return touches ? Touching : NoContact;
}

/// Returns the status of what became of the lines, and says what was wrong with them.
ExitStatus StatusOf(const DirectionTally& tally, const std::string& name) {
  if (tally.wrong > 0) {
    PrintLine(name + ": line " + std::to_string(tally.firstWrong) + " is not a direction (" +
              std::to_string(tally.wrong) + " such in all)");
  }
  if (tally.beyond > 0) {
    PrintLine(name + ": the travel or a point of line " + std::to_string(tally.firstBeyond) +
              " is beyond the range of double (" + std::to_string(tally.beyond) + " such in all)");
    return Failure;
  }
  if (tally.wrong > 0) return Usage;
  return tally.touching > 0 ? Touching : NoContact;
}

ExitStatus AnswerLines(const SweepOptions& options, InputText& lines, const Scene& scene,
                       const Pair& pair, Display& display) {
  ShowWarnings(options, WarningsOf(options, scene));
  Run run;
  run.threads = options.threads;
  DirectionOutput output;
  output.write = [&](const std::string& line) {
    display.Enter("write");
    WriteStdout(line);
    display.Enter("search");
  };
  FineTravels fine(options, scene);
  output.warn = [&](const Answer& answer) {
    std::vector<std::string> warnings;
    AddWarning(warnings, fine.Check(answer));
    return warnings;
  };
  output.progress = [&](double part) { display.Update(part); };
  output.deviation = scene.deviation;
  // A person who types the lines sees no progress in them.
  if (lines.Size() > 0) {
    display.Begin("Searching", "search");
  } else {
    display.Enter("search");
  }
  const DirectionTally tally =
      AnswerDirections(lines, AnswerOf(options, pair), QuestionOf(options), run, output);
  display.End("search");
  display.End("write");
  if (!fine.ForAll().empty()) ShowWarnings(options, {fine.ForAll()});
  return StatusOf(tally, lines.Name());
}

ExitStatus SweepFiles(const SweepOptions& options) {
  CheckOutputs(options);
  std::optional<InputText> lines;
  if (!options.directionsFile.empty()) lines.emplace(options.directionsFile);
  Display display(options);
  Scene scene = ReadScene(options, display);
  display.Begin("Preparing", "prepare");
  const Pair pair = PairOf(scene, RunOf(options, display));
  if (options.solid) RequireSolids(scene);
  display.End("prepare");
  if (lines) return AnswerLines(options, *lines, scene, pair, display);
  if (options.sphereCount > 0) return AnswerSphere(options, scene, pair, display);
  return AnswerOne(options, scene, pair, display);
}

int ParseAndRun(int argc, char** argv) {
  SweepOptions options;
  const std::string text = ParseSweepOptions(argc, argv, options);
  if (!text.empty()) {
    WriteStdout(text);
    return 0;
  }
  RemoveTemporaryFilesOnSignals();
  // A write beyond the limit for files then fails with a message and does not end the program.
  std::signal(SIGXFSZ, SIG_IGN);
  return SweepFiles(options);
}

} // namespace

int main(int argc, char** argv) {
  return Guarded("gsl-sweep", [&] { return ParseAndRun(argc, argv); });
}
