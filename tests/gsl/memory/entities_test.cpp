#include "FailEachAllocation.h"
#include "FeatureList.h"
#include "cls_MetadataRegistrar.h"
#include "cls_xo1DArrayList.h"
#include "gsl_BBox.h"
#include "gsl_DepthFirstSearch.h"
#include "gsl_Dot.h"
#include "gsl_LinearEqnLUDSolver.h"
#include "gsl_Matrix.h"
#include "gsl_ModelSegment.h"
#include "gsl_Plane.h"
#include "gsl_StLine.h"
#include "omu_PrimTuple.h"
#include "omu_xoObjVarray.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <memory>
#include <ostream>
#include <streambuf>
#include <vector>

// Each allocation of the entities, the arrays, the solver and the labelling fails in turn.

namespace {

constexpr unsigned int kParents = 40;

template <class Datum>
Datum WithParents(unsigned int parents, double x) {
  Datum datum(gsl_Point(x, 2.0, 3.0), gsl_Vector(0.0, x, 2.0));
  for (unsigned int id = 0; id < parents; ++id)
    datum.ParentIds().Append(1000 + id);
  datum.SetOwnerFeatID(static_cast<int>(parents));
  return datum;
}

/// Compares all that an assignment copies.
template <class Datum>
bool IsSameDatum(const Datum& a, const Datum& b) {
  return a.PointOn().x == b.PointOn().x && a.PointOn().uid == b.PointOn().uid &&
         a.Direction().y == b.Direction().y && a.Method() == b.Method() && a.Flip() == b.Flip() &&
         a.Ok() == b.Ok() && a.ParentIds() == b.ParentIds() &&
         a.ParentIds().Uid() == b.ParentIds().Uid() && a.OwnerFeatID() == b.OwnerFeatID() &&
         a.Uid() == b.Uid();
}

template <class Datum>
void ExpectCopiesAndAssignments() {
  const Datum source = WithParents<Datum>(kParents, 5.0);
  const Datum before(source);
  const auto sourceIsUnchanged = [&] { return IsSameDatum(source, before); };
  const auto copies = [&] {
    const std::unique_ptr<Datum> copy(source.Copy());
    return IsSameDatum(*copy, source);
  };
  EXPECT_EQ(FailEachAllocation("Copy", copies, sourceIsUnchanged), 2);

  Datum few = WithParents<Datum>(1, 7.0);
  few.SetFlip(true);
  few.SetOk(false);
  const auto assigns = [&] {
    Datum target(few);
    ChangeOrLeave([&] { target = source; }, [&] { return IsSameDatum(target, few); });
    return IsSameDatum(target, source);
  };
  EXPECT_EQ(FailEachAllocation("assignment", assigns, sourceIsUnchanged), 2);
  Datum& itself = few;
  few = itself;
  EXPECT_EQ(few.ParentIds().Count(), 1u);
}

} // namespace

TEST(FailingMemory, CopiesOfAPlaneAreWholeOrNotMade) {
  ExpectCopiesAndAssignments<gsl_Plane>();
}

TEST(FailingMemory, CopiesOfALineAreWholeOrNotMade) {
  ExpectCopiesAndAssignments<gsl_StLine>();
}

TEST(FailingMemory, ACopyOfADatumPointIsNullWithoutMemory) {
  const gsl_Dot dot(1.0, 2.0, 3.0);
  const auto copies = [&] {
    const std::unique_ptr<gsl_Dot> copy(dot.Copy());
    return copy != nullptr && copy->GetPoint().z == 3.0 && copy->Uid() == dot.Uid();
  };
  EXPECT_EQ(FailEachAllocation("Copy", copies), 1);
}

TEST(FailingMemory, AnEndOfAModelSegmentIsEmptyWithoutMemory) {
  const gsl_Dot from(0.0, 0.0, 0.0);
  const gsl_Dot to(0.0, 3.0, 4.0);
  const auto makes = [&] {
    const gsl_ModelSegment segment(from, to);
    const gsl_ModelSegment copy(segment);
    return copy.HasPoint1() && copy.HasPoint2() && copy.Length() == 5.0;
  };
  EXPECT_EQ(FailEachAllocation("construction", makes), 4);
}

