#include "Arrays.h"
#include "Parts.h"
#include "SharedBody.h"
#include "WatchedRun.h"
#include "support/EvenDirections.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include <pybind11/stl.h>

namespace gsl_python {

namespace {

namespace py = pybind11;
using gsl_sweep::Answer;
using gsl_sweep::Contact;
using gsl_sweep::Pair;
using gsl_sweep::PatchSummary;
using gsl_sweep::Question;
using gsl_sweep::Rule;
using gsl_sweep::Run;
using gsl_sweep::SweepStatus;
using Vector = std::array<double, 3>;

/// Bodies of so many triangles are prepared in a few milliseconds.
constexpr std::size_t kFewTriangles = 20000;
/// The questions of a batch that are answered at a time. It limits the memory, not the batch.
constexpr std::size_t kQuestionsAtOnce = 65536;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

bool Touches(const Answer& answer) {
  return answer.status == SweepStatus::Contact || answer.status == SweepStatus::Start;
}

/// The bodies of an answer that touch the other one. A body around another touches nothing.
struct Touching {
  explicit Touching(const Answer& answer)
      : any(Touches(answer)), moving(any && (!IsInside(answer) || answer.contact.movingIsInside)),
        fixed(any && (!IsInside(answer) || !answer.contact.movingIsInside)) {}

  static bool IsInside(const Answer& answer) {
    return answer.contact.kind == gsl_sweep::ContactKind::Inside;
  }

  bool any, moving, fixed;
};

/// Returns -1 for a triangle that is not in contact.
std::int64_t NumberOf(std::size_t triangle, bool touches) {
  return touches ? static_cast<std::int64_t>(triangle) : -1;
}

py::object ObjectOf(double x) {
  return py::float_(x);
}
py::object ObjectOf(bool b) {
  return py::bool_(b);
}
py::object ObjectOf(std::int64_t n) {
  return py::int_(n);
}
py::object ObjectOf(py::object object) {
  return object;
}

/// Does the same as py::make_tuple, which takes three times as long for numbers.
template <class... Values>
py::tuple TupleOf(const Values&... values) {
  py::tuple made(sizeof...(values));
  Py_ssize_t k = 0;
  (PyTuple_SET_ITEM(made.ptr(), k++, ObjectOf(values).release().ptr()), ...);
  return made;
}

py::object ObjectOf(const Coord3& p) {
  return TupleOf(p.x, p.y, p.z);
}

/// The greatest distance, whether a question is one-sided, its rule and its clearance.
using TermNumbers = std::tuple<double, bool, int, double>;

/// What questions have in common apart from their direction and offset.
struct Terms {
  explicit Terms(const TermNumbers& numbers) {
    int rule = 0;
    std::tie(common.maxDistance, common.oneSided, rule, common.clearance) = numbers;
    common.rule = static_cast<Rule>(rule);
  }

  Question Ask(const double* direction, const double* offset) const {
    Question question = common;
    question.direction = CoordOf(direction);
    question.offset = CoordOf(offset);
    return question;
  }

  Question common;
};

/// Returns the numbers of one answer; gsl_geometry/_contact.py names them.
py::tuple NumbersOf(const Answer& answer) {
  const auto status = static_cast<std::int64_t>(answer.status);
  const py::object direction = ObjectOf(answer.unitDirection);
  const Touching touching(answer);
  if (!touching.any) {
    const py::object none = py::none();
    const std::int64_t no = -1;
    return TupleOf(status, kInfinity, direction, no, none, no, none, no, no, none, false,
                   answer.isExact, answer.errorBound);
  }
  const Contact& contact = answer.contact;
  const auto point = [](const Coord3& p, bool isSet) {
    return isSet ? ObjectOf(p) : py::object(py::none());
  };
  return TupleOf(
      status, contact.travel, direction, static_cast<std::int64_t>(contact.kind),
      point(contact.normal, contact.hasNormal), NumberOf(contact.movingTriangle, touching.moving),
      point(contact.movingPoint, touching.moving), static_cast<std::int64_t>(contact.fixedBody),
      NumberOf(contact.fixedTriangle, touching.fixed), point(contact.fixedPoint, touching.fixed),
      contact.overlapsAtStart, answer.isExact, answer.errorBound);
}

/// Answers as arrays, one row for each.
class Columns {
public:
  explicit Columns(std::size_t count)
      : m_status(MakeArray<std::uint8_t>(count)), m_travel(MakeArray(count)),
        m_direction(MakeArray(count, 3)), m_kind(MakeArray<std::int8_t>(count)),
        m_normal(MakeArray(count, 3)), m_movingTriangle(MakeArray<std::int64_t>(count)),
        m_movingPoint(MakeArray(count, 3)), m_fixedBody(MakeArray<std::int64_t>(count)),
        m_fixedTriangle(MakeArray<std::int64_t>(count)), m_fixedPoint(MakeArray(count, 3)),
        m_overlapsAtStart(MakeArray<bool>(count)), m_isExact(MakeArray<bool>(count)),
        m_errorBound(MakeArray(count)), m_to(*this) {}

