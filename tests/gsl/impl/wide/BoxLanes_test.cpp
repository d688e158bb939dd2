#include "wide/BoxLanes.h"

#include "BatchCases.h"
#include "TestScale.h"
#include "gsl_BBox.h"
#include "gsl_Matrix.h"

#include <gtest/gtest.h>

namespace {

using namespace batch_cases;

/// A rigid-looking, a scaled, or a hostile matrix, with zeros at times.
void Fill(double (&m)[4][4], RandomNumbers& random) {
  const int kind = random.Below(4);
  for (double(&row)[4] : m) {
    for (double& entry : row) {
      entry = random.In(-3.0, 3.0);
      if (kind == 1) entry = random.Below(3) - 1.0;
      if (kind == 2) entry = random.Hostile();
    }
  }
}

gsl_BBox BoxOf(const double* b) {
  gsl_BBox box;
  box.min = gsl_Point(b[0], b[1], b[2]);
  box.max = gsl_Point(b[3], b[4], b[5]);
  return box;
}

void WriteBox(double* to, const gsl_BBox& box) {
  gsl_batch::WritePoint(to, box.min.Coords());
  gsl_batch::WritePoint(to + 3, box.max.Coords());
}

/// Sorts the corners of most boxes; the rest stay empty.
Reals BoxesOf(std::size_t count, FourPoints& points, RandomNumbers& random) {
  Reals boxes(6 * count, numbers::kSentinel);
  for (std::size_t k = 0; k < count; ++k) {
    points.Draw();
    double* const box = boxes.Data() + 6 * k;
    gsl_batch::WritePoint(box, points.p[0]);
    gsl_batch::WritePoint(box + 3, points.p[1]);
    if (random.Chance(0.1)) continue;
    for (int axis = 0; axis < 3; ++axis) {
      if (box[axis] > box[axis + 3]) std::swap(box[axis], box[axis + 3]);
    }
  }
  return boxes;
}

} // namespace

TEST(BoxLanes, EveryWidthTransformsBoxesAsTheClassDoes) {
  FourPoints points(0xB0B);
  RandomNumbers random(0xB0B);
  long inputs = 0;
  while (inputs < Scaled(40000)) {
    const auto count = static_cast<std::size_t>(random.Below(50));
    Reals boxes = BoxesOf(count, points, random);
    gsl_Matrix m;
    Fill(m.m, random);
    Reals expected(6 * count, numbers::kSentinel);
    for (std::size_t k = 0; k < count; ++k) {
      gsl_BBox box = BoxOf(boxes.Data() + 6 * k);
      box.Transform(m);
      WriteBox(expected.Data() + 6 * k, box);
    }
    for (const gsl_WideKernels* const kernels : AllKernels()) {
      const auto run = [&](const double* from, Reals& to) {
        gsl_batch::TransformBoxes(*kernels,
                                  {count, {from, 6}, {from + 3, 6}, &m.m, to.Data(), nullptr});
      };
      Reals moved(6 * count, numbers::kSentinel);
      run(boxes.Data(), moved);
      ASSERT_TRUE(Same(moved, expected)) << "after input " << inputs;
      Reals inPlace = boxes;
      run(inPlace.Data(), inPlace);
      ASSERT_TRUE(Same(inPlace, expected)) << "in place, after input " << inputs;
    }
    inputs += static_cast<long>(count);
  }
}

TEST(BoxLanes, EveryWidthFindsTheBoxThatAddFinds) {
  FourPoints points(0xB0C);
  RandomNumbers random(0xB0C);
  for (long run = 0; run < Scaled(4000); ++run) {
    const Inputs in(points, random);
    gsl_BBox box;
    for (std::size_t k = 0; k < in.count; ++k) {
      const Coord3 c = in.arrays[0][k];
      box.Add(gsl_Point(c.x, c.y, c.z));
    }
    Reals expected(6, numbers::kSentinel);
    WriteBox(expected.Data(), box);
    for (const gsl_WideKernels* const kernels : AllKernels()) {
      Reals found(6, numbers::kSentinel);
      gsl_batch::BoxOfPoints(*kernels, in.arrays[0].In(), in.count, found.Data());
      ASSERT_TRUE(Same(found, expected)) << "run " << run;
    }
  }
}

TEST(BoxLanes, TheFirstOfEqualZerosKeepsItsSignAndANaNStaysOnlyInFront) {
  for (const gsl_WideKernels* const kernels : AllKernels()) {
    for (std::size_t at = 0; at < 20; ++at) {
      PointArray points(20, 3);
      for (std::size_t k = 0; k < 20; ++k)
        points.Set(k,
                   {k == at ? -0.0 : 1.0, k == at + 1 ? 0.0 : -0.0, k == at ? numbers::kNaN : 5.0});
      for (std::size_t k = at + 1; k < 20; ++k)
        points.Set(k, {0.0, k == at + 1 ? 0.0 : -0.0, 5.0});
      double box[6];
      gsl_batch::BoxOfPoints(*kernels, points.In(), 20, box);
      EXPECT_TRUE(numbers::SameBits(box[0], -0.0)) << at;
      EXPECT_TRUE(numbers::SameBits(box[1], -0.0)) << at;
      EXPECT_TRUE(numbers::SameBits(box[2], at == 0 ? numbers::kNaN : 5.0)) << at;
    }
  }
}
