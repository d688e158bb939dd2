// The templates of the host over classes of the library.

#include "Conformance.h"
#include "HostAdapter.h"

#include <atr_String.h>
#include <cls_xo1DArrayList.h>
#include <cls_xp2DArrayDouble.h>
#include <cow_COW.h>
#include <cow_Virtual.h>
#include <gsl_Dot.h>
#include <gsl_ModelSegment.h>
#include <gsl_Plane.h>
#include <limits>
#include <omu_PrimEnum.h>
#include <omu_PrimTuple.h>
#include <omu_xoObjVarray.h>
#include <utility>

namespace {

int liveDots = 0;

/// Counts its objects, and copies itself as its own class unless it must not.
class CountedDot : public gsl_Dot {
public:
  explicit CountedDot(double x) : gsl_Dot(x, 0.0, 0.0) { ++liveDots; }
  CountedDot(const CountedDot& other) : gsl_Dot(other) { ++liveDots; }
  ~CountedDot() override { --liveDots; }
  gsl_Dot* Copy() const override { return refuses ? nullptr : new CountedDot(*this); }

  static bool refuses;
};

bool CountedDot::refuses = false;

using Holder = cow_COW<gsl_Dot, cow_Virtual<gsl_Dot>>;

void Holders() {
  REQUIRE(Holder().IsEmpty());
  REQUIRE(Holder().Unshared() == nullptr);
  {
    const CountedDot source(1.0);
    Holder a(source);
    REQUIRE(liveDots == 2 && !a.IsEmpty() && &*a != &source);
    REQUIRE(dynamic_cast<const CountedDot*>(&*a) != nullptr);
    REQUIRE(a->GetPoint().x == 1.0);
    const gsl_Dot* const alone = &*a;
    REQUIRE(a.Unshared() == alone && liveDots == 2);
    Holder b(a);
    REQUIRE(b->GetPoint().x == 1.0);
    gsl_Dot* const own = b.Unshared();
    REQUIRE(own != nullptr && own != alone && &*a == alone && &*b == own);
    own->SetValues(2.0, 0.0, 0.0);
    REQUIRE(a->GetPoint().x == 1.0 && b->GetPoint().x == 2.0);
    a = b;
    REQUIRE(liveDots <= 3 && a->GetPoint().x == 2.0);
    const Holder& same = a;
    a = same;
    REQUIRE(a->GetPoint().x == 2.0);
  }
  REQUIRE(liveDots == 0);
}

void HoldersWithoutAClone() {
  {
    const CountedDot source(1.0);
    Holder a(source);
    Holder b(a);
    CountedDot::refuses = true;
    const bool isEmpty = Holder(source).IsEmpty();
    // The holders may share the object or not; a refused clone leaves both as they were.
    gsl_Dot* const unshared = b.Unshared();
    CountedDot::refuses = false;
    REQUIRE(isEmpty);
    REQUIRE(unshared == nullptr || unshared == &*b);
    REQUIRE(a->GetPoint().x == 1.0 && b->GetPoint().x == 1.0);
  }
  REQUIRE(liveDots == 0);
}

void Lists() {
  cls_xo1DArrayList<gsl_Point> list;
  REQUIRE(list.IsEmpty() && list.Count() == 0 && list.begin() == list.end());
  for (int i = 0; i < 100; ++i)
    list.Append(gsl_Point(i, 0.0, 0.0));
  REQUIRE(list.Count() == 100 && !list.IsEmpty() && list.end() - list.begin() == 100);
  const cls_Uid last = list[99].uid;
  cls_xo1DArrayList<gsl_Point> copy(list);
  copy.Append(copy[99]);
  REQUIRE(list.Count() == 100 && copy.Count() == 101);
  REQUIRE(copy[100].uid == last && copy[100].x == 99.0);
  const cls_xo1DArrayList<gsl_Point> moved(std::move(copy));
  REQUIRE(moved.Count() == 101 && moved.begin()[3].x == 3.0);
  REQUIRE(copy.Count() == 0 && copy.IsEmpty());
  list.Clear();
  REQUIRE(list.IsEmpty() && moved.Count() == 101);
}

void ObjectArrays() {
  {
    omu_xoObjVarray<gsl_Dot> array(3, 2.0);
    REQUIRE(array.Count() == 0 && array.GrowthRatio() == 2.0);
    for (int i = 0; i < 1000; ++i) {
      gsl_Dot* const dot = i % 7 == 0 ? nullptr : new CountedDot(i);
      array.add(dot);
      REQUIRE(array[static_cast<unsigned int>(i)] == dot);
    }
    REQUIRE(array.Count() == 1000 && liveDots == 857);
    for (unsigned int i = 0; i < 1000; ++i) {
      REQUIRE((array[i] == nullptr) == (i % 7 == 0));
      REQUIRE(array[i] == nullptr || array[i]->GetPoint().x == i);
    }
    omu_xoObjVarray<gsl_Dot> moved(std::move(array));
    REQUIRE(moved.Count() == 1000 && array.Count() == 0);
    omu_xoObjVarray<gsl_Dot> target;
    target.add(new CountedDot(5.0));
    target = std::move(moved);
    REQUIRE(target.Count() == 1000 && moved.Count() == 0 && liveDots == 857);
    REQUIRE(target[999]->GetPoint().x == 999.0);
  }
  REQUIRE(liveDots == 0);
}

void ObjectArraysGrow() {
  const double ratios[] = {0.0, -1.0, 1.0, std::numeric_limits<double>::quiet_NaN(), 1e300};
  for (const double ratio : ratios) {
    omu_xoObjVarray<gsl_Dot> array(0, ratio);
    array.SetGrowthRatio(ratio);
    for (int i = 0; i < 100; ++i)
      array.add(nullptr);
    REQUIRE(array.Count() == 100 && array[99] == nullptr);
  }
}

void Matrices() {
  const cls_Uid uid = cls_Uid::AllocateUid();
  cls_xp2DArrayDouble matrix(4, 3, uid);
  REQUIRE(matrix.Rows() == 4 && matrix.Columns() == 3);
  for (std::size_t r = 0; r < 4; ++r) {
    for (std::size_t c = 0; c < 3; ++c) {
      REQUIRE(matrix(r, c) == 0.0);
      matrix(r, c) = static_cast<double>(10 * r + c);
    }
  }
  const cls_xp2DArrayDouble copy(matrix);
  matrix(3, 2) = -1.0;
  REQUIRE(copy(3, 2) == 32.0 && copy(1, 0) == 10.0);
}

void NumberLists() {
  gsl_Plane plane;
  REQUIRE(host_adapter::NumbersOf(plane.ParentIds()).empty());
  for (const unsigned int number : {7u, 0u, 4294967295u})
    host_adapter::Append(plane.ParentIds(), number);
  const std::vector<unsigned int> expected = {7u, 0u, 4294967295u};
  const gsl_Plane copy(plane);
  host_adapter::Append(plane.ParentIds(), 1u);
  REQUIRE(host_adapter::NumbersOf(copy.ParentIds()) == expected);
  gsl_Plane assigned;
  assigned = copy;
  REQUIRE(host_adapter::NumbersOf(assigned.ParentIds()) == expected);
}

std::string TextOf(const cow_String& text) {
  return std::string(text.CStr(), text.Length());
}

using Method = omu_PrimEnum<gsl_DotMethod, 1>;

void Enumerations() {
  const omu_PrimEnumEntry* const rows = omu_PrimEnumTable<gsl_DotMethod>::Entries();
  const std::string permissible = TextOf(Method(Method::Value(0)).PermissibleValuesAsString());
  std::size_t from = 0;
  for (const omu_PrimEnumEntry* row = rows; row->name != nullptr; ++row) {
    const Method method(cow_String(row->name));
    REQUIRE(method.GetValue() == row->value);
    REQUIRE_TEXT(std::string(method.GetString().CStr(), method.GetString().Length()), row->name);
    REQUIRE_TEXT(TextOf(method.AsString()), row->name);
    const std::unique_ptr<omu_Primitive> copy(method.Copy());
    REQUIRE(*copy == method);
    const Method first(Method::Value(0));
    REQUIRE((method == first) == (row->value == rows->value));
    // The names are listed in the order of the table.
    from = permissible.find(row->name, from);
    REQUIRE(from != std::string::npos);
    ++from;
  }
}

/// Returns the message of the exception, which must be of that line.
template <class Function>
std::string MessageOf(int line, const Function& fails) {
  try {
    fails();
  } catch (const omu_ValueErrorException& error) {
    const host_adapter::Thrown thrown = host_adapter::Describe(error);
    REQUIRE_TEXT(thrown.sourceUnit, "generated/include/omu_PrimEnum");
    REQUIRE(thrown.line == line);
    REQUIRE(thrown.uid == cls_Uid());
    return thrown.message;
  }
  return "nothing was thrown";
}

void EnumerationsRefuse() {
  const std::string names = TextOf(Method(Method::Value(0)).PermissibleValuesAsString());
  REQUIRE_TEXT(MessageOf(54, [] { Method method(static_cast<gsl_DotMethod>(-5)); }),
               "omu_PrimEnum(Enum) - Enum value not allowed: -5  Permissible: " + names);
  REQUIRE_TEXT(MessageOf(81, [] { Method method(cow_String("no %s name")); }),
               "omu_PrimEnum(const cow_String&) - str not allowed: no %s name  Permissible: " +
                   names);
  const omu_PrimEnum<gsl_LineMethod, 1> foreign(omu_PrimEnum<gsl_LineMethod, 1>::Value(0));
  REQUIRE_TEXT(MessageOf(67, [&] { Method method(foreign); }),
               "omu_PrimEnum(const omu_PrimEnumBase&) - str not allowed: " +
                   TextOf(foreign.AsString()));
}

void Tuples() {
  omu_PrimTuple tuple(2, '(');
  for (const double number : {1.5, -0.0, 3.0})
    tuple.Put(number);
  const std::vector<double> expected = {1.5, -0.0, 3.0};
  REQUIRE(host_adapter::NumbersOf(tuple) == expected);
  const std::unique_ptr<omu_Primitive> copy(tuple.Copy());
  tuple.Put(4.0);
  REQUIRE(host_adapter::NumbersOf(*copy) == expected);
}

} // namespace

std::vector<Case> TemplateCases() {
  return {
      {"holder", "a cow_COW clones before it changes a shared object, and deletes it last",
       &Holders},
      {"holder_no_clone", "a clone that is null leaves the holders as they were",
       &HoldersWithoutAClone},
      {"list", "copies of a cow_1DArray are independent, and a move leaves it empty", &Lists},
      {"object_array",
       "an omu_ObjVarray owns its elements, null or not, and a move leaves it empty",
       &ObjectArrays},
      {"object_array_growth", "an omu_ObjVarray grows with every growth ratio", &ObjectArraysGrow},
      {"matrix", "a cls_xp2DArrayDouble begins with zeros, and copies are independent", &Matrices},
      {"number_list", "copies of a cls_xp1DArrayListUint are independent", &NumberLists},
      {"enumeration", "omu_PrimEnumBase keeps the value and the name, and lists the names in order",
       &Enumerations},
      {"enumeration_refused", "messages of an enumeration are filled in", &EnumerationsRefuse},
      {"tuple", "an omu_PrimTuple keeps its numbers, and Copy makes another", &Tuples},
  };
}