  /// Needs no lock of the interpreter.
  void Write(std::size_t row, const Answer& answer) {
    const Touching touching(answer);
    const bool touches = touching.any;
    const Contact& contact = answer.contact;
    const auto point = [](const Coord3& p, bool isSet, double* to) {
      gsl_python::Write(isSet ? p : Coord3{kNaN, kNaN, kNaN}, to);
    };
    m_to.status[row] = static_cast<std::uint8_t>(answer.status);
    m_to.travel[row] = kInfinity;
    if (touches) m_to.travel[row] = contact.travel;
    point(answer.unitDirection, answer.status != SweepStatus::Cancelled, m_to.direction + 3 * row);
    m_to.kind[row] = static_cast<std::int8_t>(touches ? static_cast<int>(contact.kind) : -1);
    point(contact.normal, touches && contact.hasNormal, m_to.normal + 3 * row);
    m_to.movingTriangle[row] = NumberOf(contact.movingTriangle, touching.moving);
    point(contact.movingPoint, touching.moving, m_to.movingPoint + 3 * row);
    m_to.fixedBody[row] = NumberOf(contact.fixedBody, touches);
    m_to.fixedTriangle[row] = NumberOf(contact.fixedTriangle, touching.fixed);
    point(contact.fixedPoint, touching.fixed, m_to.fixedPoint + 3 * row);
    m_to.overlapsAtStart[row] = touches && contact.overlapsAtStart;
    m_to.isExact[row] = answer.isExact;
    m_to.errorBound[row] = answer.errorBound;
  }

  /// Returns the arrays in the order of the numbers of one answer.
  py::tuple AsTuple() const {
    return py::make_tuple(m_status, m_travel, m_direction, m_kind, m_normal, m_movingTriangle,
                          m_movingPoint, m_fixedBody, m_fixedTriangle, m_fixedPoint,
                          m_overlapsAtStart, m_isExact, m_errorBound);
  }

private:
  py::array_t<std::uint8_t> m_status;
  py::array_t<double> m_travel, m_direction;
  py::array_t<std::int8_t> m_kind;
  py::array_t<double> m_normal;
  py::array_t<std::int64_t> m_movingTriangle;
  py::array_t<double> m_movingPoint;
  py::array_t<std::int64_t> m_fixedBody, m_fixedTriangle;
  py::array_t<double> m_fixedPoint;
  py::array_t<bool> m_overlapsAtStart, m_isExact;
  py::array_t<double> m_errorBound;

  /// The memory of the arrays.
  struct Targets {
    explicit Targets(Columns& of)
        : status(of.m_status.mutable_data()), travel(of.m_travel.mutable_data()),
          direction(of.m_direction.mutable_data()), kind(of.m_kind.mutable_data()),
          normal(of.m_normal.mutable_data()), movingTriangle(of.m_movingTriangle.mutable_data()),
          movingPoint(of.m_movingPoint.mutable_data()), fixedBody(of.m_fixedBody.mutable_data()),
          fixedTriangle(of.m_fixedTriangle.mutable_data()),
          fixedPoint(of.m_fixedPoint.mutable_data()),
          overlapsAtStart(of.m_overlapsAtStart.mutable_data()),
          isExact(of.m_isExact.mutable_data()), errorBound(of.m_errorBound.mutable_data()) {}