TEST(FailingMemory, AnEndThatCannotBeClonedStaysShared) {
  const gsl_ModelSegment first(gsl_Dot(0.0, 0.0, 0.0), gsl_Dot(0.0, 3.0, 4.0));
  const auto regenerates = [&] {
    gsl_ModelSegment second(first);
    second.Regenerate(nullptr);
    return &second.Point1() != &first.Point1() && &second.Point2() != &first.Point2() &&
           second.Length() == 5.0;
  };
  EXPECT_EQ(FailEachAllocation("Regenerate", regenerates), 4);
}

TEST(FailingMemory, TheDirectionOfASegmentForScriptsLosesNothing) {
  const gsl_ModelSegment segment(gsl_Dot(0.0, 0.0, 0.0), gsl_Dot(0.0, 3.0, 4.0));
  const auto makes = [&] {
    const std::unique_ptr<omu_Primitive> result(omu_ReturnPrim(segment));
    const auto& tuple = static_cast<const omu_PrimTuple&>(*result);
    return tuple.Count() == 3 && tuple.Number(1) == 3.0 / 5.0 && tuple.Number(2) == 4.0 / 5.0;
  };
  EXPECT_EQ(FailEachAllocation("omu_ReturnPrim", makes), 2);
}

TEST(FailingMemory, AnArrayThatCannotGrowKeepsItsElements) {
  const auto grows = [] {
    omu_xoObjVarray<gsl_Dot> array;
    for (unsigned int i = 0; i < 20; ++i) {
      auto dot = std::make_unique<gsl_Dot>(7, static_cast<int>(i));
      ChangeOrLeave([&] { array.Add(dot.get()); }, [&] { return array.Count() == i; });
      static_cast<void>(dot.release());
    }
    bool isRight = array.Count() == 20;
    for (unsigned int i = 0; i < 20; ++i)
      isRight = isRight && array[i]->GetEntityId() == static_cast<int>(i);
    return isRight;
  };
  // An array that cannot grow by its ratio takes a smaller step.
  EXPECT_GT(FailEachAllocation("Add", grows, {WithoutMemory::MayManage}), 22);
  const auto reserves = [] { return omu_xoObjVarray<gsl_Plane>(100, 2.0).Capacity() == 100; };
  EXPECT_EQ(FailEachAllocation("capacity", reserves), 1);
}

namespace {

/// Appends to a list of `count` values, which another list shares or not.
template <class T>
void ExpectAppendIsWholeOrNot(std::size_t count, bool isShared, const T& value) {
  const auto appends = [&] {
    cls_xo1DArrayList<T> list;
    for (std::size_t i = 0; i < count; ++i)
      list.Append(value);
    const cls_xo1DArrayList<T> other = isShared ? list : cls_xo1DArrayList<T>();
    const T* const first = list.begin();
    ChangeOrLeave([&] { list.Append(count > 0 ? list[count - 1] : value); },
                  [&] { return list.Count() == count && list.begin() == first; });
    return list.Count() == count + 1 && other.Count() == (isShared ? count : 0) &&
           list[count].Uid() == value.Uid();
  };
  EXPECT_GE(FailEachAllocation("Append", appends), 2) << count << isShared;
}

} // namespace

TEST(FailingMemory, AListThatCannotGrowKeepsItsElementsAndItsSharing) {
  const gsl_ModelSegment segment(gsl_Dot(0.0, 0.0, 0.0), gsl_Dot(0.0, 3.0, 4.0));
  for (const std::size_t count : {0u, 1u, 4u, 5u}) {
    for (const bool isShared : {false, true})
      ExpectAppendIsWholeOrNot(count, isShared, segment);
  }
}

TEST(FailingMemory, AListOfPointsThatCannotGrowKeepsItsElements) {
  const gsl_Point point(1.0, 2.0, 3.0);
  const auto appends = [&] {
    cls_xo1DArrayList<gsl_Point> list;
    for (std::size_t i = 0; i < 9; ++i)
      ChangeOrLeave([&] { list.Append(point); }, [&] { return list.Count() == i; });
    const cls_xo1DArrayList<gsl_Point> shared(list);
    ChangeOrLeave([&] { list.Append(point); },
                  [&] { return list.Elements().SharesWith(shared.Elements()); });
    return list.Count() == 10 && shared.Count() == 9 && list[9].uid == point.uid;
  };
  EXPECT_GT(FailEachAllocation("Append", appends), 5);
}

