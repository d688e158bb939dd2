#include "HostObjects.h"
#include "RawRecords.h"
#include "Records.h"
#include "TestScale.h"
#include "cls_RecordException.h"
#include "cls_xp1DArrayListUint.h"
#include "cls_xp2DArrayDouble.h"
#include "gsl_RecordError.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <random>
#include <set>
#include <sstream>
#include <string>

namespace {

using Bytes = std::vector<unsigned char>;

/// A store with every kind of field, a list, both arrays and a shared object.
gsl_RecordStore SampleStore() {
  gsl_RecordStore store;
  cls_Save save(store);
  const cls_WriteVisitor root(save);
  root.StartWrite(0x7F100009u, cls_Uid(~0ull, 1));
  root.WriteInteger({0, "least"}, std::numeric_limits<int>::min());
  root.WriteInteger({1, "most"}, std::numeric_limits<int>::max());
  root.WriteInteger({2, "minus one"}, -1);
  root.WriteDouble({-1, "double"}, -0.1);
  root.WriteBoolean({-1, "yes"}, true);
  root.WriteBoolean({-1, "no"}, false);
  root.WriteString({-1, "text"}, cow_String("a\0b", 3));
  root.WriteString({-1, "empty"}, "");
  root.WriteNullObject({-1, "null"}, 0xFFFFFFFFu);
  const auto shared = TestHolder<TestNode>::Adopt(new TestNode(8));
  shared.Get()->DBWrite(cls_WriteVisitor(root, {-1, "object"}, shared));
  shared.Get()->DBWrite(cls_WriteVisitor(root, {-1, "reference"}, shared));
  cls_xp1DArrayListUint numbers;
  numbers.Append(300);
  numbers.DBWrite(cls_WriteVisitor(root, {-1, "numbers"}));
  cls_xp2DArrayDouble(2, 2).DBWrite(cls_WriteVisitor(root, {-1, "matrix"}));
  const cls_WriteVisitor entries(root, {-1, "entries"});
  entries.StartWrite(cls_kCollectionTypeId, cls_Uid());
  const std::unique_ptr<cls_ListWriter> list(entries.GetListWriter());
  list->WriteNull(5);
  cls_WriteRequestListObj request(*list);
  TestNode(9).DBWrite(cls_WriteVisitor(request));
  TestNode(10).DBWrite(cls_WriteVisitor(save));
  return store;
}

gsl_RecordStore Decoded(const Bytes& bytes) {
  return gsl_RecordStore::FromBytes(bytes.data(), bytes.size());
}

/// The names, the prefixes and the records after the text of this library's writer.
Bytes Body(const Bytes& rest) {
  const std::string writer = "gsl_geometry " + std::to_string(GSL_VERSION_MAJOR) + '.' +
                             std::to_string(GSL_VERSION_MINOR) + '.' +
                             std::to_string(GSL_VERSION_PATCH);
  Bytes body = {static_cast<unsigned char>(writer.size())};
  body.insert(body.end(), writer.begin(), writer.end());
  body.insert(body.end(), rest.begin(), rest.end());
  return body;
}

void ExpectRefused(Bytes bytes, const std::string& why) {
  try {
    Decoded(bytes);
    ADD_FAILURE() << "accepted: " << why;
  } catch (const gsl_RecordError& e) {
    EXPECT_EQ(why, e.what());
  }
}

/// A body of nobody's writing with the name "n" and no prefix, then the records, in their frame.
Bytes WithRecords(const Bytes& records) {
  Bytes body = {0, 1, 1, 'n', 0};
  body.insert(body.end(), records.begin(), records.end());
  return RawFrame(body);
}

/// A record of type 1 without a uid, then what follows its collection type.
void AppendRecord(Bytes& bytes, unsigned char flags, const Bytes& rest) {
  bytes.push_back(flags);
  bytes.push_back(1);
  bytes.push_back(0);
  bytes.insert(bytes.end(), rest.begin(), rest.end());
}

constexpr unsigned char kRecord = 4;
constexpr unsigned char kObject = 5;
constexpr unsigned char kReference = 6;

std::string HexOf(double value) {
  if (value == 0.0) return std::signbit(value) ? "-0x0.0p+0" : "0x0.0p+0";
  char text[40];
  std::snprintf(text, sizeof text, "%.13a", value);
  return text;
}

/// The value as the texts beside the golden files have it.
std::string ValueOf(const gsl_RecordField& field) {
  switch (field.kind) {
  case gsl_RecordKind::Integer:
    return std::to_string(field.integer);
  case gsl_RecordKind::Double:
    return HexOf(field.real);
  case gsl_RecordKind::Boolean:
    return field.boolean ? "1" : "0";
  case gsl_RecordKind::String:
    return std::string(field.text);
  default:
    return std::to_string(field.link);
  }
}

/// The records as the texts beside the golden files have them, but for the writer.
std::string GoldenText(const gsl_RecordStore& store) {
  std::set<gsl_RecordIndex> roots;
  for (std::size_t i = 0; i < store.RootCount(); ++i)
    roots.insert(store.Root(i));
  std::ostringstream out;
  for (gsl_RecordIndex i = 0; i < store.RecordCount(); ++i) {
    char head[100];
    std::snprintf(head, sizeof head, "record %u%s 0x%08X %llx:%llx collection %u", i,
                  roots.count(i) != 0 ? " root" : "", store.TypeId(i),
                  static_cast<unsigned long long>(store.Identity(i).prefix),
                  static_cast<unsigned long long>(store.Identity(i).serial),
                  static_cast<unsigned int>(store.Collection(i)));
    out << head << '\n';
    const auto unsigneds = store.Unsigneds(i);
    const auto doubles = store.Doubles(i);
    if (unsigneds.count != 0 || doubles.rows != 0) out << "  elements";
    for (std::size_t n = 0; n < unsigneds.count; ++n)
      out << ' ' << unsigneds.values[n];
    if (doubles.rows != 0) out << ' ' << doubles.rows << ' ' << doubles.columns;
    for (std::size_t n = 0; n < doubles.rows * doubles.columns; ++n)
      out << ' ' << HexOf(doubles.values[n]);
    if (unsigneds.count != 0 || doubles.rows != 0) out << '\n';
    for (const gsl_RecordField& field : store.Fields(i)) {
      out << "  " << (field.name.empty() ? std::string("-") : std::string(field.name)) << ' '
          << field.index << " kind " << static_cast<int>(field.kind) << ' ' << ValueOf(field)
          << '\n';
    }
  }
  return out.str();
}

std::string ContentsOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), {});
}

} // namespace