    std::uint8_t* status;
    double *travel, *direction;
    std::int8_t* kind;
    double* normal;
    std::int64_t* movingTriangle;
    double* movingPoint;
    std::int64_t *fixedBody, *fixedTriangle;
    double* fixedPoint;
    bool *overlapsAtStart, *isExact;
    double* errorBound;
  } m_to;
};

py::tuple ColumnsOf(const std::vector<Answer>& answers) {
  Columns columns(answers.size());
  for (std::size_t k = 0; k < answers.size(); ++k)
    columns.Write(k, answers[k]);
  return columns.AsTuple();
}

bool IsQuick(const std::vector<BodyPointer>& bodies) {
  std::size_t count = 0;
  for (const BodyPointer& body : bodies)
    count += body->body.TriangleCount();
  return count <= kFewTriangles;
}

bool ArePrepared(const std::vector<BodyPointer>& bodies) {
  return std::all_of(bodies.begin(), bodies.end(),
                     [](const BodyPointer& body) { return body->isPrepared.load(); });
}

Pair PairOf(const std::vector<BodyPointer>& bodies, const Run& run) {
  std::vector<gsl_sweep::Body> fixed;
  fixed.reserve(bodies.size() - 1);
  for (std::size_t k = 1; k < bodies.size(); ++k)
    fixed.push_back(bodies[k]->body);
  bool isCancelled = false;
  Run watched = run;
  watched.progress = [&](double part) {
    const bool goesOn = run.progress(part);
    isCancelled = isCancelled || !goesOn;
    return goesOn;
  };
  Pair pair(bodies.front()->body, std::move(fixed), watched);
  if (!isCancelled) {
    for (const BodyPointer& body : bodies)
      body->isPrepared = true;
  }
  return pair;
}

/// Asks a pair that is made for this question.
py::tuple Sweep(const std::vector<BodyPointer>& bodies, const Vector& direction,
                const Vector& offset, const TermNumbers& terms) {
  const Question question = Terms(terms).Ask(direction.data(), offset.data());
  Answer answer;
  const Work work = [&](const Run& run) { answer = PairOf(bodies, run).First(question, run); };
  if (ArePrepared(bodies) || IsQuick(bodies)) {
    RunHere(work);
  } else {
    RunWatched(work, 0, py::none());
  }
  return NumbersOf(answer);
}

/// A pair for many questions.
class Pairing {
public:
  /// The moving body comes first.
  Pairing(std::vector<BodyPointer> bodies, unsigned threads, const py::object& progress)
      : m_bodies(std::move(bodies)), m_isQuick(IsQuick(m_bodies)), m_threads(threads),
        m_pair(Prepare(progress)) {}

  py::tuple One(const Vector& direction, const Vector& offset, const TermNumbers& terms,
                bool last) {
    const Question question = Terms(terms).Ask(direction.data(), offset.data());
    Answer answer;
    Watch([&](const Run& run) {
      answer = last ? m_pair.Last(question, run) : m_pair.First(question, run);
    });
    return NumbersOf(answer);
  }

  /// Answers one question for each row of `directions`.
  py::tuple Many(const Reals& directions, const Reals& offsets, const TermNumbers& numbers,
                 bool last, const py::object& progress) {
    const auto count = static_cast<std::size_t>(directions.shape(0));
    const Rows directionRows(directions, 3);
    const Rows offsetRows(offsets, 3);
    const Terms terms(numbers);
    Columns columns(count);
    std::size_t written = 0;
    RunWatched(
        [&](const Run& run) {
          std::atomic<bool> isCancelled{false};
          while (written < count && !isCancelled) {
            const std::size_t begin = written;
            const std::size_t end = std::min(begin + kQuestionsAtOnce, count);
            std::vector<Question> questions;
            questions.reserve(end - begin);
            for (std::size_t k = begin; k < end; ++k)
              questions.push_back(terms.Ask(directionRows[k], offsetRows[k]));
            std::vector<Answer> answers(end - begin);
            Ask(questions, last, {run, begin, end, count, isCancelled}, answers);
            for (; written < end; ++written)
              columns.Write(written, answers[written - begin]);
          }
        },
        m_threads, progress);
    for (; written < count; ++written)
      columns.Write(written, Answer());
    return columns.AsTuple();
  }

