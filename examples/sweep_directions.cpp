// How far a part can move in many directions before it touches its surroundings.

#include <gsl_Sweep.h>

#include <cstddef>
#include <cstdio>
#include <vector>

namespace {

using gsl_sweep::Answer;
using gsl_sweep::Body;
using gsl_sweep::Pair;
using gsl_sweep::Question;
using gsl_sweep::SweepStatus;

/// A box of twelve triangles that share eight vertices.
Body Box(double x0, double y0, double z0, double x1, double y1, double z1) {
  const double vertices[] = {x0, y0, z0, x1, y0, z0, x1, y1, z0, x0, y1, z0,
                             x0, y0, z1, x1, y0, z1, x1, y1, z1, x0, y1, z1};
  const std::uint32_t corners[] = {0, 2, 1, 0, 3, 2, 4, 5, 6, 4, 6, 7, 0, 1, 5, 0, 5, 4,
                                   1, 2, 6, 1, 6, 5, 2, 3, 7, 2, 7, 6, 3, 0, 4, 3, 4, 7};
  return Body({vertices, 8, corners, 12});
}

const char* Name(SweepStatus status) {
  switch (status) {
  case SweepStatus::Contact:
    return "contact";
  case SweepStatus::Start:
    return "start";
  case SweepStatus::None:
    return "free";
  case SweepStatus::Cancelled:
    break;
  }
  return "cancelled";
}

void Print(const std::vector<Question>& questions, const std::vector<Answer>& answers) {
  for (std::size_t k = 0; k < answers.size(); ++k) {
    const auto& d = questions[k].direction;
    std::printf("(%2g, %2g, %2g) %s", d.x, d.y, d.z, Name(answers[k].status));
    if (answers[k].status == SweepStatus::Contact) {
      std::printf(" after %g with body %zu", answers[k].contact.travel,
                  answers[k].contact.fixedBody);
    }
    std::printf("\n");
  }
}

} // namespace

int main() {
  const Body part = Box(0, 0, 0, 1, 1, 1);
  const std::vector<Body> surroundings = {Box(-5, -5, -3, 5, 5, -2), Box(3, -5, -2, 4, 5, 5)};
  const Pair pair(part, surroundings); // prepares everything once

  std::vector<Question> questions(6);
  for (std::size_t k = 0; k < questions.size(); ++k) {
    const double sign = k % 2 == 0 ? 1.0 : -1.0;
    questions[k].direction = {k / 2 == 0 ? sign : 0.0, k / 2 == 1 ? sign : 0.0,
                              k / 2 == 2 ? sign : 0.0};
  }
  std::vector<Answer> answers(questions.size());
  pair.First(questions.data(), questions.size(), answers.data()); // on all processors
  Print(questions, answers);

  // The same, cancelled when half of it is done. One thread, so that it is the first half.
  gsl_sweep::Run run;
  run.threads = 1;
  run.progress = [](double done) { return done < 0.5; };
  pair.First(questions.data(), questions.size(), answers.data(), run);
  std::printf("cancelled:\n");
  Print(questions, answers);
}
