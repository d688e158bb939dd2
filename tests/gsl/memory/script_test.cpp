#include "FailEachAllocation.h"
#include "atr_String.h"
#include "cls_xp2DArrayDouble.h"
#include "cow_Map.h"
#include "gsl_TransformIntObj.h"
#include "gsl_utils.h"
#include "nex_AssertException.h"
#include "omu_PrimEnum.h"
#include "omu_PrimTuple.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

// Each allocation of the script object, the enumerations, their messages and the host's containers
// fails in turn.

namespace {

using DotMethod = omu_PrimEnum<gsl_DotMethod, 1>;

template <class Exception, class Work>
bool Throws(const Work& work, const char* message) {
  try {
    work();
  } catch (const Exception& e) {
    return std::strcmp(e.what(), message) == 0;
  }
  return false;
}

/// A text that no short string holds in itself.
constexpr const char* kLongName = "gsl_FROM_IP_CENTER_OF_EDGE";

class FailingScript : public testing::Test {
protected:
  gsl_Matrix m_matrix;
  gsl_TransformIntObj m_object{omu_Shortcut("assembly.instances[0].transform"), m_matrix, "text"};
  gsl_TransformIntObj m_other{omu_Shortcut("assembly.instances[1].transform"), m_matrix, "text"};
  const cow_String m_matrixName = "matrix";
  const omu_PrimTuple m_none;
};

} // namespace

TEST_F(FailingScript, TheObjectIsMadeAndCopiedOrNot) {
  EXPECT_GE(FailEachAllocation("construction",
                               [&] {
                                 const gsl_TransformIntObj object(omu_Shortcut("a.b"), m_matrix,
                                                                  "text");
                                 return object.TypeString() == "Transform";
                               }),
            4);
  EXPECT_EQ(FailEachAllocation("Copy",
                               [&] {
                                 const std::unique_ptr<omu_InterfaceObj> copy(m_object.Copy());
                                 return !copy->IsStale();
                               }),
            1);
  EXPECT_GE(
      FailEachAllocation("Coerce and Cast",
                         [&] {
                           const std::unique_ptr<omu_InterfaceObj> a(m_object.Coerce(m_other));
                           const std::unique_ptr<omu_InterfaceObj> b(m_object.Cast("Transform"));
                           return a != nullptr && b != nullptr;
                         }),
      4);
}

TEST_F(FailingScript, ACallHasItsResultOrThrows) {
  const auto calls = [&] {
    const std::unique_ptr<omu_Primitive> result(m_object.CallMethod(m_matrixName, m_none));
    const auto& tuple = static_cast<const omu_PrimTuple&>(*result);
    return tuple.Count() == 12 && tuple.Number(0) == 1.0 && tuple.Number(11) == 0.0;
  };
  EXPECT_EQ(FailEachAllocation("matrix", calls), 3);
}

TEST_F(FailingScript, TextsAreWholeOrThrow) {
  const auto describes = [&] {
    return m_object.AsString() == "<Transform object at assembly.instances[0].transform>" &&
           m_object.AsRepr() == "assembly.instances[0].transform" &&
           m_object.FullRepr() ==
               "<Transform object at assembly.instances[0].transform>\n  methods: matrix" &&
           m_object.JournalVariable() == "transform" && m_object.MethodList().size() == 1 &&
           m_object.MemberList().empty() && m_object.MemberListForQry().empty();
  };
  EXPECT_GT(FailEachAllocation("texts", describes), 10);
  const auto compares = [&] {
    return m_object.Compare(m_other) == -1 && !(m_object == m_other) &&
           m_object.ComparePath(m_other) == -1 && m_object.IsMethod(m_matrixName);
  };
  EXPECT_GT(FailEachAllocation("comparison", compares), 0);
}

TEST_F(FailingScript, MistakesOfScriptsThrowTheirMessageOrBadAlloc) {
  const auto refuses = [&] {
    return Throws<nex_CommandException>([&] { delete m_object.CallMethod("inverse", m_none); },
                                        "'Transform' object has no method 'inverse'") &&
           Throws<nex_CommandException>([&] { delete m_object.GetMember("matrix"); },
                                        "'Transform' object has no member 'matrix'") &&
           Throws<nex_CommandException>([&] { delete m_object.Absolute(); },
                                        "'Transform' objects do not support abs()");
  };
  EXPECT_GT(FailEachAllocation("mistakes", refuses), 10);
}

TEST(FailingEnum, IsMadeOfEachKindOfTextOrThrows) {
  const auto makes = [] {
    const DotMethod fromValue(gsl_FROM_IP_CENTER_OF_EDGE);
    const DotMethod fromText{cow_String(kLongName)};
    const DotMethod fromOther{static_cast<const omu_PrimEnumBase&>(fromText)};
    const std::unique_ptr<omu_Primitive> copy(fromOther.Copy());
    return *copy == fromValue && fromOther.AsString() == kLongName;
  };
  EXPECT_GT(FailEachAllocation("construction", makes), 5);
  const auto lists = [] {
    const omu_PrimEnum<gsl_DirMethod, 1> plane(FROM_FACE);
    const cow_String all = plane.PermissibleValuesAsString();
    return plane.PermissibleValues().Count() == 5 && all.Length() > 50;
  };
  EXPECT_GT(FailEachAllocation("permissible values", lists), 10);
}

