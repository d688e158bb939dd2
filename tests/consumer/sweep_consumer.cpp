// What a program does that links gsl::sweep alone: bodies from arrays, a batch, a moved body, an
// exception caught across the libraries.

#include "check.h"

#include <gsl_Matrix.h>
#include <gsl_Sweep.h>

#include <stdexcept>
#include <vector>

namespace {

using namespace gsl_sweep;

const double square[] = {-1.0, -1.0, 0.0, 1.0, -1.0, 0.0, 1.0, 1.0, 0.0, -1.0, 1.0, 0.0};
const std::uint32_t halves[] = {0, 1, 2, 0, 2, 3};

Body SquareAt(double z) {
  gsl_Matrix lift;
  lift.SetTranslation(gsl_Vector(0.0, 0.0, z));
  return Body({square, 4, halves, 2}).Moved(lift);
}

void OneQuestion() {
  const Pair pair(SquareAt(5.0), {SquareAt(0.0), SquareAt(2.0)});
  Question down;
  down.direction = {0.0, 0.0, -2.0};
  const Answer answer = pair.First(down);
  Check(answer.status == SweepStatus::Contact, "the squares meet");
  Check(answer.contact.travel == 3.0, "the upper one is met first");
  Check(answer.contact.fixedBody == 1, "the second body is named");
}

void ManyQuestions() {
  const Pair pair(SquareAt(5.0), {SquareAt(0.0)});
  std::vector<Question> questions(100);
  for (Question& question : questions)
    question.direction = {0.0, 0.0, -1.0};
  std::vector<Answer> answers(questions.size());
  pair.First(questions.data(), questions.size(), answers.data());
  for (const Answer& answer : answers)
    Check(answer.contact.travel == 5.0, "every answer of a batch is given");
}

void ErrorsAreCaught() {
  try {
    const std::uint32_t wrong[] = {0, 1, 4};
    const Body body({square, 4, wrong, 1});
    Check(false, "a wrong corner is refused");
  } catch (const std::invalid_argument&) {
  }
}

} // namespace

int main() {
  OneQuestion();
  ManyQuestions();
  ErrorsAreCaught();
}
