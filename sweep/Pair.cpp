#include "Engine.h"
#include "Jobs.h"
#include "Tally.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <string>
#include <utility>

namespace gsl_sweep {

struct PairState {
  std::vector<Body> keptBodies; ///< share what the bodies point to
  SceneBodies bodies;
  std::vector<const PreparedBody*> all; ///< each once
  std::atomic<bool> isPrepared{false};  ///< each body is
  std::atomic<std::size_t> questionCount{0};
  std::mutex idleMutex;
  std::vector<Workspaces> idle;
};

namespace {

/// The memory of a pair for its questions; each question takes one.
class Borrowed {
public:
  explicit Borrowed(PairState& state) : m_state(state) {
    const std::lock_guard<std::mutex> lock(state.idleMutex);
    if (state.idle.empty()) return;
    m_workspaces = std::move(state.idle.back());
    state.idle.pop_back();
  }
  ~Borrowed() {
    m_workspaces.team = nullptr;
    try {
      const std::lock_guard<std::mutex> lock(m_state.idleMutex);
      m_state.idle.push_back(std::move(m_workspaces));
    } catch (const std::bad_alloc&) {
      // They are made again when they are needed.
    }
  }
  Borrowed(const Borrowed&) = delete;
  Borrowed& operator=(const Borrowed&) = delete;

