#include "RandomNumbers.h"
#include "RandomObjects.h"
#include "RandomRecords.h"
#include "ResidentPeak.h"
#include "SameContents.h"
#include "TemporaryFolder.h"
#include "TestScale.h"
#include "cls_xo1DArrayList.h"
#include "gsl_Model.h"
#include "gsl_RecordFile.h"
#include "omu_xoObjVarray.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

// Random objects of every class, and random graphs of records, go through a file of the byte form
// and through a database. What is read must equal what was written, bit for bit, with identities
// and sharing, and both files must have the same contents.
//
// GSL_ROUND_TRIPS=1000000 says how many objects of each class there are, and has the cost printed.

namespace {

using namespace random_objects;
using Reader = std::unique_ptr<const gsl_RecordReader>;
using Work = std::function<void(gsl_RecordWriter&)>;

std::size_t Count() {
  const char* const asked = std::getenv("GSL_ROUND_TRIPS");
  return static_cast<std::size_t>(asked != nullptr ? std::atol(asked) : Scaled(2000) + 100);
}

struct ByteForm {
  static constexpr const char* kName = "byte form";

  static void Save(const std::string& path, const Work& work) {
    gsl_RecordStore store;
    work(store);
    gsl_SaveRecords(store, path);
  }
  static Reader Load(const std::string& path) {
    return std::make_unique<const gsl_RecordStore>(gsl_LoadRecords(path));
  }
};

struct DatabaseForm {
  static constexpr const char* kName = "database";

  static void Save(const std::string& path, const Work& work) {
    gsl_model::Model(path).Write([&](gsl_model::Transaction& t) { work(t.Writer()); });
  }
  static Reader Load(const std::string& path) {
    return gsl_model::Model(path, gsl_model::Access::Read).ReadAll();
  }
};

/// The time and the memory of one step.
class Cost {
public:
  double Seconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count();
  }
  double Megabytes() const { return m_peak.Megabytes(); }

private:
  ResidentPeak m_peak;
  std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

class BothForms : public testing::Test {
protected:
  /// Saves with `save`, loads, and has `check` look at what was read, in each form.
  void ExpectInBothForms(const char* what, const Work& save,
                         const std::function<void(const gsl_RecordReader&)>& check) {
    const Reader bytes = ThroughFile<ByteForm>(what, save, check);
    const Reader database = ThroughFile<DatabaseForm>(what, save, check);
    EXPECT_TRUE(SameObjects(*bytes, *database));
  }

  /// A different seed each time.
  const std::uint64_t m_seed = std::random_device()();
  RandomNumbers m_random{m_seed};
  testing::ScopedTrace m_trace{__FILE__, __LINE__, "seed " + std::to_string(m_seed)};

private:
  template <class Form>
  Reader ThroughFile(const char* what, const Work& save,
                     const std::function<void(const gsl_RecordReader&)>& check) {
    SCOPED_TRACE(Form::kName);
    const std::string path = m_folder.Path(Form::kName);
    const Cost saving;
    Form::Save(path, save);
    const double saveSeconds = saving.Seconds();
    const double saveMegabytes = saving.Megabytes();
    const Cost loading;
    Reader read = Form::Load(path);
    const double loadSeconds = loading.Seconds();
    const double loadMegabytes = loading.Megabytes();
    check(*read);
    if (std::getenv("GSL_ROUND_TRIPS") != nullptr) {
      std::printf(
          "%-28s %8zu %-9s save %6.2f s %6.0f MiB  load %6.2f s %6.0f MiB  file %7.1f "
          "bytes each\n",
          what, Count(), Form::kName, saveSeconds, saveMegabytes, loadSeconds, loadMegabytes,
          static_cast<double>(std::filesystem::file_size(path)) / static_cast<double>(Count()));
      std::fflush(stdout);
    }
    return read;
  }