TEST(GslRecordBytes, EmptyStore) {
  const Bytes bytes = gsl_RecordStore().ToBytes();
  EXPECT_EQ(bytes, RawFrame(Body({0, 0, 0})));
  EXPECT_EQ(Decoded(bytes).RootCount(), 0u);
}

TEST(GslRecordBytes, OnePointLikeRecordByHand) {
  const gsl_RecordStore store = Recorded(0x81u, cls_Uid(2, 3), [](const cls_WriteVisitor& to) {
    to.WriteDouble({-1, "x"}, 1.0);
  });
  EXPECT_EQ(store.ToBytes(), RawFrame(Body({1, 1, 'x',                         // one name
                                            1, 2, 0,    0, 0, 0, 0,    0,   0, // one prefix
                                            1, 1, 0x81, 1,    // one root of type 0x81
                                            1, 6,             // prefix 1, serial 0 + 3
                                            0, 1, 1,    1, 1, // one field, a double
                                            0, 0, 0,    0, 0, 0, 0xF0, 0x3F})));
}

TEST(GslRecordBytes, EveryKindComesBack) {
  const gsl_RecordStore store = SampleStore();
  const Bytes bytes = store.ToBytes();
  const gsl_RecordStore read = Decoded(bytes);
  EXPECT_EQ(TextOf(read), TextOf(store));
  EXPECT_EQ(read.ToBytes(), bytes);
  EXPECT_EQ(read.RootCount(), 2u);
  cls_Load load(read);
  EXPECT_EQ(cls_ReadVisitor(load, 0).ReadString({-1, "text"}, ""), cow_String("a\0b", 3));
}

