// The layouts that modules of a host are compiled with. The numbers are added up by hand from the
// declared members, on a 64-bit processor. Change a number only where the rules of CHANGELOG.md
// allow it.

#include "gsl_BBox.h"
#include "gsl_Dot.h"
#include "gsl_Interval.h"
#include "gsl_LinearEqnLUDSolver.h"
#include "gsl_Matrix.h"
#include "gsl_ModelSegment.h"
#include "gsl_PersistentMatrix.h"
#include "gsl_PersistentVector.h"
#include "gsl_Plane.h"
#include "gsl_Point.h"
#include "gsl_Segment.h"
#include "gsl_StLine.h"
#include "gsl_TransformIntObj.h"
#include "gsl_Util.h"
#include "gsl_Vector.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <vector>

#ifdef GSL_TEST_RECORDS
#include "gsl_RecordReader.h"
#include "gsl_RecordStore.h"
#include "gsl_RecordWriter.h"
#endif
#ifdef GSL_TEST_MODEL
#include "gsl_Model.h"
#endif
#ifdef GSL_TEST_SWEEP
#include "gsl_Sweep.h"
#endif

namespace gsl_layout_test {

// An explicit instantiation may name private members, which a function then hands out.
template <class Tag, auto Member>
struct Reveal {
  friend constexpr auto MemberOf(Tag) { return Member; }
};
#define REVEAL(CLASS, MEMBER)                                                                      \
  struct CLASS##_##MEMBER {                                                                        \
    friend constexpr auto MemberOf(CLASS##_##MEMBER);                                              \
  };                                                                                               \
  template struct Reveal<CLASS##_##MEMBER, &CLASS::MEMBER>

REVEAL(gsl_BBox, m_uid);
REVEAL(gsl_Dot, m_uid);
REVEAL(gsl_Dot, m_point);
REVEAL(gsl_Dot, m_method);
REVEAL(gsl_Dot, m_instanceId);
REVEAL(gsl_Dot, m_entityId);
REVEAL(gsl_LinearEqnLUDSolver, m_matrix);
REVEAL(gsl_LinearEqnLUDSolver, m_size);
REVEAL(gsl_LinearEqnLUDSolver, m_pivots);
REVEAL(gsl_LinearEqnLUDSolver, m_parity);
REVEAL(gsl_LinearEqnLUDSolver, m_isSingular);
REVEAL(gsl_LinearEqnLUDSolver, m_isDecomposed);
REVEAL(gsl_ModelSegment, m_point1);
REVEAL(gsl_ModelSegment, m_point2);
REVEAL(gsl_ModelSegment, m_uid);
REVEAL(gsl_PersistentMatrix, m_matrix);
REVEAL(gsl_PersistentMatrix, m_uid);
REVEAL(gsl_PersistentVector, m_vector);
REVEAL(gsl_PersistentVector, m_uid);
REVEAL(gsl_Plane, m_ok);
REVEAL(gsl_Plane, m_point);
REVEAL(gsl_Plane, m_normal);
REVEAL(gsl_Plane, m_method);
REVEAL(gsl_Plane, m_flip);
REVEAL(gsl_Plane, m_parentIds);
REVEAL(gsl_Plane, m_ownerFeatId);
REVEAL(gsl_Plane, m_uid);
REVEAL(gsl_Segment, m_point1);
REVEAL(gsl_Segment, m_point2);
REVEAL(gsl_Segment, m_uid);
REVEAL(gsl_StLine, m_point);
REVEAL(gsl_StLine, m_direction);
REVEAL(gsl_StLine, m_method);
REVEAL(gsl_StLine, m_flip);
REVEAL(gsl_StLine, m_ok);
REVEAL(gsl_StLine, m_parentIds);
REVEAL(gsl_StLine, m_ownerFeatId);
REVEAL(gsl_StLine, m_uid);
REVEAL(gsl_TransformIntObj, m_matrix);
REVEAL(gsl_TransformIntObj, m_text);

using Sizes = std::vector<std::size_t>;

// A pointer to a data member is its offset, in the C++ ABI of gcc and clang.
template <class C, class T>
std::size_t OffsetOf(T C::*member) {
  std::ptrdiff_t offset = -1;
  static_assert(sizeof member == sizeof offset);
  std::memcpy(&offset, &member, sizeof offset);
  return static_cast<std::size_t>(offset);
}

template <class... Members>
Sizes Offsets(Members... members) {
  return {OffsetOf(members)...};
}

// A pointer to a virtual function is the offset of its slot. The bit that says so is in the first
// word, or in the second on processors of ARM. Returns a number that no slot has for a function
// that is not virtual.
template <class Function>
std::size_t SlotOf(Function function) {
  std::size_t words[2];
  static_assert(sizeof function == sizeof words);
  std::memcpy(words, &function, sizeof words);
#if defined(__aarch64__) || defined(__arm__)
  return (words[1] & 1) != 0 ? words[0] / sizeof(void*) : ~std::size_t{0};
#else
  return (words[0] & 1) != 0 ? (words[0] - 1) / sizeof(void*) : ~std::size_t{0};
#endif
}

template <class... Functions>
Sizes Slots(Functions... functions) {
  return {SlotOf(functions)...};
}

// What the host decides.
constexpr std::size_t kUid = sizeof(cls_Uid);
constexpr std::size_t kList = sizeof(cls_xp1DArrayListUint);
constexpr std::size_t kDotHolder = sizeof(cow_COW<gsl_Dot, cow_Virtual<gsl_Dot>>);
constexpr std::size_t kText = sizeof(cow_String);

TEST(Layout, PartsOfTheHostFillWholeWords) {
  static_assert(sizeof(void*) == 8 && sizeof(int) == 4 && sizeof(bool) == 1);
  EXPECT_EQ(Sizes({kUid % 8, kList % 8, kDotHolder % 8, kText % 8}), Sizes({0, 0, 0, 0}));
  EXPECT_EQ(Sizes({sizeof(gsl_DirMethod), sizeof(gsl_DotMethod), sizeof(gsl_LineMethod)}),
            Sizes({4, 4, 4}));
}

TEST(Layout, PlainValues) {
  EXPECT_EQ(Offsets(&gsl_Vector::x, &gsl_Vector::y, &gsl_Vector::z, &gsl_Vector::magnitude),
            Sizes({0, 8, 16, 24}));
  EXPECT_EQ(sizeof(gsl_Vector), 32u);
  EXPECT_EQ(Offsets(&gsl_Interval::lower, &gsl_Interval::upper), Sizes({0, 8}));
  EXPECT_EQ(sizeof(gsl_Interval), 16u);
  EXPECT_EQ(Offsets(&gsl_Matrix::m, &gsl_Matrix::isIdentity), Sizes({0, 128}));
  EXPECT_EQ(sizeof(gsl_Matrix), 136u);
}

TEST(Layout, Settings) {
  EXPECT_EQ(Offsets(&gsl_Util::linearTolerance, &gsl_Util::zeroTolerance,
                    &gsl_Util::cosineTolerance, &gsl_Util::coarseTolerance,
                    &gsl_Util::reservedSetting, &gsl_Util::displayAngleCoarse,
                    &gsl_Util::displayAngleMedium, &gsl_Util::displayFactor,
                    &gsl_Util::displayAngleFine, &gsl_Util::displayScale, &gsl_Util::startTime),
            Sizes({0, 8, 16, 24, 32, 40, 48, 56, 64, 72, 80}));
  EXPECT_EQ(sizeof(gsl_Util), 88u);
}

TEST(Layout, Solver) {
  EXPECT_EQ(Offsets(MemberOf(gsl_LinearEqnLUDSolver_m_matrix()),
                    MemberOf(gsl_LinearEqnLUDSolver_m_size()),
                    MemberOf(gsl_LinearEqnLUDSolver_m_pivots()),
                    MemberOf(gsl_LinearEqnLUDSolver_m_parity()),
                    MemberOf(gsl_LinearEqnLUDSolver_m_isSingular()),
                    MemberOf(gsl_LinearEqnLUDSolver_m_isDecomposed())),
            Sizes({0, 8, 16, 24, 28, 29}));
  EXPECT_EQ(sizeof(gsl_LinearEqnLUDSolver), 32u);
}

// Each begins with the pointer to its virtual functions, 8 bytes.
TEST(Layout, PointAndBox) {
  EXPECT_EQ(Offsets(&gsl_Point::x, &gsl_Point::y, &gsl_Point::z, &gsl_Point::uid),
            Sizes({8, 16, 24, 32}));
  EXPECT_EQ(sizeof(gsl_Point), 32 + kUid);
  EXPECT_EQ(Offsets(&gsl_BBox::min, &gsl_BBox::max, MemberOf(gsl_BBox_m_uid())),
            Sizes({8, 40 + kUid, 72 + 2 * kUid}));
  EXPECT_EQ(sizeof(gsl_BBox), 72 + 3 * kUid);
}

TEST(Layout, PersistentValues) {
  EXPECT_EQ(
      Offsets(MemberOf(gsl_PersistentVector_m_vector()), MemberOf(gsl_PersistentVector_m_uid())),
      Sizes({8, 40}));
  EXPECT_EQ(sizeof(gsl_PersistentVector), 40 + kUid);
  EXPECT_EQ(
      Offsets(MemberOf(gsl_PersistentMatrix_m_matrix()), MemberOf(gsl_PersistentMatrix_m_uid())),
      Sizes({8, 144}));
  EXPECT_EQ(sizeof(gsl_PersistentMatrix), 144 + kUid);
}

TEST(Layout, Segments) {
  EXPECT_EQ(Offsets(MemberOf(gsl_Segment_m_point1()), MemberOf(gsl_Segment_m_point2()),
                    MemberOf(gsl_Segment_m_uid())),
            Sizes({8, 40 + kUid, 72 + 2 * kUid}));
  EXPECT_EQ(sizeof(gsl_Segment), 72 + 3 * kUid);
  EXPECT_EQ(Offsets(MemberOf(gsl_ModelSegment_m_point1()), MemberOf(gsl_ModelSegment_m_point2()),
                    MemberOf(gsl_ModelSegment_m_uid())),
            Sizes({8, 8 + kDotHolder, 8 + 2 * kDotHolder}));
  EXPECT_EQ(sizeof(gsl_ModelSegment), 8 + 2 * kDotHolder + kUid);
}

TEST(Layout, Dot) {
  EXPECT_EQ(Offsets(MemberOf(gsl_Dot_m_uid()), MemberOf(gsl_Dot_m_point()),
                    MemberOf(gsl_Dot_m_method()), MemberOf(gsl_Dot_m_instanceId()),
                    MemberOf(gsl_Dot_m_entityId())),
            Sizes({8, 8 + kUid, 40 + 2 * kUid, 44 + 2 * kUid, 48 + 2 * kUid}));
  EXPECT_EQ(sizeof(gsl_Dot), 56 + 2 * kUid);
}

TEST(Layout, Line) {
  EXPECT_EQ(Offsets(MemberOf(gsl_StLine_m_point()), MemberOf(gsl_StLine_m_direction()),
                    MemberOf(gsl_StLine_m_method()), MemberOf(gsl_StLine_m_flip()),
                    MemberOf(gsl_StLine_m_ok()), MemberOf(gsl_StLine_m_parentIds()),
                    MemberOf(gsl_StLine_m_ownerFeatId()), MemberOf(gsl_StLine_m_uid())),
            Sizes({8, 40 + kUid, 80 + 2 * kUid, 84 + 2 * kUid, 85 + 2 * kUid, 88 + 2 * kUid,
                   88 + 2 * kUid + kList, 96 + 2 * kUid + kList}));
  EXPECT_EQ(sizeof(gsl_StLine), 96 + 3 * kUid + kList);
}

TEST(Layout, Plane) {
  EXPECT_EQ(Offsets(MemberOf(gsl_Plane_m_ok()), MemberOf(gsl_Plane_m_point()),
                    MemberOf(gsl_Plane_m_normal()), MemberOf(gsl_Plane_m_method()),
                    MemberOf(gsl_Plane_m_flip()), MemberOf(gsl_Plane_m_parentIds()),
                    MemberOf(gsl_Plane_m_ownerFeatId()), MemberOf(gsl_Plane_m_uid())),
            Sizes({8, 16, 48 + kUid, 88 + 2 * kUid, 92 + 2 * kUid, 96 + 2 * kUid,
                   96 + 2 * kUid + kList, 104 + 2 * kUid + kList}));
  EXPECT_EQ(sizeof(gsl_Plane), 104 + 3 * kUid + kList);
}

TEST(Layout, TransformOfScripts) {
  constexpr std::size_t base = sizeof(omu_InterfaceObj);
  EXPECT_EQ(
      Offsets(MemberOf(gsl_TransformIntObj_m_matrix()), MemberOf(gsl_TransformIntObj_m_text())),
      Sizes({base, base + 136}));
  EXPECT_EQ(sizeof(gsl_TransformIntObj), base + 136 + kText);
  EXPECT_EQ(SlotOf(&gsl_TransformIntObj::Copy), SlotOf(&omu_InterfaceObj::Copy));
}

// A virtual destructor takes the slots 0 and 1.
TEST(Layout, SlotsOfDatumEntities) {
  using P = gsl_Plane;
  EXPECT_EQ(Slots(&P::Copy, &P::Regenerate, &P::OwnerFeatID, &P::SetOwnerFeatID, &P::Centroid,
                  &P::ResetCentroid, &P::ExtensionObject, &P::ExtensionQuery, &P::DynTypeId,
                  &P::DBWrite),
            Sizes({2, 3, 4, 5, 6, 7, 8, 9, 10, 11}));
  using L = gsl_StLine;
  EXPECT_EQ(Slots(&L::Copy, &L::Regenerate, &L::OwnerFeatID, &L::SetOwnerFeatID,
                  &L::ExtensionObject, &L::ExtensionQuery, &L::DirectionForDatum, &L::DynTypeId,
                  &L::DBWrite),
            Sizes({2, 3, 4, 5, 6, 7, 8, 9, 10}));
  using D = gsl_Dot;
  EXPECT_EQ(Slots(&D::Copy, &D::Regenerate, &D::GetEntityId, &D::ExtensionPoint1,
                  &D::NumOwnerFeatures, &D::OwnerFeatureId, &D::ExtensionPoint2,
                  &D::ExtensionPoint3, &D::DynTypeId, &D::DBWrite),
            Sizes({2, 3, 4, 5, 6, 7, 8, 9, 10, 11}));
}

TEST(Layout, SlotsOfValues) {
  EXPECT_EQ(Slots(&gsl_Point::DBWrite, &gsl_BBox::DBWrite), Sizes({0, 0}));
  EXPECT_EQ(Slots(&gsl_Segment::DynTypeId, &gsl_Segment::DBWrite), Sizes({0, 1}));
  EXPECT_EQ(Slots(&gsl_ModelSegment::DynTypeId, &gsl_ModelSegment::DBWrite), Sizes({0, 1}));
  EXPECT_EQ(Slots(&gsl_PersistentVector::DynTypeId, &gsl_PersistentVector::DBWrite), Sizes({0, 1}));
  EXPECT_EQ(Slots(&gsl_PersistentMatrix::DynTypeId, &gsl_PersistentMatrix::DBWrite), Sizes({0, 1}));
  EXPECT_EQ(SlotOf(&gsl_Point::Transform), ~std::size_t{0});
}

#ifdef GSL_TEST_RECORDS
TEST(Layout, Records) {
  using I = gsl_RecordIdentity;
  EXPECT_EQ(Offsets(&I::prefix, &I::serial), Sizes({0, 8}));
  EXPECT_EQ(sizeof(I), 16u);
  EXPECT_EQ(Offsets(&gsl_RecordPlace::name, &gsl_RecordPlace::index), Sizes({0, 8}));
  EXPECT_EQ(sizeof(gsl_RecordPlace), 16u);
  using F = gsl_RecordField;
  EXPECT_EQ(Offsets(&F::name, &F::index, &F::kind, &F::integer, &F::real, &F::boolean, &F::link,
                    &F::object, &F::text),
            Sizes({0, 16, 20, 24, 24, 24, 24, 32, 40}));
  EXPECT_EQ(sizeof(F), 56u);
  using H = gsl_RecordReader::Header;
  EXPECT_EQ(Offsets(&H::typeId, &H::collection, &H::identity, &H::firstField),
            Sizes({0, 4, 8, 24}));
  EXPECT_EQ(sizeof(H), 32u);
  EXPECT_EQ(Sizes({sizeof(gsl_RecordReader), sizeof(gsl_RecordWriter), sizeof(gsl_RecordStore)}),
            Sizes({8, 8, 24}));
}

TEST(Layout, SlotsOfRecords) {
  using R = gsl_RecordReader;
  EXPECT_EQ(Slots(&R::RootCount, &R::Root, &R::RootName, &R::FindRoot, &R::ClassName, &R::TypeId,
                  &R::Identity, &R::Collection, &R::FirstField, &R::ReadHeader, &R::ReadField,
                  &R::ReadUnsigneds, &R::ReadDoubles),
            Sizes({2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14}));
  using W = gsl_RecordWriter;
  EXPECT_EQ(Slots(&W::AddRoot, &W::NameRoot, &W::NameClass, &W::AddRecord, &W::AddInteger,
                  &W::AddDouble, &W::AddBoolean, &W::AddString, &W::AddReference, &W::AddNull,
                  &W::SetCollection, &W::SetUnsigneds, &W::SetDoubles, &W::Finish, &W::TakeBack),
            Sizes({2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}));
}
#endif

#ifdef GSL_TEST_MODEL
TEST(Layout, Models) {
  constexpr std::size_t text = sizeof(std::string);
  using E = gsl_model::RootEntry;
  EXPECT_EQ(Offsets(&E::name, &E::className, &E::typeId, &E::identity, &E::bytes),
            Sizes({0, text, 2 * text, 2 * text + 8, 2 * text + 24}));
  EXPECT_EQ(sizeof(E), 2 * text + 32);
  EXPECT_EQ(Sizes({sizeof(gsl_model::Model), sizeof(gsl_model::Transaction)}), Sizes({8, 8}));
}
#endif

#ifdef GSL_TEST_SWEEP
TEST(Layout, SweepQuestionsAndBodies) {
  using T = gsl_sweep::TriangleView;
  EXPECT_EQ(Offsets(&T::vertices, &T::vertexCount, &T::corners, &T::triangleCount),
            Sizes({0, 8, 16, 24}));
  EXPECT_EQ(sizeof(T), 32u);
  using S = gsl_sweep::Solidity;
  EXPECT_EQ(
      Offsets(&S::fault, &S::hasEdge, &S::triangle, &S::otherTriangle, &S::edgeFrom, &S::edgeTo),
      Sizes({0, 1, 8, 16, 24, 48}));
  EXPECT_EQ(sizeof(S), 72u);
  using Q = gsl_sweep::Question;
  EXPECT_EQ(
      Offsets(&Q::direction, &Q::offset, &Q::maxDistance, &Q::oneSided, &Q::rule, &Q::clearance),
      Sizes({0, 24, 48, 56, 57, 64}));
  EXPECT_EQ(sizeof(Q), 72u);
  using R = gsl_sweep::Run;
  constexpr std::size_t function = sizeof(std::function<bool(double)>);
  EXPECT_EQ(Offsets(&R::threads, &R::progress, &R::executor), Sizes({0, 8, 8 + function}));
  EXPECT_EQ(sizeof(R), 8 + 2 * function);
  constexpr std::size_t shared = sizeof(std::shared_ptr<int>);
  EXPECT_EQ(Sizes({sizeof(gsl_sweep::Body), sizeof(gsl_sweep::Pair)}), Sizes({shared, shared}));
}

TEST(Layout, SweepAnswers) {
  using C = gsl_sweep::Contact;
  EXPECT_EQ(Offsets(&C::travel, &C::kind, &C::overlapsAtStart, &C::movingIsInside, &C::fixedBody,
                    &C::movingTriangle, &C::fixedTriangle, &C::movingPoint, &C::fixedPoint,
                    &C::hasNormal, &C::normal),
            Sizes({0, 8, 9, 10, 16, 24, 32, 40, 64, 88, 96}));
  EXPECT_EQ(sizeof(C), 120u);
  using A = gsl_sweep::Answer;
  EXPECT_EQ(Offsets(&A::status, &A::unitDirection, &A::contact, &A::isExact, &A::errorBound),
            Sizes({0, 8, 32, 152, 160}));
  EXPECT_EQ(sizeof(A), 168u);
  using P = gsl_sweep::PatchSummary;
  EXPECT_EQ(Offsets(&P::first, &P::pairCount, &P::low, &P::high), Sizes({0, 168, 176, 200}));
  EXPECT_EQ(sizeof(P), 224u);
  EXPECT_EQ(Offsets(&gsl_sweep::Crossing::first, &gsl_sweep::Crossing::second), Sizes({0, 8}));
  EXPECT_EQ(Offsets(&gsl_sweep::LeftOut::moving, &gsl_sweep::LeftOut::fixed), Sizes({0, 8}));
  EXPECT_EQ(Sizes({sizeof(gsl_sweep::Crossing), sizeof(gsl_sweep::LeftOut)}), Sizes({16, 16}));
}
#endif

} // namespace gsl_layout_test