  TemporaryFolder m_folder;
};

template <class C>
void ExpectSame(const C& written, const C& read, Sharing& sharing) {
  ASSERT_TRUE(Same(written, read));
  if constexpr (std::is_same_v<C, gsl_ModelSegment>) {
    ASSERT_TRUE(sharing.Holds(written, read));
  }
}

template <class C>
std::vector<C> AnyObjects(RandomNumbers& random) {
  std::vector<C> objects;
  objects.reserve(Count());
  while (objects.size() < Count())
    Make(random, objects);
  return objects;
}

/// Objects that are a root each.
template <class C>
class RootsInBothForms : public BothForms {};

using Classes = testing::Types<gsl_Point, gsl_PersistentVector, gsl_PersistentMatrix, gsl_Segment,
                               gsl_BBox, gsl_Plane, gsl_StLine, gsl_Dot, gsl_ModelSegment>;

struct NamesOfClasses {
  template <class C>
  static std::string GetName(int i) {
    static const char* const names[] = {"Points", "Vectors", "Matrices",    "Segments",     "Boxes",
                                        "Planes", "Axes",    "DatumPoints", "ModelSegments"};
    return names[i];
  }
};

TYPED_TEST_SUITE(RootsInBothForms, Classes, NamesOfClasses);

TYPED_TEST(RootsInBothForms, AreRestored) {
  const std::vector<TypeParam> objects = AnyObjects<TypeParam>(this->m_random);
  this->ExpectInBothForms(
      testing::UnitTest::GetInstance()->current_test_info()->test_suite_name() + 17,
      [&](gsl_RecordWriter& to) {
        cls_Save save(to);
        for (const TypeParam& object : objects)
          object.DBWrite(cls_WriteVisitor(save));
      },
      [&](const gsl_RecordReader& records) {
        ASSERT_EQ(records.RootCount(), objects.size());
        cls_Load load(records);
        // Shared parts live as long as the objects do.
        std::vector<TypeParam> read;
        read.reserve(objects.size());
        Sharing sharing;
        for (std::size_t i = 0; i < objects.size(); ++i) {
          read.push_back(TypeParam(cls_ReadVisitor(load, i)));
          ExpectSame(objects[i], read.back(), sharing);
          if (testing::Test::HasFatalFailure()) return;
        }
      });
}

/// Objects that are the entries of an array, some of which are missing.
template <class C>
class ArraysInBothForms : public BothForms {};

using Entries = testing::Types<gsl_Dot, gsl_Plane, gsl_StLine>;

struct NamesOfEntries {
  template <class C>
  static std::string GetName(int i) {
    static const char* const names[] = {"DatumPoints", "Planes", "Axes"};
    return names[i];
  }
};

TYPED_TEST_SUITE(ArraysInBothForms, Entries, NamesOfEntries);

TYPED_TEST(ArraysInBothForms, AreRestored) {
  const std::vector<TypeParam> objects = AnyObjects<TypeParam>(this->m_random);
  omu_xoObjVarray<TypeParam> array(2, 2.0);
  for (const TypeParam& object : objects)
    array.Add(this->m_random.Chance(0.1) ? nullptr : new TypeParam(object));
  this->ExpectInBothForms(
      std::is_same_v<TypeParam, gsl_Dot>     ? "array of datum points"
      : std::is_same_v<TypeParam, gsl_Plane> ? "array of planes"
                                             : "array of axes",
      [&](gsl_RecordWriter& to) {
        cls_Save save(to);
        array.DBWrite(cls_WriteVisitor(save));
      },
      [&](const gsl_RecordReader& records) {
        cls_Load load(records);
        const omu_xoObjVarray<TypeParam> read(cls_ReadVisitor(load, 0), nullptr, nullptr);
        ASSERT_EQ(read.Uid(), array.Uid());
        ASSERT_EQ(read.Count(), array.Count());
        for (unsigned int i = 0; i < array.Count(); ++i) {
          ASSERT_EQ(read[i] == nullptr, array[i] == nullptr);
          ASSERT_TRUE(array[i] == nullptr || Same(*array[i], *read[i]));
        }
      });
}

/// Objects that are the elements of a list.
template <class C>
class ListsInBothForms : public BothForms {};

using Elements = testing::Types<gsl_Point, gsl_ModelSegment>;

struct NamesOfElements {
  template <class C>
  static std::string GetName(int i) {
    static const char* const names[] = {"Points", "ModelSegments"};
    return names[i];
  }
};

TYPED_TEST_SUITE(ListsInBothForms, Elements, NamesOfElements);

TYPED_TEST(ListsInBothForms, AreRestored) {
  const std::vector<TypeParam> objects = AnyObjects<TypeParam>(this->m_random);
  cls_xo1DArrayList<TypeParam> list;
  for (const TypeParam& object : objects)
    list.Append(object);
  this->ExpectInBothForms(
      std::is_same_v<TypeParam, gsl_Point> ? "list of points" : "list of model segments",
      [&](gsl_RecordWriter& to) {
        cls_Save save(to);
        list.DBWrite(cls_WriteVisitor(save));
      },
      [&](const gsl_RecordReader& records) {
        cls_Load load(records);
        const cls_ReadVisitor root(load, 0);
        const cls_xo1DArrayList<TypeParam> read(root, root.GetUid());
        ASSERT_EQ(read.Uid(), list.Uid());
        ASSERT_EQ(read.Count(), list.Count());
        Sharing sharing;
        for (std::size_t i = 0; i < list.Count(); ++i)
          ASSERT_NO_FATAL_FAILURE(ExpectSame(list[i], read[i], sharing));
      });
}

} // namespace

TEST_F(BothForms, RandomGraphsOfSharedObjectsAreRestored) {
  const auto write = [&](gsl_RecordWriter& to) {
    RandomRecords(m_seed, to).Write(static_cast<long>(Count()));
  };
  gsl_RecordStore written;
  write(written);
  written.Finish();
  ExpectInBothForms("random records", write, [&](const gsl_RecordReader& read) {
    EXPECT_TRUE(SameContents(read, written));
  });
}