TEST(GslRecordBytes, NamesThatAreNotUsedLeaveNoTrace) {
  gsl_RecordStore store;
  cls_Save save(store);
  try {
    const cls_WriteVisitor root(save);
    root.StartWrite(1, cls_Uid());
    root.WriteInteger({-1, "forgotten"}, 1);
    throw cls_RecordException("the host gives up");
  } catch (const cls_RecordException&) {
  }
  EXPECT_EQ(store.ToBytes(), gsl_RecordStore().ToBytes());
}

TEST(GslRecordBytes, GoldenFilesReadAsTheirTexts) {
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(GOLDEN_RECORDS)) {
    if (entry.path().extension() != ".gslr") continue;
    ++count;
    const std::string bytes = ContentsOf(entry.path());
    const gsl_RecordStore store = gsl_RecordStore::FromBytes(
        reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
    std::filesystem::path text = entry.path();
    const std::string expected = ContentsOf(text.replace_extension(".txt"));
    EXPECT_EQ(GoldenText(store), expected.substr(expected.find('\n') + 1)) << entry.path();
  }
  EXPECT_GT(count, 0);
}

TEST(GslRecordBytes, IdentitiesOfSeveralPrefixesComeBack) {
  const std::uint64_t most = ~std::uint64_t{0};
  const gsl_RecordIdentity identities[] = {{0, 0}, {0, 1},    {1, 0},    {most, most},    {1, most},
                                           {1, 1}, {0, most}, {most, 0}, {5, 1ull << 63}, {5, 0}};
  gsl_RecordStore store;
  for (const gsl_RecordIdentity& identity : identities)
    store.AddRoot(1, identity);
  const gsl_RecordStore read = Decoded(store.ToBytes());
  ASSERT_EQ(read.RootCount(), std::size(identities));
  for (gsl_RecordIndex i = 0; i < std::size(identities); ++i)
    EXPECT_EQ(read.Identity(i), identities[i]) << i;
}

TEST(GslRecordBytes, EverySingleDoubleAndTripleBitFlipIsRefused) {
  const gsl_RecordStore store = SampleStore();
  const Bytes bytes = store.ToBytes();
  const auto flip = [](Bytes& form, std::size_t bit) {
    form[bit / 8] = static_cast<unsigned char>(form[bit / 8] ^ (1u << (bit % 8)));
  };
  const auto isRefused = [](const Bytes& form) {
    try {
      Decoded(form);
      return false;
    } catch (const gsl_RecordError&) {
      return true;
    }
  };
  const std::size_t bits = 8 * bytes.size();
  Bytes changed = bytes;
  for (std::size_t i = 0; i < bits; ++i) {
    flip(changed, i);
    ASSERT_TRUE(isRefused(changed)) << i;
    for (std::size_t j = i + 1; j < bits; j += kTestScaleDivisor * (1 + (i % 7))) {
      flip(changed, j);
      ASSERT_TRUE(isRefused(changed)) << i << ' ' << j;
      flip(changed, j);
    }
    flip(changed, i);
  }
  ASSERT_EQ(changed, bytes);
  std::mt19937 random(20261122);
  for (long n = 0; n < Scaled(200000); ++n) {
    std::size_t places[3];
    for (std::size_t& place : places)
      place = random() % bits;
    if (places[0] == places[1] || places[0] == places[2] || places[1] == places[2]) continue;
    for (const std::size_t place : places)
      flip(changed, place);
    ASSERT_TRUE(isRefused(changed)) << places[0] << ' ' << places[1] << ' ' << places[2];
    for (const std::size_t place : places)
      flip(changed, place);
  }
}