  py::tuple OfEach(const Vector& direction, const Vector& offset, const TermNumbers& terms) {
    const Question question = Terms(terms).Ask(direction.data(), offset.data());
    std::vector<Answer> answers;
    RunWatched([&](const Run& run) { answers = m_pair.FirstOfEach(question, run); }, m_threads,
               py::none());
    return ColumnsOf(answers);
  }

  /// Returns the answer, the number of pairs, the box around them, and the first `capacity` pairs.
  py::tuple Patch(const Vector& direction, const Vector& offset, const TermNumbers& terms,
                  std::size_t capacity) {
    const Question question = Terms(terms).Ask(direction.data(), offset.data());
    std::vector<Contact> contacts;
    PatchSummary found;
    Watch([&](const Run& run) {
      const auto find = [&](std::size_t size) {
        contacts.resize(size);
        found = m_pair.FindPatch(question, contacts.data(), size, run);
      };
      // Most patches are small, and the size is not known before they are found.
      find(std::min<std::size_t>(capacity, 1024));
      if (found.pairCount > contacts.size() && contacts.size() < capacity) {
        find(std::min(capacity, found.pairCount));
      }
    });
    std::vector<Answer> answers(std::min(contacts.size(), found.pairCount), found.first);
    for (std::size_t k = 0; k < answers.size(); ++k)
      answers[k].contact = contacts[k];
    return py::make_tuple(NumbersOf(found.first), found.pairCount, ObjectOf(found.low),
                          ObjectOf(found.high), ColumnsOf(answers));
  }

private:
  Pair Prepare(const py::object& progress) const {
    std::vector<Pair> made;
    const Work work = [&](const Run& run) { made.push_back(PairOf(m_bodies, run)); };
    if (progress.is_none() && (m_isQuick || ArePrepared(m_bodies))) {
      RunHere(work);
    } else {
      RunWatched(work, m_threads, progress);
    }
    return made.front();
  }

  /// The second question of a pair prepares more of its bodies.
  void Watch(const Work& work) {
    if (m_isQuick || m_askedCount.load() > 1) {
      RunHere(work);
    } else {
      RunWatched(work, m_threads, py::none());
    }
    ++m_askedCount;
  }

  /// A part of a batch.
  struct Part {
    const Run& run; ///< of the batch
    std::size_t begin, end, count;
    std::atomic<bool>& isCancelled;

    Run OwnRun() const {
      Run own = run;
      own.progress = [this](double done) {
        const double questions =
            static_cast<double>(begin) + static_cast<double>(end - begin) * done;
        if (!run.progress(questions / static_cast<double>(count))) isCancelled = true;
        return !isCancelled;
      };
      return own;
    }
  };

  void Ask(const std::vector<Question>& questions, bool last, const Part& part,
           std::vector<Answer>& answers) const {
    try {
      if (last) {
        m_pair.Last(questions.data(), questions.size(), answers.data(), part.OwnRun());
      } else {
        m_pair.First(questions.data(), questions.size(), answers.data(), part.OwnRun());
      }
    } catch (const std::overflow_error&) {
      const auto isLost = [](const Answer& told) { return told.status == SweepStatus::Cancelled; };
      const auto lost = std::find_if(answers.begin(), answers.end(), isLost) - answers.begin();
      const std::size_t row = part.begin + static_cast<std::size_t>(lost);
      throw std::overflow_error("directions[" + std::to_string(row) +
                                "]: the travel or a point is beyond the range of double");
    }
  }

  const std::vector<BodyPointer> m_bodies;
  const bool m_isQuick;
  const unsigned m_threads;
  const Pair m_pair;
  std::atomic<std::size_t> m_askedCount{0};
};

py::array Sphere(std::size_t count) {
  auto made = MakeArray(count, 3);
  double* to = made.mutable_data();
  for (const Coord3& direction : gsl_tools::EvenDirections(count)) {
    Write(direction, to);
    to += 3;
  }
  return std::move(made);
}

} // namespace

void AddPairs(py::module_& module) {
  module.def("sweep", &Sweep);
  module.def("sphere", &Sphere);
  py::class_<Pairing>(module, "Pair")
      .def(py::init<std::vector<BodyPointer>, unsigned, const py::object&>())
      .def("one", &Pairing::One)
      .def("many", &Pairing::Many)
      .def("of_each", &Pairing::OfEach)
      .def("patch", &Pairing::Patch);
}

} // namespace gsl_python