namespace {

/// A system whose solution is all ones: the diagonal dominates, and the right side has the sums of
/// the rows.
class System {
public:
  explicit System(int size)
      : m_size(static_cast<std::size_t>(size)), m_entries(m_size * m_size), m_rows(m_size),
        m_right(m_size), m_solution(m_size) {
    Reset();
  }
  void Reset() {
    for (std::size_t i = 0; i < m_size; ++i) {
      m_rows[i] = &m_entries[i * m_size];
      m_right[i] = 0.0;
      m_solution[i] = -7.0;
      for (std::size_t j = 0; j < m_size; ++j) {
        m_rows[i][j] = i == j ? 1000.0 : static_cast<double>((i * 7 + j * 3) % 11);
        m_right[i] += m_rows[i][j];
      }
    }
  }
  bool Solve() {
    gsl_LinearEqnLUDSolver solver;
    solver.SetMatrix(m_rows.data(), static_cast<unsigned int>(m_size));
    if (!solver.Solve(m_right.data(), m_solution.data())) {
      EXPECT_EQ(m_solution[0], -7.0) << "the solution is written without memory";
      EXPECT_EQ(m_entries[0], 1000.0) << "the matrix is changed without memory";
      EXPECT_EQ(m_entries[1], 3.0) << "the matrix is changed without memory";
      return false;
    }
    bool isRight = true;
    for (const double x : m_solution)
      isRight = isRight && std::fabs(x - 1.0) < 1e-12;
    return isRight;
  }
  const std::vector<double>& Solution() const { return m_solution; }

private:
  std::size_t m_size;
  std::vector<double> m_entries;
  std::vector<double*> m_rows;
  std::vector<double> m_right;
  std::vector<double> m_solution;
};

} // namespace

TEST(FailingMemory, TheSolverFailsUntouchedOrHasTheSameBits) {
  for (const int size : {2, 16, 17, 60}) {
    System system(size);
    ASSERT_TRUE(system.Solve());
    const std::vector<double> expected = system.Solution();
    const auto solves = [&] {
      system.Reset();
      return system.Solve() && system.Solution() == expected;
    };
    // The pivots are necessary. Without scratch the elimination goes on with n numbers.
    EXPECT_EQ(FailEachAllocation("Solve", solves, {WithoutMemory::MayManage}), size <= 16 ? 1 : 2);
  }
}

TEST(FailingMemory, ASolverOfSeveralMatricesKeepsNothingOfThem) {
  constexpr std::size_t kSize = 20;
  std::vector<double> entries(kSize * kSize), right(kSize, 1.0);
  std::vector<double*> rows;
  for (std::size_t i = 0; i < kSize; ++i) {
    rows.push_back(&entries[i * kSize]);
    rows[i][i] = 1.0;
  }
  const long live = LiveBlocks();
  {
    // The factors of the identity are the identity.
    gsl_LinearEqnLUDSolver solver;
    for (const unsigned int size : {17u, 20u, 3u, 16u, 18u}) {
      solver.SetMatrix(rows.data(), size);
      EXPECT_TRUE(solver.Solve(right.data(), right.data())) << size;
    }
  }
  EXPECT_EQ(LiveBlocks(), live);
}

TEST(FailingMemory, TheSearchHasTheSameLabelsWithoutMemory) {
  // Vertex v leads to v + 2, so that the even and the odd vertices are the components.
  constexpr int kSize = 150;
  const std::unique_ptr<bool[]> adjacency(new bool[kSize * kSize]());
  for (int v = 0; v + 2 < kSize; ++v)
    adjacency[static_cast<std::size_t>(v * kSize + v + 2)] = true;
  std::array<int, kSize> labels = {};
  const auto labelsAll = [&] {
    labels.fill(-7);
    int count = -7;
    gsl_DepthFirstSearch(adjacency.get(), kSize, labels.data(), count);
    bool isRight = count == 2;
    for (int v = 0; v < kSize; ++v)
      isRight = isRight && labels[static_cast<std::size_t>(v)] == v % 2;
    return isRight;
  };
  EXPECT_EQ(FailEachAllocation("search", labelsAll, {WithoutMemory::MayManage}), 1);
}

