#include "gsl_Point.h"
#include "gsl_Sweep.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include <ctime>

/// Times in C++ what bench/python_calls.py times through the Python module, on the same bodies and
/// numbers, and prints nanoseconds by name.
namespace {

using gsl_sweep::Answer;
using gsl_sweep::Body;
using gsl_sweep::Pair;
using gsl_sweep::Question;
using gsl_sweep::Run;

/// Returns the processor time of this thread.
double Seconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

/// Prints the least time of one call among some rounds.
template <class Call>
void Time(const char* name, int calls, const Call& call) {
  double least = 1e9;
  for (int round = 0; round < 15; ++round) {
    const double begin = Seconds();
    for (int k = 0; k < calls; ++k)
      call();
    least = std::min(least, (Seconds() - begin) / calls);
  }
  std::printf("%s %.1f\n", name, 1e9 * least);
}

Body Box(double z) {
  const double vertices[] = {0, 0, z,     1, 0, z,     1, 1, z,     0, 1, z,
                             0, 0, z + 1, 1, 0, z + 1, 1, 1, z + 1, 0, 1, z + 1};
  const std::uint32_t corners[] = {0, 2, 1, 0, 3, 2, 4, 5, 6, 4, 6, 7, 0, 1, 5, 0, 5, 4,
                                   1, 2, 6, 1, 6, 5, 2, 3, 7, 2, 7, 6, 3, 0, 4, 3, 4, 7};
  return Body({vertices, 8, corners, 12});
}

/// The same numbers as those of bench/python_calls.py: cubes modulo a prime, from 0 to 1. No
/// triangle of them is close to a line.
std::vector<double> Numbers(std::size_t count) {
  constexpr std::uint64_t kPrime = 2147483647;
  std::vector<double> numbers;
  numbers.reserve(count);
  for (std::uint64_t k = 0; k < count; ++k)
    numbers.push_back(static_cast<double>(k * k % kPrime * k % kPrime) /
                      static_cast<double>(kPrime));
  return numbers;
}

volatile double sink;

void TimeSweeps() {
  const Body moving = Box(0.0);
  const Body fixed = Box(3.0);
  Question question;
  question.direction = {0.0, 0.0, 1.0};
  Run run;
  run.threads = 1;
  const Pair pair(moving, {fixed}, run);
  Time("sweep", 20000,
       [&] { sink = Pair(moving, {fixed}, run).First(question, run).contact.travel; });
  Time("pair.sweep", 20000, [&] { sink = pair.First(question, run).contact.travel; });
  Answer answer;
  Time("batch", 20000, [&] {
    pair.First(&question, 1, &answer, run);
    sink = answer.contact.travel;
  });
}

void TimeDistances(std::size_t rows) {
  const std::vector<double> numbers = Numbers(12 * rows);
  std::vector<double> distances(rows);
  Time("point_triangle", 1, [&] {
    const double* p = numbers.data();
    const double* a = p + 3 * rows;
    const double* b = a + 3 * rows;
    const double* c = b + 3 * rows;
    for (std::size_t k = 0; k < rows; ++k, p += 3, a += 3, b += 3, c += 3) {
      distances[k] = gsl_Point(p[0], p[1], p[2])
                         .GetDistance(gsl_Point(a[0], a[1], a[2]), gsl_Point(b[0], b[1], b[2]),
                                      gsl_Point(c[0], c[1], c[2]));
    }
    sink = distances[rows / 2];
  });
}

} // namespace

int main() {
  TimeSweeps();
  TimeDistances(1000000);
}
