#include "support/RecordDiff.h"

#include "ModelSamples.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace gsl_tools;
using namespace model_samples;

using Lines = std::vector<std::string>;

/// A store with one root named "r", which `write` fills.
gsl_RecordStore Root(const std::function<void(gsl_RecordStore&, gsl_RecordIndex)>& write) {
  gsl_RecordStore store;
  const gsl_RecordIndex root = store.AddRoot(kPart, {});
  store.NameRoot("r");
  write(store, root);
  store.Finish();
  return store;
}

gsl_RecordStore WithDoubles(const std::vector<std::pair<const char*, double>>& fields) {
  return Root([&](gsl_RecordStore& store, gsl_RecordIndex root) {
    for (const auto& [name, value] : fields)
      store.AddDouble(root, {name, -1}, value);
  });
}

TEST(RecordDiff, EqualRecordsHaveNoDifference) {
  EXPECT_EQ(DifferencesOf(EveryKind(), EveryKind()), Lines{});
  EXPECT_EQ(DifferencesOf(gsl_RecordStore(), gsl_RecordStore()), Lines{});
}

TEST(RecordDiff, ValuesAreComparedByTheirBits) {
  EXPECT_EQ(DifferencesOf(EveryKind(1.5), EveryKind(std::nextafter(1.5, 2.0))),
            Lines{"~ part/x: 1.5 -> 1.5000000000000002"});
  EXPECT_EQ(DifferencesOf(EveryKind(0.0), EveryKind(-0.0)), Lines{"~ part/x: 0 -> -0"});
  EXPECT_EQ(DifferencesOf(EveryKind(std::nan("")), EveryKind(std::nan(""))), Lines{});
  EXPECT_EQ(DifferencesOf(EveryKind(std::nan("")), EveryKind(-std::nan(""))),
            Lines{"~ part/x: nan 0x7ff8000000000000 -> nan 0xfff8000000000000"});
}

TEST(RecordDiff, RootsAreMatchedByNameAndThenByOrder) {
  const auto roots = [](const Lines& names) {
    gsl_RecordStore store;
    int number = 0;
    for (const std::string& name : names) {
      const gsl_RecordIndex root = store.AddRoot(kPart, {});
      if (!name.empty()) store.NameRoot(name);
      store.AddInteger(root, {"n", -1}, name.empty() ? number++ : 0);
    }
    store.Finish();
    return store;
  };
  EXPECT_EQ(DifferencesOf(roots({"a", "", "b", ""}), roots({"", "", "b", "a"})), Lines{});
  EXPECT_EQ(DifferencesOf(roots({"a", "", "b"}), roots({"c", "b", "", ""})),
            (Lines{"- a: 0x00500001", "+ c: 0x00500001", "+ root 3: 0x00500001"}));
}

TEST(RecordDiff, FieldsAreMatchedByName) {
  EXPECT_EQ(DifferencesOf(WithDoubles({{"x", 1}, {"y", 2}}), WithDoubles({{"y", 2}, {"x", 1}})),
            Lines{});
  EXPECT_EQ(DifferencesOf(WithDoubles({{"x", 1}, {"y", 2}}), WithDoubles({{"z", 3}, {"y", 4}})),
            (Lines{"- r/x: 1", "~ r/y: 2 -> 4", "+ r/z: 3"}));
  // The first field of a name with the first one.
  EXPECT_EQ(DifferencesOf(WithDoubles({{"x", 1}, {"x", 2}}), WithDoubles({{"x", 1}})),
            Lines{"- r/x: 2"});
}

TEST(RecordDiff, KindsClassesAndIdentitiesAreCompared) {
  const auto with = [](std::uint32_t typeId, std::uint64_t serial) {
    return Root([&](gsl_RecordStore& store, gsl_RecordIndex root) {
      store.AddRecord(root, {"p", -1}, false, typeId, {kPrefix, serial});
    });
  };
  EXPECT_EQ(DifferencesOf(with(1, 1), with(2, 1)), Lines{"~ r/p: 0x00000001 -> 0x00000002"});
  EXPECT_EQ(DifferencesOf(with(1, 1), with(1, 2)),
            Lines{"~ r/p: identity 0123456789abcdef:1 -> identity 0123456789abcdef:2"});
  const gsl_RecordStore integer = Root([](gsl_RecordStore& store, gsl_RecordIndex root) {
    store.AddInteger(root, {"p", -1}, 1);
  });
  EXPECT_EQ(DifferencesOf(with(1, 1), integer), Lines{"~ r/p: 0x00000001 0123456789abcdef:1 -> 1"});
}