TEST(FailingEnum, AChangeIsWholeOrNot) {
  const DotMethod other(gsl_FROM_IP_MIDPT_OF_EDGE);
  const auto changes = [&] {
    DotMethod method(gsl_FROM_NODE);
    const auto isAsBefore = [&] {
      return method.GetValue() == gsl_FROM_NODE &&
             std::strcmp(method.GetString().CStr(), "gsl_FROM_NODE") == 0;
    };
    bool isKnown = false;
    ChangeOrLeave([&] { isKnown = method.SetValue(gsl_FROM_IP_CENTER_OF_EDGE); }, isAsBefore);
    DotMethod assigned(gsl_FROM_NODE);
    ChangeOrLeave([&] { assigned = other; },
                  [&] {
                    return assigned.GetValue() == gsl_FROM_NODE &&
                           std::strcmp(assigned.GetString().CStr(), "gsl_FROM_NODE") == 0;
                  });
    return isKnown && assigned == other && method.GetValue() == gsl_FROM_IP_CENTER_OF_EDGE;
  };
  EXPECT_GT(FailEachAllocation("change", changes), 1);
}

TEST(FailingEnum, AnUnknownValueThrowsItsMessageOrBadAlloc) {
  const auto refuses = [] {
    return Throws<omu_ValueErrorException>(
               [] { delete DotMethod(static_cast<gsl_DotMethod>(13)).Copy(); },
               "omu_PrimEnum(Enum) - Enum value not allowed: 13  Permissible: gsl_FROM_POINT, "
               "gsl_FROM_VERTEX, gsl_FROM_DATUM_POINT, gsl_FROM_EDGE_PARAM, gsl_FROM_FACE_DIM, "
               "gsl_FROM_EDGE_VTX, gsl_FROM_FACE_VTX, gsl_FROM_IP_VTX_ONTO_EDGE, "
               "gsl_FROM_IP_CENTER_OF_EDGE, gsl_FROM_IP_MIDPT_OF_EDGE, gsl_FROM_NODE, "
               "gsl_DOT_INVALID, gsl_FROM_DATUM_CSYS_ORIGIN") &&
           Throws<omu_ValueErrorException>(
               [] {
                 const omu_PrimEnum<gsl_DirMethod, 1> plane(FROM_FACE);
                 delete DotMethod{static_cast<const omu_PrimEnumBase&>(plane)}.Copy();
               },
               "omu_PrimEnum(const omu_PrimEnumBase&) - str not allowed: FROM_FACE");
  };
  EXPECT_GT(FailEachAllocation("unknown value", refuses), 20);
}

TEST(FailingContainers, AMessageIsFilledInWhollyOrNot) {
  const auto fills = [] {
    atr_String message = atr_translate("%1$s and %2$s and %1$s");
    const atr_String before(message);
    ChangeOrLeave([&] { atr_SubstituteFormat(message, 1, kLongName); },
                  [&] { return message == before; });
    const atr_String filled(message);
    atr_String assigned("short");
    ChangeOrLeave([&] { assigned = filled; },
                  [&] { return std::strcmp(assigned.CStr(), "short") == 0; });
    return std::strcmp(assigned.CStr(),
                       "gsl_FROM_IP_CENTER_OF_EDGE and %2$s and gsl_FROM_IP_CENTER_OF_EDGE") == 0;
  };
  EXPECT_GT(FailEachAllocation("message", fills), 4);
}

TEST(FailingContainers, AMapKeepsItsEntriesAndItsSharing) {
  const auto inserts = [] {
    cow_Map<cow_String, int> map;
    for (int i = 0; i < 20; ++i) {
      const char name[2] = {static_cast<char>('a' + i), '\0'};
      const cow_String key(name);
      const cow_Map<cow_String, int> shared = i % 3 == 0 ? map : cow_Map<cow_String, int>();
      ChangeOrLeave([&] { static_cast<void>(map.Insert(key, i)); },
                    [&] {
                      return map.Count() == static_cast<std::size_t>(i) &&
                             map.Find(key) == nullptr && (i % 3 != 0 || map.SharesWith(shared));
                    });
    }
    return map.Count() == 20 && *map.Find("t") == 19;
  };
  EXPECT_GT(FailEachAllocation("Insert", inserts), 40);
}

TEST(FailingContainers, AnAssignedMatrixIsWholeOrNot) {
  const cls_xp2DArrayDouble large(6, 7);
  const cls_xp2DArrayDouble small(2, 3);
  const auto assigns = [&] {
    cls_xp2DArrayDouble target(small);
    ChangeOrLeave([&] { target = large; },
                  [&] {
                    return target.Rows() == 2 && target.Columns() == 3 &&
                           target.end() - target.begin() == 6 && target.Uid() == small.Uid();
                  });
    return target.Rows() == 6 && target.Columns() == 7 && target.Uid() == large.Uid();
  };
  EXPECT_EQ(FailEachAllocation("assignment", assigns), 2);
}

TEST(FailingContainers, AnAssertionThrowsItsTextOrBadAlloc) {
  const auto asserts = [] {
    return Throws<nex_AssertException>([] { static_cast<void>(gsl_Truncate(1.5, 0)); },
                                       "places > 0");
  };
  EXPECT_GE(FailEachAllocation("assertion", asserts), 1);
}

TEST(FailingContainers, TheWatchSeesWhatGoesAroundTheHost) {
  if (!SeesAllocationsAround()) GTEST_SKIP() << "a sanitizer owns malloc";
  const long before = AllocationsAround();
  {
    const FailingNth watch(-1);
    void* volatile around = std::malloc(8);
    std::free(around);
    EXPECT_EQ(watch.Asked(), 0);
    int* volatile through = new int(1);
    delete through;
    EXPECT_EQ(watch.Asked(), 1);
  }
  EXPECT_EQ(AllocationsAround(), before + 1) << LastAllocationAround();
  EXPECT_NE(LastAllocationAround().find("gsl_memory_tests"), std::string::npos);
}