TEST(GslRecordBytes, EveryShorterFormIsRefused) {
  const Bytes bytes = SampleStore().ToBytes();
  for (std::size_t length = 0; length < bytes.size(); ++length) {
    const Bytes cut(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length));
    EXPECT_THROW(Decoded(cut), gsl_RecordError) << length;
  }
}

TEST(GslRecordBytes, EveryChangedByteOfABodyIsRefusedOrReadable) {
  const Bytes bytes = SampleStore().ToBytes();
  const Bytes body(bytes.begin() + 20, bytes.end() - 4);
  ASSERT_EQ(RawFrame(body), bytes);
  for (std::size_t i = 0; i < body.size(); ++i) {
    for (unsigned int value = i % kTestScaleDivisor; value < 256; value += kTestScaleDivisor) {
      Bytes changed = body;
      changed[i] = static_cast<unsigned char>(value);
      try {
        const gsl_RecordStore store = Decoded(RawFrame(changed));
        EXPECT_EQ(Decoded(store.ToBytes()).ToBytes(), store.ToBytes());
        ReadBack<TestNode>(store);
      } catch (const gsl_RecordError&) {
      } catch (const nex_Exception&) {
      }
    }
  }
}

TEST(GslRecordBytes, BytesAfterTheLastRecord) {
  Bytes records = {1};
  AppendRecord(records, 1, {0, 0, 7});
  ExpectRefused(WithRecords(records), "Bytes follow the last record");
}

TEST(GslRecordBytes, AnnouncedSizesAreBoundedByTheBytes) {
  const Bytes huge = {0xFF, 0xFF, 0xFF, 0xFF, 0x0F};
  const std::string more = "The bytes announce more than they hold";
  Bytes names = {0};
  names.insert(names.end(), huge.begin(), huge.end());
  ExpectRefused(RawFrame(huge), more);
  ExpectRefused(RawFrame(names), more);
  ExpectRefused(RawFrame({0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}), more);
  ExpectRefused(WithRecords(huge), more);

  Bytes fields = {1};
  AppendRecord(fields, 1, {0, 0xFF, 0xFF, 0xFF, 0xFF, 0x0F});
  ExpectRefused(WithRecords(fields), more);
  Bytes unsigneds = {1};
  AppendRecord(unsigneds, 1, {57, 0xFF, 0xFF, 0xFF, 0xFF, 0x0F, 0});
  ExpectRefused(WithRecords(unsigneds), more);
  // Rows times columns would wrap around.
  Bytes doubles = {1};
  AppendRecord(doubles, 1,
               {82, 0x80, 0x80, 0x80, 0x80, 0x08, 0x80, 0x80, 0x80, 0x80, 0x08, 0, 0, 0});
  ExpectRefused(WithRecords(doubles), more);
  // Few rows, but long ones.
  Bytes wide = {1};
  AppendRecord(wide, 1, {82, 1, 0xE8, 0x07, 0, 0, 0, 0, 0, 0, 0, 0, 0});
  ExpectRefused(WithRecords(wide), more);
  Bytes text = {1};
  AppendRecord(text, 1, {0, 1, 1, 1, 3, 0xFF, 0xFF, 0xFF, 0xFF, 0x0F});
  ExpectRefused(WithRecords(text), more);
}

TEST(GslRecordBytes, NumbersHaveTheirWidth) {
  ExpectRefused(RawFrame({0, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80}),
                "A number in the bytes is too long");
  ExpectRefused(RawFrame({0, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 2}),
                "A number in the bytes is too long");
  ExpectRefused(RawFrame({0, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 1}),
                "The bytes announce more than they hold");
  Bytes type = {1, 1, 0x80, 0x80, 0x80, 0x80, 0x10};
  type.insert(type.end(), 20, 0);
  ExpectRefused(WithRecords(type), "A number in the bytes is too large");
}