  Workspaces& Get() { return m_workspaces; }

private:
  PairState& m_state;
  Workspaces m_workspaces;
};

/// Adds the number of the question to the text of its error.
[[noreturn]] void RethrowFor(const char* what, std::size_t number) {
  const auto text = [what, number](const std::exception& error) {
    return what + (" " + std::to_string(number)) + ": " + error.what();
  };
  try {
    throw;
  } catch (const std::invalid_argument& error) {
    throw std::invalid_argument(text(error));
  } catch (const std::overflow_error& error) {
    throw std::overflow_error(text(error));
  }
}

std::size_t WorthwhileThreads(const std::vector<const PreparedBody*>& bodies) {
  std::size_t triangles = 0;
  for (const PreparedBody* body : bodies)
    triangles += body->TriangleCount();
  return gsl_sweep::WorthwhileThreads(triangles);
}

/// Calls work(body, team) for each body, side by side. What `work` does to a large body is divided
/// among the team too.
void WorkOnEach(const std::vector<const PreparedBody*>& bodies, Team& team,
                const std::function<void(const PreparedBody&, Team&)>& work) {
  if (!team.HasExecutor()) {
    team.ForEach(bodies.size(), [&](std::size_t k) { work(*bodies[k], team); });
    return;
  }
  const auto isSmall = [](const PreparedBody* body) {
    return gsl_sweep::WorthwhileThreads(body->TriangleCount()) < 2;
  };
  std::vector<const PreparedBody*> small = bodies;
  const auto large = std::partition(small.begin(), small.end(), isSmall);
  const auto smallCount = static_cast<std::size_t>(large - small.begin());
  team.ForEach(smallCount, [&](std::size_t k) { work(*small[k], Team::Alone()); });
  for (auto body = large; body != small.end(); ++body)
    work(**body, team);
}

/// Returns true when threads that each take whole bodies end so nearly together that dividing the
/// bodies, which takes two fifths more time, would not be faster.
bool AreEven(const std::vector<const PreparedBody*>& bodies, std::size_t threads) {
  std::vector<std::size_t> sizes;
  sizes.reserve(bodies.size());
  for (const PreparedBody* body : bodies)
    sizes.push_back(body->TriangleCount());
  std::sort(sizes.begin(), sizes.end(), std::greater<>());
  // The largest body goes to the thread with the fewest triangles.
  std::vector<std::size_t> taken(std::min(threads, sizes.size()), 0);
  std::size_t all = 0;
  for (const std::size_t size : sizes) {
    *std::min_element(taken.begin(), taken.end()) += size;
    all += size;
  }
  const auto most = static_cast<double>(*std::max_element(taken.begin(), taken.end()));
  return most * static_cast<double>(threads) <= 1.4 * static_cast<double>(all);
}

/// Makes the leaves and the trees, unless `tally` is cancelled, and calls afterOne() for each body.
/// An executor gets whole bodies.
template <class AfterOne>
void PrepareEach(PairState& state, const Run& run, const Tally& tally, const AfterOne& afterOne) {
  Team team(run, WorthwhileThreads(state.all));
  Team& own = AreEven(state.all, team.Width()) ? Team::Alone() : team.OwnThreads();
  team.ForEach(state.all.size(), [&](std::size_t k) {
    if (tally.IsCancelled()) return;
    state.all[k]->Prepare(own);
    afterOne();
  });
  if (!tally.IsCancelled()) state.isPrepared = true;
}

/// Prepares the bodies that a cancelled constructor has left, before jobs of questions need them.
void PrepareRest(PairState& state, const Run& run, Tally& tally) {
  if (!state.isPrepared) PrepareEach(state, run, tally, [&tally] { tally.Continue(0.0); });
}

/// Makes the slabs, which take time and save time from the second question on, and fine trees where
/// the questions so far were hard. For questions about solids it makes the facings too.
void MakeSlabs(const SceneBodies& bodies, bool areSolids, const Run& run, Tally& tally) {
  std::vector<const PreparedBody*> lacking = AllBodies(bodies);
  const auto needsNone = [areSolids](const PreparedBody* body) {
    return !body->IsComfortable() ||
           (body->SlabsIfMade() != nullptr && !(areSolids && !body->FacingsIfMade()) &&
            !(body->DeservesFine() && !body->FineIfMade()));
  };
  lacking.erase(std::remove_if(lacking.begin(), lacking.end(), needsNone), lacking.end());
  if (lacking.empty()) return;
  Team team(run, WorthwhileThreads(lacking));
  WorkOnEach(lacking, team, [&](const PreparedBody& body, Team& its) {
    const auto goesOn = [&tally] { return tally.Continue(0.0); };
    if (!tally.IsCancelled()) body.MakeSlabs(goesOn, its);
    if (!tally.IsCancelled() && areSolids) body.MakeFacings(goesOn, its);
    if (!tally.IsCancelled() && body.DeservesFine()) body.MakeFine(goesOn, its);
  });
}

/// Calls answer(k, watch, workspaces) for each k. A travel that is too large ends its own job
/// alone; any other exception cancels what is left.
template <class AnswerOne>
void AnswerEach(PairState& state, const Run& run, Tally& tally, std::size_t count, const char* what,
                const AnswerOne& answer) {
  UnevenJobs* ticking = nullptr;
  const Watch watch = [&](double part) {
    ticking->Tick();
    return tally.Continue(part);
  };
  const auto answerOne = [&](std::size_t k, Workspaces& workspaces) {
    if (tally.IsCancelled()) return;
    try {
      try {
        answer(k, watch, workspaces);
      } catch (const std::overflow_error&) {
        tally.Add();
        RethrowFor(what, k);
      }
      tally.Add();
    } catch (const std::overflow_error&) {
      throw;
    } catch (...) {
      tally.Cancel();
      throw;
    }
  };
  UnevenJobs jobs(run, count, [&] {
    auto borrowed = std::make_shared<Borrowed>(state);
    return [&answerOne, borrowed](std::size_t k) { answerOne(k, borrowed->Get()); };
  });
  ticking = &jobs;
  jobs.RunAll();
}

void RequireTouch(const Question& question) {
  if (question.rule == Rule::Solid) {
    throw std::invalid_argument(
        "Rule::Solid is for the first contact, not for the last or a patch");
  }
  if (question.clearance != 0.0) {
    throw std::invalid_argument(
        "a clearance is for the first contact, not for the last or a patch");
  }
}

/// Makes what saves time from the second question on, after all that a question needs, as far as
/// `tally` is not cancelled.
void MakeReady(PairState& state, bool areSolids, std::size_t count, const Run& run, Tally& tally) {
  PrepareRest(state, run, tally);
  if ((state.questionCount += count) > 1) MakeSlabs(state.bodies, areSolids, run, tally);
}

void DecideSolidsOn(PairState& state, const Run& run, Tally& tally) {
  PrepareRest(state, run, tally);
  Team team(run, WorthwhileThreads(state.all));
  DecideSolids(state.all, team);
}

bool IsOfSolids(const Question& question) {
  return question.rule == Rule::Solid;
}

/// Answers one question by answer(bodies, question, watch, workspaces).
template <class AnswerOne>
auto AnswerAlone(PairState& state, const Question& question, const Run& run,
                 const AnswerOne& answer) {
  RequireQuestion(question);
  Tally tally(run, 1);
  if (IsOfSolids(question)) DecideSolidsOn(state, run, tally);
  RequireSolids(state.bodies, question);
  using Result =
      decltype(answer(state.bodies, question, run.progress, std::declval<Workspaces&>()));
  MakeReady(state, IsOfSolids(question), 1, run, tally);
  if (tally.IsCancelled()) return Result();
  Team team(run, WorthwhileThreads(state.all));
  Borrowed borrowed(state);
  borrowed.Get().team = &team;
  return answer(state.bodies, question, run.progress, borrowed.Get());
}

/// Answers many questions in the same way, after require(question) for each.
template <class Require, class AnswerOne>
void AnswerBatch(PairState& state, const Question* questions, std::size_t count, Answer* answers,
                 const Run& run, const Require& require, const AnswerOne& answer) {
  Tally tally(run, count);
  bool areSolids = false;
  for (std::size_t k = 0; k < count; ++k) {
    try {
      require(questions[k]);
      RequireQuestion(questions[k]);
      if (IsOfSolids(questions[k]) && !std::exchange(areSolids, true))
        DecideSolidsOn(state, run, tally);
      RequireSolids(state.bodies, questions[k]);
    } catch (const std::invalid_argument&) {
      RethrowFor("question", k);
    }
  }
  std::fill_n(answers, count, Answer());
  if (count == 0) return;
  MakeReady(state, areSolids, count, run, tally);
  AnswerEach(state, run, tally, count, "question",
             [&](std::size_t k, const Watch& watch, Workspaces& workspaces) {
               answers[k] = answer(state.bodies, questions[k], watch, workspaces);
             });
}

} // namespace

Pair::Pair(Body moving, std::vector<Body> fixed, const Run& run)
    : m_state(std::make_shared<PairState>()) {
  SceneBodies& bodies = m_state->bodies;
  bodies.moving = moving.m_prepared.get();
  for (const Body& body : fixed)
    bodies.fixed.push_back(body.m_prepared.get());
  m_state->keptBodies = std::move(fixed);
  m_state->keptBodies.push_back(std::move(moving));
  m_state->all = AllBodies(bodies);
  Tally tally(run, m_state->all.size());
  PrepareEach(*m_state, run, tally, [&tally] { tally.Add(); });
}

Answer Pair::First(const Question& question, const Run& run) const {
  return AnswerAlone(*m_state, question, run, AnswerQuestion);
}

void Pair::First(const Question* questions, std::size_t count, Answer* answers,
                 const Run& run) const {
  const auto requireNothing = [](const Question&) {};
  AnswerBatch(*m_state, questions, count, answers, run, requireNothing, AnswerQuestion);
}

Answer Pair::Last(const Question& question, const Run& run) const {
  RequireTouch(question);
  return AnswerAlone(*m_state, question, run, AnswerLast);
}

void Pair::Last(const Question* questions, std::size_t count, Answer* answers,
                const Run& run) const {
  AnswerBatch(*m_state, questions, count, answers, run, RequireTouch, AnswerLast);
}

std::size_t Pair::Patch(const Question& question, Contact* out, std::size_t capacity,
                        const Run& run) const {
  return FindPatch(question, out, capacity, run).pairCount;
}

PatchSummary Pair::FindPatch(const Question& question, Contact* out, std::size_t capacity,
                             const Run& run) const {
  RequireTouch(question);
  return AnswerAlone(*m_state, question, run,
                     [&](const SceneBodies& bodies, const Question& asked, const Watch& watch,
                         Workspaces& workspaces) {
                       return AnswerPatch(bodies, asked, out, capacity, watch, workspaces);
                     });
}

std::vector<Answer> Pair::FirstOfEach(const Question& question, const Run& run) const {
  RequireQuestion(question);
  const SceneBodies& bodies = m_state->bodies;
  std::vector<Answer> answers(bodies.fixed.size());
  Tally tally(run, answers.size());
  if (IsOfSolids(question)) DecideSolidsOn(*m_state, run, tally);
  RequireSolids(bodies, question);
  if (answers.empty()) return answers;
  MakeReady(*m_state, IsOfSolids(question), answers.size(), run, tally);
  AnswerEach(*m_state, run, tally, answers.size(), "fixed body",
             [&](std::size_t k, const Watch& watch, Workspaces& workspaces) {
               const SceneBodies alone{bodies.moving, {bodies.fixed[k]}};
               answers[k] = AnswerQuestion(alone, question, watch, workspaces);
               if (answers[k].status == SweepStatus::Contact ||
                   answers[k].status == SweepStatus::Start) {
                 answers[k].contact.fixedBody = k;
               }
             });
  return answers;
}

LeftOut Pair::CountLeftOut(const Question& question) const {
  RequireQuestion(question);
  return gsl_sweep::CountLeftOut(m_state->bodies, question);
}

} // namespace gsl_sweep
