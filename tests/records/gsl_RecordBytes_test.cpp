#include "Crc32c.h"
#include "HostObjects.h"
#include "RawRecords.h"
#include "Records.h"
#include "TestScale.h"
#include "cls_RecordException.h"
#include "cls_xp1DArrayListUint.h"
#include "cls_xp2DArrayDouble.h"
#include "gsl_RecordError.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <random>
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

std::string MessageOf(const Bytes& bytes) {
  try {
    Decoded(bytes);
  } catch (const gsl_RecordError& error) {
    return error.what();
  }
  return "accepted";
}

/// A body of nobody's writing: the name "n", the class 1 without a name, the text "t", no prefix,
/// the shapes, the objects and the roots; then the number of records and the records.
Bytes WithRecords(const Bytes& shapes, const Bytes& objects, const Bytes& roots,
                  const Bytes& records) {
  Bytes body = {0, 1, 1, 'n', 1, 1, 0, 1, 1, 't', 0};
  for (const Bytes& part : {shapes, objects, roots, records})
    body.insert(body.end(), part.begin(), part.end());
  return RawFrame(body);
}

/// One root, whose only record has one field "n" of a kind, and a value.
Bytes WithValue(unsigned char kind, const Bytes& value) {
  Bytes records = {1, 0, 0};
  records.insert(records.end(), value.begin(), value.end());
  return WithRecords({1, 0, 0, 1, 0, 1, kind}, {0}, {1, 0, 0}, records);
}

/// One root, whose only record is a collection with these elements.
Bytes WithElements(unsigned char collection, const Bytes& elements) {
  Bytes records = {1, 0, 0};
  records.insert(records.end(), elements.begin(), elements.end());
  return WithRecords({1, 0, collection, 0}, {0}, {1, 0, 0}, records);
}

/// Shape 0 has no field, shape 1 a record, shape 2 a shared object.
const Bytes kThreeShapes = {3, 0, 0, 0, 0, 0, 1, 0, 1, 4, 0, 0, 1, 0, 1, 5};

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
  case gsl_RecordKind::Object:
  case gsl_RecordKind::Reference:
    return "object " + std::to_string(field.object) + " record " + std::to_string(field.link);
  default:
    return std::to_string(field.link);
  }
}