TEST(GslRecordBytes, RecordCannotHoldItselfNorOneBeforeIt) {
  Bytes self = {1};
  AppendRecord(self, 1, {0, 1, 1, 1, kRecord, 0});
  ExpectRefused(WithRecords(self), "A field in the bytes must hold a record after its own record");
  Bytes beyond = {1};
  AppendRecord(beyond, 1, {0, 1, 1, 1, kRecord, 1});
  ExpectRefused(WithRecords(beyond),
                "A field in the bytes must hold a record after its own record");
}

TEST(GslRecordBytes, RecordBelongsToOnePlace) {
  Bytes twice = {2};
  AppendRecord(twice, 1, {0, 2, 1, 1, kRecord, 1, 1, 1, kRecord, 1});
  AppendRecord(twice, 0, {0, 0});
  ExpectRefused(WithRecords(twice), "A record in the bytes belongs to two places");
  Bytes root = {2};
  AppendRecord(root, 1, {0, 1, 1, 1, kRecord, 1});
  AppendRecord(root, 1, {0, 0});
  ExpectRefused(WithRecords(root), "A record in the bytes belongs to two places");
  Bytes none = {2};
  AppendRecord(none, 1, {0, 0});
  AppendRecord(none, 0, {0, 0});
  ExpectRefused(WithRecords(none), "A record in the bytes does not belong to an earlier record");
}

TEST(GslRecordBytes, ReferencesLeadToSharedObjectsOnly) {
  for (const unsigned char target : Bytes{0, 1, 9}) {
    Bytes records = {2};
    AppendRecord(records, 1, {0, 2, 1, 1, kRecord, 1, 1, 1, kReference, target});
    AppendRecord(records, 0, {0, 0});
    ExpectRefused(WithRecords(records), "A field in the bytes must refer to a shared object");
  }
  Bytes good = {2};
  AppendRecord(good, 1, {0, 2, 1, 1, kReference, 1, 1, 1, kObject, 1});
  AppendRecord(good, 0, {0, 0});
  EXPECT_EQ(Decoded(WithRecords(good)).RecordCount(), 2u);
}

TEST(GslRecordBytes, SmallChecks) {
  ExpectRefused(RawFrame({0, 1, 0, 0, 0}), "A field name in the bytes is empty or cut");
  ExpectRefused(RawFrame({0, 1, 1, 0, 0, 0}), "A field name in the bytes is empty or cut");
  ExpectRefused(RawFrame({0, 2, 1, 'n', 1, 'n', 0, 0}), "A field name appears twice in the bytes");
  // Root, type 1, prefix 1 of none.
  ExpectRefused(WithRecords({1, 1, 1, 1, 0, 0, 0}),
                "An identity in the bytes has an unknown prefix");
  const auto refuse = [](unsigned char flags, const Bytes& rest, const char* why) {
    Bytes records = {1};
    AppendRecord(records, flags, rest);
    ExpectRefused(WithRecords(records), why);
  };
  refuse(2, {0, 0}, "A record in the bytes has unknown flags");
  refuse(1, {58, 0}, "A record in the bytes is an unknown collection");
  refuse(1, {0, 1, 2, 1, 0, 0}, "A field in the bytes has an unknown name");
  refuse(1, {0, 1, 1, 1, 8, 0}, "A field in the bytes is of an unknown kind");
  refuse(1, {0, 1, 1, 1, 2, 2}, "A boolean in the bytes is neither true nor false");
}

TEST(GslRecordBytes, RandomBytesAreRefused) {
  const unsigned int seed = std::random_device()();
  RecordProperty("seed", std::to_string(seed));
  std::mt19937 random(seed);
  for (int i = 0; i < 20000; ++i) {
    Bytes body;
    const std::size_t length = random() % 100;
    while (body.size() < length)
      body.push_back(static_cast<unsigned char>(random() % 7));
    try {
      const gsl_RecordStore store = Decoded(RawFrame(body));
      EXPECT_EQ(Decoded(store.ToBytes()).ToBytes(), store.ToBytes()) << "seed " << seed;
    } catch (const gsl_RecordError&) {
    }
  }
}