namespace {

/// A stream buffer over an array.
class FixedBuffer : public std::streambuf {
public:
  FixedBuffer() { Clear(); }
  void Clear() { setp(m_text, m_text + sizeof m_text); }
  std::ptrdiff_t Length() const { return pptr() - pbase(); }

private:
  char m_text[1000];
};

} // namespace

TEST(FailingMemory, BoxesPointsAndPrintingNeedNone) {
  FixedBuffer buffer;
  std::ostream out(&buffer);
  gsl_Matrix turn;
  turn.AxisRotation(gsl_Point(1.0, 0.0, 0.0), gsl_Vector(0.0, 1.0, 2.0), 0.5);
  const auto works = [&] {
    buffer.Clear();
    gsl_BBox box;
    box.Add(gsl_Point(1.0, 2.0, 3.0));
    box.Add(gsl_Point(-1.0, 2.5, 4.0));
    gsl_BBox copy(box);
    copy.Transform(turn);
    box.Print(out, 2);
    gsl_Vector(1.0, 2.0, 3.0).Print(out, 2);
    gsl_Dot dot(3, 4);
    dot.SetValues(1.0, 2.0, 3.0);
    const gsl_ModelSegment empty;
    return !copy.IsEmpty() && box.GetExtent().Radius() > 0.0 && buffer.Length() > 40 &&
           dot.IsA(gsl_Dot::TypeId()) && empty.Length() == 0.0;
  };
  EXPECT_EQ(FailEachAllocation("values", works), 0);
}

namespace {

constexpr unsigned int kDerivedId = 0x7F000000u;

/// The class number `i` of a chain that derives from gsl_Dot after a number of steps.
template <unsigned int kNumber>
struct Link {
  explicit Link(const cls_ReadVisitor&) {}
  static constexpr unsigned int TypeId() { return kDerivedId + kNumber; }
};

template <unsigned int kNumber>
void Register(cls_ClassRegistrar& classes, unsigned int base) {
  classes.AddClassMD(new cls_TypeAdapter<Link<kNumber>>("Link", 203, 1u))
      .AddBase(base, [](void* object) { return object; });
}

} // namespace

TEST(FailingMemory, QuestionsAboutClassesNeedNone) {
  cls_ClassRegistrar classes;
  Register<0>(classes, gsl_Dot::TypeId());
  Register<1>(classes, kDerivedId);
  Register<2>(classes, kDerivedId + 1);
  const auto asks = [&] {
    return classes.InheritanceCheck(kDerivedId + 2, gsl_Dot::TypeId()) &&
           !classes.InheritanceCheck(kDerivedId, kDerivedId + 2) &&
           !classes.InheritanceCheck(gsl_Plane::TypeId(), gsl_Dot::TypeId());
  };
  EXPECT_EQ(FailEachAllocation("InheritanceCheck", asks), 0);
}

TEST(FailingMemory, ARegistrarThatCannotTakeAClassIsAsBefore) {
  const auto registers = [] {
    cls_ClassRegistrar classes;
    std::size_t count = 0;
    const auto add = [&](auto link) {
      using Class = typename decltype(link)::Type;
      ChangeOrLeave([&] { classes.AddClassMD(new cls_TypeAdapter<Class>("Link", 203, 1u)); },
                    [&] {
                      return classes.ClassCount() == count &&
                             classes.FindClass(Class::TypeId()) == nullptr;
                    });
      ++count;
    };
    struct First {
      using Type = Link<0>;
    };
    struct Second {
      using Type = Link<1>;
    };
    add(First());
    add(Second());
    return classes.ClassCount() == 2 && classes.FindClass(kDerivedId + 1) == &classes.Class(1);
  };
  EXPECT_GT(FailEachAllocation("AddClassMD", registers), 6);
}