/// The records as the texts beside the golden files have them, but for the writer.
std::string GoldenText(const gsl_RecordStore& store) {
  std::ostringstream out;
  for (std::size_t i = 0; i < store.RootCount(); ++i)
    out << "root " << i << " \"" << store.RootName(i) << "\" record " << store.Root(i) << '\n';
  for (gsl_RecordIndex i = 0; i < store.RecordCount(); ++i) {
    char head[100];
    std::snprintf(head, sizeof head, "record %u 0x%08X \"%s\" %llx:%llx collection %u", i,
                  store.TypeId(i), std::string(store.ClassName(store.TypeId(i))).c_str(),
                  static_cast<unsigned long long>(store.Identity(i).prefix),
                  static_cast<unsigned long long>(store.Identity(i).serial),
                  static_cast<unsigned int>(store.Collection(i)));
    out << head << '\n';
    std::vector<std::uint32_t> unsigneds;
    store.ReadUnsigneds(i, unsigneds);
    std::vector<double> doubles;
    std::size_t rows = 0;
    std::size_t columns = 0;
    store.ReadDoubles(i, doubles, rows, columns);
    if (!unsigneds.empty() || rows != 0) out << "  elements";
    for (const std::uint32_t value : unsigneds)
      out << ' ' << value;
    if (rows != 0) out << ' ' << rows << ' ' << columns;
    for (const double value : doubles)
      out << ' ' << HexOf(value);
    if (!unsigneds.empty() || rows != 0) out << '\n';
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
  EXPECT_EQ(bytes, RawFrame(Body({0, 0, 0, 0, 0, 0, 0, 0})));
  EXPECT_EQ(Decoded(bytes).RootCount(), 0u);
}

TEST(GslRecordBytes, OnePointLikeRecordByHand) {
  gsl_RecordStore store;
  const gsl_RecordIndex root = store.AddRoot(0x81u, {2, 3});
  store.NameRoot("o");
  store.NameClass(0x81u, "C");
  store.AddDouble(root, {"x", -1}, 1.0);
  EXPECT_EQ(store.ToBytes(),
            RawFrame(Body({1, 1,    'x',                     // one name
                           1, 0x81, 1,   1, 'C',             // one class
                           0,                                // no text
                           1, 2,    0,   0, 0,   0, 0, 0, 0, // one prefix
                           1, 0,    0,   1, 0,   1, 1,       // a shape: class 0, field x = double
                           0,                                // no object
                           1, 1,    'o', 0,                  // one root
                           1, 0,    1,   3, 0,   0, 0, 0, 0, 0, 0xF0, 0x3F}))); // one record
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

TEST(GslRecordBytes, TakenBytesAreTheSameAndLeaveAnEmptyStore) {
  gsl_RecordStore store = SampleStore();
  const Bytes expected = store.ToBytes();
  EXPECT_EQ(store.TakeBytes(), expected);
  EXPECT_EQ(store.RootCount(), 0u);
  EXPECT_EQ(store.RecordCount(), 0u);
  EXPECT_EQ(store.TakeBytes(), gsl_RecordStore().ToBytes());
  // The store takes records as a new one does.
  const TestNode node(3);
  cls_Save save(store);
  node.DBWrite(cls_WriteVisitor(save));
  EXPECT_EQ(store.ToBytes(), Written(node).ToBytes());
}

TEST(GslRecordBytes, TakenBytesOfSeveralBlocksAreTheSame) {
  gsl_RecordStore store;
  const gsl_RecordIndex root = store.AddRoot(7, {1, 2});
  for (int i = 0; i < 200000; ++i)
    store.AddDouble(store.AddRecord(root, {"x", 0}, false, 8, {1, static_cast<unsigned>(i) + 3}),
                    {"y", 0}, i);
  const Bytes expected = store.ToBytes();
  ASSERT_GT(expected.size(), 2u << 20);
  EXPECT_EQ(store.TakeBytes(), expected);
  // Bytes that the store does not own stay as they are.
  gsl_RecordStore over = gsl_RecordStore::OverBytes(expected.data(), expected.size());
  const Bytes before = expected;
  EXPECT_EQ(over.TakeBytes(), expected);
  EXPECT_EQ(before, expected);
}

TEST(GslRecordBytes, StoreOverBytesReadsThemInPlaceAndNeverWritesThem) {
  const Bytes bytes = SampleStore().ToBytes();
  const Bytes before = bytes;
  gsl_RecordStore over = gsl_RecordStore::OverBytes(bytes.data(), bytes.size());
  EXPECT_EQ(over.ToBytes(), bytes);
  EXPECT_EQ(TextOf(over), TextOf(SampleStore()));
  EXPECT_LT(over.MemoryUse(), gsl_RecordStore::FromBytes(bytes.data(), bytes.size()).MemoryUse());
  gsl_RecordStore copied = gsl_RecordStore::FromBytes(bytes.data(), bytes.size());
  for (gsl_RecordStore* const store : {&over, &copied})
    store->AddInteger(store->AddRoot(5, {6, 7}), {"n", 0}, 8);
  EXPECT_EQ(over.ToBytes(), copied.ToBytes());
  over.TakeBack(over.AddRoot(5, {6, 9}));
  EXPECT_EQ(over.ToBytes(), copied.ToBytes());
  EXPECT_EQ(bytes, before);
  const Bytes none = gsl_RecordStore().ToBytes();
  EXPECT_EQ(gsl_RecordStore::OverBytes(none.data(), none.size()).RootCount(), 0u);
  EXPECT_THROW(static_cast<void>(gsl_RecordStore::OverBytes(bytes.data(), bytes.size() - 1)),
               gsl_RecordError);
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
    // Near pairs and some far ones; the next test has all pairs of a body.
    for (std::size_t j = i + 1; j < bits; j += 1 + (j - i) / 2) {
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

TEST(GslRecordBytes, ChecksumNoticesEveryDoubleAndTripleBitFlipOfTwoThousandBytes) {
  // A checksum is linear: flips add their own changes of it, and a flip of its own bits changes one
  // bit. Changes of which no two are equal and no two add up to a third go unnoticed never.
  constexpr std::size_t kBytes = 2000;
  std::vector<std::uint32_t> changes;
  Bytes none(8 + kBytes, 0);
  const std::uint32_t plain = RawChecksum(none);
  for (std::size_t bit = 64; bit < 8 * none.size(); ++bit) {
    Bytes one(none.begin(), none.end());
    one[bit / 8] = static_cast<unsigned char>(1u << (bit % 8));
    changes.push_back(gsl_records::Crc32c(one.data(), one.size()) ^ plain);
  }
  for (unsigned int bit = 0; bit < 32; ++bit)
    changes.push_back(1u << bit);
  std::sort(changes.begin(), changes.end());
  EXPECT_NE(changes.front(), 0u);
  EXPECT_EQ(std::adjacent_find(changes.begin(), changes.end()), changes.end());
  // By the low bits, so that most sums are dismissed without a search.
  std::vector<bool> isLow(1u << 22, false);
  const auto low = [](std::uint32_t change) { return change & ((1u << 22) - 1); };
  for (const std::uint32_t change : changes)
    isLow[low(change)] = true;
  for (std::size_t i = 0; i < changes.size(); i += kTestScaleDivisor) {
    for (std::size_t j = i + 1; j < changes.size(); ++j) {
      const std::uint32_t sum = changes[i] ^ changes[j];
      if (!isLow[low(sum)]) continue;
      ASSERT_FALSE(std::binary_search(changes.begin(), changes.end(), sum)) << i << ' ' << j;
    }
  }
}

TEST(GslRecordBytes, RandomDamagesOfALargeModelAreRefusedOrReadTheSame) {
  gsl_RecordStore store;
  for (std::uint64_t i = 0; i < 4000; ++i) {
    const gsl_RecordIndex root = store.AddRoot(1, {7, i});
    store.AddDouble(root, {"x", -1}, static_cast<double>(i) / 3.0);
    store.AddString(root, {"text", -1}, i % 3 == 0 ? "some" : "other");
  }
  const Bytes bytes = store.ToBytes();
  const unsigned int seed = std::random_device()();
  RecordProperty("seed", std::to_string(seed));
  std::mt19937 random(seed);
  const auto below = [&](std::size_t n) { return static_cast<std::size_t>(random()) % n; };
  for (long n = 0; n < Scaled(100000); ++n) {
    Bytes changed = bytes;
    const std::size_t at = below(bytes.size());
    const std::size_t length = 1 + below(std::min<std::size_t>(64, bytes.size() - at));
    const auto place = changed.begin() + static_cast<std::ptrdiff_t>(at);
    const auto end = place + static_cast<std::ptrdiff_t>(length);
    switch (below(4)) {
    case 0: // other bytes
      std::generate(place, end, [&] { return static_cast<unsigned char>(random()); });
      break;
    case 1: // cut out
      changed.erase(place, end);
      break;
    case 2: // bytes of another place
      std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(below(bytes.size() - length)), length,
                  place);
      break;
    default: // inserted
      changed.insert(place, length, static_cast<unsigned char>(random()));
    }
    try {
      const gsl_RecordStore read = Decoded(changed);
      ASSERT_EQ(changed, bytes) << "seed " << seed;
    } catch (const gsl_RecordError&) {
    }
  }
}

TEST(GslRecordBytes, DamageIsReportedWhateverElseIsWrong) {
  // The body begins with a text that is longer than the bytes.
  Bytes body(3 * (std::size_t{1} << 20), 0xFF);
  ExpectRefused(RawFrame(body), "A number in the bytes is too long");
  for (const std::size_t block : {0u, 1u, 2u}) {
    Bytes bytes = RawFrame(body);
    const std::size_t begin = 20 + (block << 20);
    bytes[begin + 1000] ^= 4;
    ExpectRefused(bytes, "The records are damaged: the checksum of bytes " + std::to_string(begin) +
                             " to " + std::to_string(begin + (1u << 20) - 1) + " does not match");
  }
}

TEST(GslRecordBytes, DamageOfALaterBlockIsReportedBeforeAnErrorInItsRecords) {
  gsl_RecordStore store;
  for (unsigned int i = 1; i <= 200000; ++i)
    store.AddDouble(store.AddRoot(7, {1, i}), {"x", 0}, i);
  const Bytes whole = store.ToBytes();
  ASSERT_GT(whole.size(), std::size_t{2} << 20);
  const std::size_t second = 20 + (std::size_t{1} << 20);
  for (const std::size_t at : {second, second + 777, whole.size() - 100}) {
    Bytes bytes = whole;
    bytes[at] = static_cast<unsigned char>(~bytes[at]);
    const std::size_t begin = at - (at - 20) % (std::size_t{1} << 20);
    EXPECT_NE(MessageOf(bytes).find("checksum of bytes " + std::to_string(begin) + " to"),
              std::string::npos)
        << MessageOf(bytes);
  }
}

TEST(GslRecordBytes, DamageWhereNoRecordEndsIsReported) {
  const auto expectDamage = [](Bytes bytes, std::size_t at) {
    bytes[at] ^= 1;
    EXPECT_NE(MessageOf(bytes).find("The records are damaged"), std::string::npos)
        << at << ": " << MessageOf(bytes);
  };
  const Bytes none = gsl_RecordStore().ToBytes();
  for (std::size_t at = 20; at < none.size(); ++at)
    expectDamage(none, at);
  gsl_RecordStore store;
  store.AddString(store.AddRoot(7, {1, 1}), {"x", 0}, std::string(60000, 'a'));
  const Bytes one = store.ToBytes();
  for (const std::size_t before : {2u, 100u, 5000u, 30000u, 59000u})
    expectDamage(one, one.size() - before);
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
    for (std::size_t value = i % kTestScaleDivisor; value < 256; value += kTestScaleDivisor) {
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
  ExpectRefused(WithRecords(kThreeShapes, {0}, {1, 0, 0}, {1, 0, 0, 7}),
                "Bytes follow the last record");
}

TEST(GslRecordBytes, AnnouncedSizesAreBoundedByTheBytes) {
  const Bytes huge = {0xFF, 0xFF, 0xFF, 0xFF, 0x0F};
  const std::string more = "The bytes announce more than they hold";
  const auto after = [&](Bytes start) {
    start.insert(start.end(), huge.begin(), huge.end());
    return start;
  };
  // The writer, the names, the classes, the texts, the prefixes, the shapes, and so on.
  for (std::size_t tables = 0; tables <= 8; ++tables)
    ExpectRefused(RawFrame(after(Bytes(tables, 0))), more);
  ExpectRefused(RawFrame({0, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}), more);
  ExpectRefused(WithRecords(after({1, 0, 0}), {}, {}, {}), more);
  ExpectRefused(WithElements(57, after({})), more);
  // Rows times columns would wrap around.
  ExpectRefused(
      WithElements(82, {0x80, 0x80, 0x80, 0x80, 0x08, 0x80, 0x80, 0x80, 0x80, 0x08, 0, 0, 0}),
      more);
  // Few rows, but long ones.
  ExpectRefused(WithElements(82, {1, 0xE8, 0x07, 0, 0, 0, 0, 0, 0, 0, 0, 0}), more);
  for (const unsigned char kind : Bytes{0, 1, 2, 3, 7})
    ExpectRefused(WithValue(kind, {}), "The bytes end inside a record");
}

TEST(GslRecordBytes, NumbersHaveTheirWidth) {
  ExpectRefused(RawFrame({0, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80}),
                "A number in the bytes is too long");
  ExpectRefused(RawFrame({0, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 2}),
                "A number in the bytes is too long");
  ExpectRefused(RawFrame({0, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 1}),
                "The bytes announce more than they hold");
  for (const unsigned char kind : Bytes{0, 7}) {
    EXPECT_EQ(Decoded(WithValue(kind, {0xFF, 0xFF, 0xFF, 0xFF, 0x0F})).RecordCount(), 1u);
    ExpectRefused(WithValue(kind, {0x80, 0x80, 0x80, 0x80, 0x10}),
                  "A number in the bytes is too large");
  }
}

TEST(GslRecordBytes, TypeIdHas32Bits) {
  // One class without a name; no text, no prefix, no shape, no object, no root, no record.
  const Bytes rest = {0, 0, 0, 0, 0, 0, 0};
  Bytes body = {0, 0, 1, 0xFF, 0xFF, 0xFF, 0xFF, 0x0F};
  body.insert(body.end(), rest.begin(), rest.end());
  EXPECT_EQ(MessageOf(RawFrame(body)), "accepted");
  body = {0, 0, 1, 0x80, 0x80, 0x80, 0x80, 0x10};
  body.insert(body.end(), rest.begin(), rest.end());
  ExpectRefused(RawFrame(body), "A number in the bytes is too large");
}

TEST(GslRecordBytes, TableMayTakeNearlyAllBytes) {
  constexpr unsigned char kCount = 26;
  Bytes names = {0, kCount};
  for (char letter = 'a'; letter <= 'z'; ++letter) {
    names.push_back(1);
    names.push_back(static_cast<unsigned char>(letter));
  }
  names.resize(names.size() + 7, 0);
  EXPECT_EQ(MessageOf(RawFrame(names)), "accepted");
  // Classes without names.
  Bytes classes = {0, 0, kCount};
  for (unsigned char typeId = 0; typeId < kCount; ++typeId) {
    classes.push_back(typeId);
    classes.push_back(0);
  }
  classes.resize(classes.size() + 6, 0);
  EXPECT_EQ(MessageOf(RawFrame(classes)), "accepted");
}

TEST(GslRecordBytes, RecordHoldsRecordsBeforeItself) {
  const std::string why = "A field in the bytes must hold a record before its own record";
  for (const unsigned char held : Bytes{1, 2, 9})
    ExpectRefused(WithRecords(kThreeShapes, {0}, {1, 0, 1}, {2, 0, 0, 1, 0, held}), why);
  const gsl_RecordStore good =
      Decoded(WithRecords(kThreeShapes, {0}, {1, 0, 1}, {2, 0, 0, 1, 0, 0}));
  EXPECT_EQ((*good.Fields(good.Root(0)).begin()).link, 0u);
  // An object before the record that owns it, too.
  ExpectRefused(WithRecords(kThreeShapes, {1, 1}, {1, 0, 1}, {2, 0, 0, 2, 0, 0}), why);
}

TEST(GslRecordBytes, ManyPlacesHoldOneRecord) {
  const gsl_RecordStore store =
      Decoded(WithRecords(kThreeShapes, {0}, {3, 0, 1, 0, 2, 0, 0}, {3, 0, 0, 1, 0, 0, 1, 0, 0}));
  EXPECT_EQ(store.RootCount(), 3u);
  EXPECT_EQ(store.RecordCount(), 3u);
}

TEST(GslRecordBytes, RecordMustBelongToSomething) {
  ExpectRefused(WithRecords(kThreeShapes, {0}, {1, 0, 0}, {2, 0, 0, 0, 0}),
                "A record in the bytes belongs to nothing");
  ExpectRefused(WithRecords(kThreeShapes, {0}, {1, 0, 1}, {1, 0, 0}),
                "A root in the bytes is not a record");
}

TEST(GslRecordBytes, SharedObjectBelongsToOneField) {
  // Record 1 owns object 0, which is record 0; record 2 refers to it.
  EXPECT_EQ(Decoded(WithRecords(kThreeShapes, {1, 0}, {2, 0, 1, 0, 2}, {3, 0, 0, 2, 0, 0, 2, 0, 1}))
                .RecordCount(),
            3u);
  ExpectRefused(WithRecords(kThreeShapes, {1, 0}, {2, 0, 1, 0, 2}, {3, 0, 0, 2, 0, 0, 2, 0, 0}),
                "An object in the bytes belongs to two fields");
  ExpectRefused(
      WithRecords(kThreeShapes, {1, 0}, {3, 0, 0, 0, 1, 0, 2}, {3, 0, 0, 2, 0, 1, 2, 0, 1}),
      "An object in the bytes belongs to no field");
  ExpectRefused(WithRecords(kThreeShapes, {1, 0}, {1, 0, 1}, {2, 0, 0, 2, 0, 3}),
                "A field in the bytes has an unknown object");
}

TEST(GslRecordBytes, RecordsThatHoldEachOtherManyTimesAreRefused) {
  // Record n holds record n - 1 twice: 2^n records to visit.
  const auto doubling = [](unsigned char count) {
    Bytes records = {count, 0, 0};
    for (unsigned char n = 1; n < count; ++n) {
      for (const int byte : {1, 0, n - 1, n - 1})
        records.push_back(static_cast<unsigned char>(byte));
    }
    return WithRecords({2, 0, 0, 0, 0, 0, 2, 0, 1, 4, 0, 3, 4}, {0},
                       {1, 0, static_cast<unsigned char>(count - 1)}, records);
  };
  // 2^32 - 1 records are too many, 2^31 - 1 are not.
  EXPECT_EQ(Decoded(doubling(31)).RecordCount(), 31u);
  ExpectRefused(doubling(32), "The bytes hold more than 4294967294 records, counted at every place "
                              "that holds them");
  // The roots count together.
  Bytes bytes = WithRecords({1, 0, 0, 0}, {0}, {2, 0, 0, 0, 0}, {1, 0, 0});
  EXPECT_EQ(Decoded(bytes).RootCount(), 2u);
  // Two roots of 2^31 - 1 records leave no place for a third.
  Bytes most = doubling(31);
  const Bytes body(most.begin() + 20, most.end() - 4);
  const Bytes oneRoot = {1, 0, 30, 31, 0, 0};
  const auto at = std::search(body.begin(), body.end(), oneRoot.begin(), oneRoot.end());
  ASSERT_NE(at, body.end());
  Bytes two(body.begin(), at);
  two.insert(two.end(), {2, 0, 30, 0, 30});
  two.insert(two.end(), at + 3, body.end());
  gsl_RecordStore full = Decoded(RawFrame(two));
  EXPECT_THROW(full.AddRoot(1, {}), gsl_RecordError);
  EXPECT_EQ(full.RootCount(), 2u);
}

TEST(GslRecordBytes, EachNumberAndTheNullIdentityHaveOneForm) {
  const std::string why = "A number in the bytes takes more bytes than it needs";
  EXPECT_EQ(Decoded(WithValue(0, {0})).RecordCount(), 1u);
  EXPECT_EQ(Decoded(WithValue(0, {0x80, 1})).RecordCount(), 1u);
  ExpectRefused(WithValue(0, {0x80, 0}), why);
  ExpectRefused(WithValue(0, {0x81, 0x80, 0}), why);
  ExpectRefused(WithValue(3, {0x80, 0}), why);
  const auto withIdentity = [](std::uint64_t prefix, unsigned char serial) {
    Bytes body = {0, 0, 1, 1, 0, 0, 1};
    AppendNumber(body, prefix, 8);
    const Bytes rest = {1, 0, 0, 0, 0, 1, 0, 0, 1, 0, 1, serial};
    body.insert(body.end(), rest.begin(), rest.end());
    return RawFrame(body);
  };
  EXPECT_EQ(Decoded(withIdentity(0, 1)).Identity(0), (gsl_RecordIdentity{0, 1}));
  EXPECT_EQ(Decoded(withIdentity(1, 0)).Identity(0), (gsl_RecordIdentity{1, 0}));
  ExpectRefused(withIdentity(0, 0),
                "A null identity in the bytes has a prefix and a serial, but must be the number 0");
}

TEST(GslRecordBytes, LongNameOfManyFieldsIsNotReadForEachField) {
  constexpr std::size_t kFields = std::size_t{1} << 18;
  constexpr std::size_t kLength = std::size_t{1} << 20;
  Bytes body = {0, 1, 0x80, 0x80, 0x40};
  body.insert(body.end(), kLength, 'n');
  // One class, and two shapes: one without fields, and one that no record has.
  const Bytes tables = {1, 1, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0x80, 0x80, 0x10};
  body.insert(body.end(), tables.begin(), tables.end());
  for (std::size_t i = 0; i < kFields; ++i)
    body.insert(body.end(), {0, 1, 2});
  const Bytes rest = {0, 1, 0, 0, 1, 0, 0};
  body.insert(body.end(), rest.begin(), rest.end());
  const Bytes bytes = RawFrame(body);
  const std::clock_t start = std::clock();
  EXPECT_EQ(Decoded(bytes).RecordCount(), 1u);
  // Reading the name for each field takes tens of seconds.
  EXPECT_LT(std::clock() - start, 5 * CLOCKS_PER_SEC);
}

TEST(GslRecordBytes, SmallChecks) {
  ExpectRefused(RawFrame({0, 1, 0, 0, 0}), "A field name in the bytes is empty or cut");
  ExpectRefused(RawFrame({0, 1, 1, 0, 0, 0}), "A field name in the bytes is empty or cut");
  ExpectRefused(RawFrame({0, 2, 1, 'n', 1, 'n', 0, 0}), "A field name appears twice in the bytes");
  ExpectRefused(RawFrame({0, 0, 2, 1, 0, 1, 0, 0, 0, 0, 0, 0}),
                "A class appears twice in the bytes");
  ExpectRefused(RawFrame({0, 0, 0, 2, 1, 't', 1, 't', 0, 0, 0, 0}),
                "A text appears twice in the bytes");
  Bytes prefixes = {0, 0, 0, 0, 2};
  prefixes.insert(prefixes.end(), 16, 7);
  ExpectRefused(RawFrame(prefixes), "A prefix of identities appears twice in the bytes");
  const auto refuse = [](const Bytes& shapes, const Bytes& roots, const Bytes& records,
                         const char* why) {
    ExpectRefused(WithRecords(shapes, {0}, roots, records), why);
  };
  const Bytes one = {1, 0, 0};
  refuse({1, 1, 0, 0}, one, {1, 0, 0}, "A shape in the bytes has an unknown class");
  refuse({1, 0, 58, 0}, one, {1, 0, 0}, "A shape in the bytes is an unknown collection");
  refuse({2, 0, 0, 0, 0, 0, 0}, one, {1, 0, 0}, "A shape appears twice in the bytes");
  refuse({1, 0, 0, 1, 1, 1, 0}, one, {1, 0, 0, 0}, "A field in the bytes has an unknown name");
  for (const unsigned char kind : Bytes{6, 8, 0xFE, 0xFF})
    refuse({1, 0, 0, 1, 0, 1, kind}, one, {1, 0, 0, 0},
           "A field in the bytes is of an unknown kind");
  refuse(kThreeShapes, one, {1, 3, 0}, "A record in the bytes has no shape");
  refuse(kThreeShapes, one, {1, 0, 1, 0}, "An identity in the bytes has an unknown prefix");
  refuse(kThreeShapes, {2, 1, 'r', 0, 1, 'r', 0}, {1, 0, 0},
         "Two roots in the bytes have one name");
  ExpectRefused(WithValue(2, {2}), "A boolean in the bytes is neither true nor false");
  ExpectRefused(WithValue(3, {1}), "A field in the bytes has an unknown text");
  ExpectRefused(WithElements(1, {6, 1, 0xFF}), "A field in the bytes is of an unknown kind");
  ExpectRefused(WithElements(1, {2, 1}), "The bytes end inside a record");
  EXPECT_EQ(Decoded(WithElements(1, {2, 1, 0xFF})).RecordCount(), 1u);
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