TEST(RecordDiff, ElementsAndEntriesAreComparedByPosition) {
  const auto unsigneds = [](const std::vector<std::uint32_t>& values) {
    return Root([&](gsl_RecordStore& store, gsl_RecordIndex root) {
      store.SetUnsigneds(root, values.data(), values.size());
    });
  };
  EXPECT_EQ(DifferencesOf(unsigneds({1, 2, 3}), unsigneds({1, 5, 3})), Lines{"~ r[1]: 2 -> 5"});
  EXPECT_EQ(DifferencesOf(unsigneds({1}), unsigneds({1, 5})),
            Lines{"~ r: 1 elements -> 2 elements"});
  const auto doubles = [](std::size_t rows, double last) {
    return Root([&](gsl_RecordStore& store, gsl_RecordIndex root) {
      const double values[] = {1, 2, 3, last};
      store.SetDoubles(root, values, rows, 4 / rows);
    });
  };
  EXPECT_EQ(DifferencesOf(doubles(2, 0.0), doubles(2, -0.0)), Lines{"~ r[1][1]: 0 -> -0"});
  EXPECT_EQ(DifferencesOf(doubles(2, 0.0), doubles(4, 0.0)), Lines{"~ r: 2 by 2 -> 4 by 1"});
  EXPECT_EQ(DifferencesOf(unsigneds({}), doubles(2, 0.0)),
            Lines{"~ r: a list of unsigned integers -> a matrix of doubles"});
  const auto entries = [](const std::vector<int>& numbers) {
    return Root([&](gsl_RecordStore& store, gsl_RecordIndex root) {
      store.SetCollection(root, gsl_RecordCollection::Objects);
      for (const int number : numbers)
        store.AddInteger(store.AddRecord(root, {}, false, kPart, {}), {"n", -1}, number);
    });
  };
  EXPECT_EQ(DifferencesOf(entries({1, 2, 3}), entries({1, 3})),
            (Lines{"~ r[1]/n: 2 -> 3", "- r[2]: 0x00500001"}));
}

TEST(RecordDiff, SharingIsCompared) {
  const auto pairs = [](bool isShared) {
    return Root([&](gsl_RecordStore& store, gsl_RecordIndex root) {
      const gsl_RecordIndex a = store.AddRecord(root, {"a", -1}, true, kPart, {});
      const gsl_RecordIndex b = store.AddRecord(root, {"b", -1}, true, kPart, {});
      store.AddReference(root, {"c", -1}, isShared ? a : b);
    });
  };
  EXPECT_EQ(DifferencesOf(pairs(true), pairs(true)), Lines{});
  EXPECT_EQ(DifferencesOf(pairs(true), pairs(false)),
            Lines{"~ r/c: shares its object with other fields"});
}

TEST(RecordDiff, CircularRecordsAndManyPlacesAreComparedInTime) {
  EXPECT_EQ(DifferencesOf(Circular(), Circular()), Lines{});
  // Each level holds the level below twice.
  const auto doubled = [](int last) {
    gsl_RecordStore store;
    const std::function<void(gsl_RecordIndex, int)> fill = [&](gsl_RecordIndex record, int levels) {
      if (levels == 0) return store.AddInteger(record, {"n", -1}, last);
      fill(store.AddRecord(record, {"a", -1}, false, kPart, {}), levels - 1);
      fill(store.AddRecord(record, {"b", -1}, false, kPart, {}), levels - 1);
    };
    fill(store.AddRoot(kPart, {}), 12);
    store.Finish();
    return store;
  };
  EXPECT_EQ(DifferencesOf(doubled(1), doubled(1)), Lines{});
  EXPECT_EQ(DifferencesOf(doubled(1), doubled(2)).size(), kMostDifferences);
}

} // namespace
