#ifndef GSL_TESTS_SWEEP_ASK_H
#define GSL_TESTS_SWEEP_ASK_H

#include "support/MeshView.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

/// Questions about meshes, for the tests of the sweep.
namespace sweep_ask {

using gsl_mesh::Mesh;
using gsl_sweep::Answer;
using gsl_sweep::Body;
using gsl_sweep::Contact;
using gsl_sweep::Coord3;
using gsl_sweep::Pair;
using gsl_sweep::Question;
using gsl_sweep::Run;

inline Body BodyOf(const Mesh& mesh) {
  return Body(gsl_tools::ViewOf(mesh));
}

inline Pair PairOf(const Mesh& moving, const Mesh& fixed) {
  return Pair(BodyOf(moving), {BodyOf(fixed)});
}

inline Run OnThreads(unsigned threads) {
  Run run;
  run.threads = threads;
  return run;
}

inline bool SameBits(double a, double b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

inline bool SameBits(const Coord3& a, const Coord3& b) {
  return SameBits(a.x, b.x) && SameBits(a.y, b.y) && SameBits(a.z, b.z);
}

inline bool SameBits(const Answer& a, const Answer& b) {
  const Contact& c = a.contact;
  const Contact& d = b.contact;
  return a.status == b.status && SameBits(a.unitDirection, b.unitDirection) &&
         SameBits(c.travel, d.travel) && c.kind == d.kind &&
         c.overlapsAtStart == d.overlapsAtStart && c.movingIsInside == d.movingIsInside &&
         c.fixedBody == d.fixedBody && c.movingTriangle == d.movingTriangle &&
         c.fixedTriangle == d.fixedTriangle && SameBits(c.movingPoint, d.movingPoint) &&
         SameBits(c.fixedPoint, d.fixedPoint) && c.hasNormal == d.hasNormal &&
         SameBits(c.normal, d.normal);
}

/// Asks a fresh pair, then the same pair again in a batch with that many threads. The pair is then
/// fully prepared, and every answer must equal the first answer.
inline Answer AskInEveryWay(const Mesh& moving, const Mesh& fixed, const Question& question,
                            unsigned threads) {
  const Pair pair = PairOf(moving, fixed);
  const Answer answer = pair.First(question, OnThreads(1));
  const std::vector<Question> questions(threads + 1, question);
  std::vector<Answer> answers(questions.size());
  pair.First(questions.data(), questions.size(), answers.data(), OnThreads(threads));
  for (const Answer& again : answers)
    EXPECT_TRUE(SameBits(again, answer));
  return answer;
}

} // namespace sweep_ask

#endif
