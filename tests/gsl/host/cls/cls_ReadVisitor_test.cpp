#include "cls_ReadVisitor.h"

#include "ForwardingReader.h"
#include "HostObjects.h"
#include "RawRecords.h"
#include "Records.h"
#include "TestScale.h"
#include "cls_ListReader.h"
#include "cls_MetadataRegistrar.h"
#include "cls_RecordException.h"
#include "cls_xp1DArrayListUint.h"
#include "cls_xp2DArrayDouble.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

const cls_FieldHandle kField(-1, "field");

/// Returns the bytes of `depth` records, each of which is the only field of the record before.
std::vector<unsigned char> NestedBytes(std::uint32_t depth) {
  RawRecord record;
  record.typeId = TestNode::kTypeId;
  RawRecords records(depth, record);
  records[0].isRoot = true;
  for (std::uint32_t i = 0; i + 1 < depth; ++i) {
    RawField field;
    field.name = "next";
    field.index = -1;
    field.kind = gsl_RecordKind::Record;
    field.link = i + 1;
    records[i].fields.push_back(field);
  }
  return RawBytes(records);
}

std::string MessageOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const cls_RecordException& e) {
    return e.what();
  }
  return "nothing was thrown";
}

const char* const kNames[] = {"_x", "_y", "_method", "parent_ids", "a name of many letters"};

/// Writes fields of every plain kind under few names, so that names come twice.
void WriteRandomFields(std::mt19937& random, const cls_WriteVisitor& to, int depth) {
  for (auto count = random() % 7; count != 0; --count) {
    const cls_FieldHandle field(-1, kNames[random() % std::size(kNames)]);
    const auto kind = random() % 6;
    const auto value = static_cast<int>(random());
    if (kind == 0) to.WriteInteger(field, value >> (random() % 32));
    if (kind == 1) to.WriteDouble(field, 0.37 * value);
    if (kind == 2) to.WriteBoolean(field, value % 2 != 0);
    if (kind == 3) to.WriteString(field, std::to_string(value % 40).c_str());
    if (kind == 4) to.WriteNullObject(field, 7);
    if (kind != 5 || depth == 3) continue;
    const cls_WriteVisitor child(to, field);
    const std::uint64_t prefix = random() % 2;
    child.StartWrite(11, cls_Uid(prefix, random() % 1000));
    WriteRandomFields(random, child, depth + 1);
  }
}

/// Reads fields of random names and kinds. Returns what was read and refused.
std::string ReadRandomFields(std::mt19937& random, const cls_ReadVisitor& from, int depth) {
  std::string found = std::to_string(from.TypeId()) + '/' + std::to_string(from.GetUid().Serial());
  for (auto count = random() % 7; count != 0; --count) {
    const cls_FieldHandle field(-1, kNames[random() % std::size(kNames)]);
    const auto kind = random() % 5;
    const auto seed = random();
    try {
      if (kind == 0) found += ' ' + std::to_string(from.ReadInteger(field, 5));
      if (kind == 1) found += ' ' + std::to_string(from.ReadDouble(field, 0.5));
      if (kind == 2) found += from.ReadBoolean(field, true) ? " true" : " false";
      if (kind == 3) found += std::string(" '") + from.ReadString(field, "none").CStr() + '\'';
      if (kind != 4 || depth == 3) continue;
      std::mt19937 inner(seed);
      const cls_ReadVisitor child(from, field);
      found += " {" + ReadRandomFields(inner, child, depth + 1) + '}';
    } catch (const cls_RecordException& error) {
      found += std::string(" [") + error.what() + ']';
    }
  }
  return found;
}

} // namespace

TEST(ClsReadVisitor, StoreReadsAsAnyOtherReader) {
  std::mt19937 random(20261123);
  std::size_t inOrder = 0;
  for (int round = 0; round < Scaled(20000); ++round) {
    const auto seed = random();
    std::mt19937 writing(seed);
    const gsl_RecordStore store = Recorded(
        10, cls_Uid(3, 4), [&](const cls_WriteVisitor& to) { WriteRandomFields(writing, to, 0); });
    const ForwardingReader other(store);
    cls_Load load(store);
    cls_Load otherLoad(other);
    for (unsigned int order = 0; order < 4; ++order) {
      std::mt19937 reading(seed + order);
      std::mt19937 otherReading(seed + order);
      const std::string expected = ReadRandomFields(otherReading, cls_ReadVisitor(otherLoad, 0), 0);
      ASSERT_EQ(ReadRandomFields(reading, cls_ReadVisitor(load, 0), 0), expected) << seed;
      if (expected.find('{') != std::string::npos) ++inOrder;
    }
  }
  EXPECT_GT(inOrder, static_cast<std::size_t>(Scaled(1000)));
}

TEST(ClsReadVisitor, ListOfAStoreReadsAsOfAnyOtherReader) {
  const gsl_RecordStore store = Recorded(1, cls_Uid(), [](const cls_WriteVisitor& to) {
    const cls_WriteVisitor entries(to, kField);
    entries.StartWrite(cls_kCollectionTypeId, cls_Uid());
    const std::unique_ptr<cls_ListWriter> list(entries.GetListWriter());
    for (int i = 0; i < 6; ++i) {
      if (i == 2 || i == 5) {
        list->WriteNull(5);
      } else {
        TestNode(i).DBWrite(cls_WriteVisitor(cls_WriteRequestListObj(*list)));
      }
    }
  });
  const ForwardingReader other(store);
  for (const gsl_RecordReader* const reader :
       std::initializer_list<const gsl_RecordReader*>{&store, &other}) {
    cls_Load load(*reader);
    const cls_ReadVisitor root(load, 0);
    const cls_ReadVisitor entries(root, kField);
    const std::unique_ptr<cls_ListReader> list(entries.GetListReader());
    for (int i = 0; i < 6; ++i) {
      ASSERT_TRUE(list->HasNext()) << i;
      const std::unique_ptr<TestNode> node(list->ReadObject<TestNode>());
      ASSERT_EQ(node != nullptr, i != 2 && i != 5) << i;
      if (node != nullptr) {
        EXPECT_EQ(node->value, i);
      }
    }
    EXPECT_FALSE(list->HasNext());
    EXPECT_THROW(static_cast<void>(list->ReadObject<TestNode>()), cls_RecordException);
  }
}

TEST(ClsReadVisitor, ShortTextsOfAnyOtherReaderAreToldApart) {
  // These are more texts than are kept, so that each takes the place of another: some have the same
  // length, and then each begins the texts before it.
  std::vector<std::string> texts;
  for (int i = 10; i < 70; ++i)
    texts.push_back("text " + std::to_string(i));
  for (std::size_t length = 60; length > 0; --length)
    texts.push_back(std::string(length, 'n'));
  const gsl_RecordStore store = Recorded(1, cls_Uid(), [&](const cls_WriteVisitor& to) {
    for (const std::string& text : texts)
      to.WriteString(kField, text.c_str());
  });
  const ForwardingReader other(store);
  cls_Load load(other);
  const cls_ReadVisitor root(load, 0);
  for (const std::string& text : texts)
    EXPECT_EQ(root.ReadString(kField, "none"), cow_String(text.c_str()));
}

TEST(ClsReadVisitor, RecordOfAnotherClassIsRefusedByItsPlaceForEveryReader) {
  const gsl_RecordStore store = Recorded(0x7F1000A0u, cls_Uid(), [](const cls_WriteVisitor& to) {
    TestNode(1).DBWrite(cls_WriteVisitor(to, kField));
  });
  const ForwardingReader other(store);
  for (const gsl_RecordReader* const reader :
       std::initializer_list<const gsl_RecordReader*>{&store, &other}) {
    cls_Load load(*reader);
    const cls_ReadVisitor root(load, 0);
    const cls_ReadVisitor child(root, kField);
    EXPECT_EQ(MessageOf([&] { child.CheckTypeId(0x7F1000A1u); }),
              "Field \"field\" of 0x7F1000A0 holds a record of class 0x7F100001, not 0x7F1000A1");
  }
}

TEST(ClsReadVisitor, MissingFieldsReadAsTheCallersDefault) {
  const gsl_RecordStore store = Recorded(1, cls_Uid(), [](const cls_WriteVisitor&) {});
  cls_Load load(store);
  const cls_ReadVisitor root(load, 0);
  EXPECT_EQ(root.ReadInteger(kField, 4), 4);
  EXPECT_EQ(root.ReadDouble(kField, 2.5), 2.5);
  EXPECT_TRUE(root.ReadBoolean(kField, true));
  EXPECT_EQ(root.ReadString(kField, "text"), cow_String("text"));
  EXPECT_TRUE(cls_ReadVisitor(root, kField).IsAbsent());
}

TEST(ClsReadVisitor, AbsentRecordHasNoFieldsAndANullIdentity) {
  const gsl_RecordStore store =
      Recorded(1, cls_Uid(5, 6), [](const cls_WriteVisitor& to) { to.WriteNullObject(kField, 2); });
  cls_Load load(store);
  const cls_ReadVisitor root(load, 0);
  EXPECT_EQ(root.GetUid(), cls_Uid(5, 6));
  const cls_ReadVisitor absent(root, kField);
  EXPECT_TRUE(absent.IsAbsent());
  EXPECT_TRUE(absent.GetUid().IsNull());
  EXPECT_EQ(absent.TypeId(), 0u);
  EXPECT_EQ(absent.ReadInteger(kField, 3), 3);
  EXPECT_TRUE(cls_ReadVisitor(absent, kField).IsAbsent());
  std::vector<unsigned int> elements = {7};
  absent.ReadUnsigneds(elements);
  EXPECT_TRUE(elements.empty());
  std::vector<double> entries = {7.0};
  std::size_t rows = 7;
  std::size_t columns = 7;
  absent.ReadDoubles(entries, rows, columns);
  EXPECT_TRUE(entries.empty());
  EXPECT_EQ(rows, 0u);
  EXPECT_EQ(columns, 0u);
  const std::unique_ptr<cls_ListReader> list(absent.GetListReader());
  EXPECT_FALSE(list->HasNext());
}

TEST(ClsReadVisitor, FieldOfAnotherKindIsRefusedByName) {
  const gsl_RecordStore store = Recorded(1, cls_Uid(5, 6), [](const cls_WriteVisitor& to) {
    to.WriteString({-1, "s"}, "1");
    to.WriteInteger({-1, "i"}, 1);
    to.WriteDouble({-1, "d"}, 1.0);
    to.WriteBoolean({-1, "b"}, true);
    to.WriteNullObject({-1, "n"}, 1);
    TestNode(1).DBWrite(cls_WriteVisitor(to, {-1, "r"}));
  });
  cls_Load load(store);
  const cls_ReadVisitor root(load, 0);
  EXPECT_EQ(MessageOf([&] {
              root.ReadInteger({-1, "s"}, 0);
            }),
            "Field \"s\" holds a string, not an integer");
  EXPECT_EQ(MessageOf([&] {
              root.ReadDouble({-1, "i"}, 0);
            }),
            "Field \"i\" holds an integer, not a double");
  EXPECT_EQ(MessageOf([&] {
              static_cast<void>(root.ReadBoolean({-1, "d"}, false));
            }),
            "Field \"d\" holds a double, not a boolean");
  EXPECT_EQ(MessageOf([&] {
              root.ReadString({-1, "b"}, "");
            }),
            "Field \"b\" holds a boolean, not a string");
  EXPECT_EQ(MessageOf([&] {
              root.ReadInteger({-1, "r"}, 0);
            }),
            "Field \"r\" holds a record, not an integer");
  EXPECT_EQ(MessageOf([&] {
              root.ReadInteger({-1, "n"}, 0);
            }),
            "Field \"n\" holds a null object, not an integer");
  EXPECT_EQ(MessageOf([&] {
              cls_ReadVisitor(root, {-1, "i"});
            }),
            "Field \"i\" holds an integer, not a record");
}

TEST(ClsReadVisitor, ErrorsCarryTheIdentityOfTheirRecord) {
  const gsl_RecordStore store =
      Recorded(1, cls_Uid(5, 6), [](const cls_WriteVisitor& to) { to.WriteInteger(kField, 1); });
  cls_Load load(store);
  try {
    cls_ReadVisitor(load, 0).ReadDouble(kField, 0.0);
    FAIL() << "nothing was thrown";
  } catch (const nex_CommandException& e) {
    EXPECT_EQ(e.Uid(), cls_Uid(5, 6));
    EXPECT_NE(e.LineNumber(), 0);
  }
}

TEST(ClsReadVisitor, FirstOfTwoFieldsOfOneNameCounts) {
  const gsl_RecordStore store = Recorded(1, cls_Uid(), [](const cls_WriteVisitor& to) {
    to.WriteInteger(kField, 1);
    to.WriteInteger(kField, 2);
  });
  cls_Load load(store);
  EXPECT_EQ(cls_ReadVisitor(load, 0).ReadInteger(kField, 0), 1);
  // The second field counts when it comes right after the field read before.
  const cls_ReadVisitor twice(load, 0);
  twice.ReadInteger(kField, 0);
  EXPECT_EQ(twice.ReadInteger(kField, 0), 2);
  EXPECT_EQ(twice.ReadInteger(kField, 0), 1);
}

namespace {

/// Makes a root whose field leads to the first of `count` shared nodes. Each node refers to the
/// next, and the last refers to node `last`.
gsl_RecordStore ChainOfReferences(std::uint32_t count, std::uint32_t last) {
  RawRecord node;
  node.typeId = TestNode::kTypeId;
  RawRecords records(count + 1, node);
  records[0].isRoot = true;
  for (std::uint32_t i = 1; i <= count; ++i) {
    RawField field;
    field.name = i == 1 ? "next" : "another";
    field.kind = gsl_RecordKind::Object;
    field.link = i;
    records[0].fields.push_back(field);
    field.name = "next";
    field.kind = gsl_RecordKind::Reference;
    field.link = i < count ? i + 1 : last;
    if (field.link != 0) records[i].fields.push_back(field);
  }
  const std::vector<unsigned char> bytes = RawBytes(records);
  return gsl_RecordStore::FromBytes(bytes.data(), bytes.size());
}

} // namespace

TEST(ClsReadVisitor, HundredThousandReferencesInARowEndInAnErrorNotInTheStack) {
  const auto read = [](const gsl_RecordStore& store) { return ReadBack<TestNode>(store); };
  EXPECT_EQ(MessageOf([&] { read(ChainOfReferences(100000, 0)); }),
            "Records are nested too deep to read");
  EXPECT_EQ(MessageOf([&] { read(ChainOfReferences(1001, 0)); }),
            "Records are nested too deep to read");
  EXPECT_NE(read(ChainOfReferences(1000, 0)).next.Get(), nullptr);
}

TEST(ClsReadVisitor, ReferencesInACircleAreRefused) {
  for (const std::uint32_t count : {1u, 2u, 999u}) {
    EXPECT_EQ(MessageOf([&] { ReadBack<TestNode>(ChainOfReferences(count, 1)); }),
              "An object contains itself")
        << count;
  }
}

TEST(ClsReadVisitor, AbsentRootIsRefused) {
  const gsl_RecordStore store;
  cls_Load load(store);
  EXPECT_THROW(cls_ReadVisitor(load, 0), cls_RecordException);
}

TEST(ClsReadVisitor, SharedObjectIsSharedAgain) {
  TestNode a(1);
  a.next = TestHolder<TestNode>::Adopt(new TestNode(9));
  TestNode b(2);
  b.next = a.next;
  TestNode c(3);
  c.next = TestHolder<TestNode>::Adopt(new TestNode(9));
  gsl_RecordStore store;
  {
    cls_Save save(store);
    for (const TestNode* node : {&a, &b, &c})
      node->DBWrite(cls_WriteVisitor(save));
  }
  cls_Load load(store);
  const TestNode first(cls_ReadVisitor(load, 0));
  const TestNode second(cls_ReadVisitor(load, 1));
  const TestNode third(cls_ReadVisitor(load, 2));
  EXPECT_EQ(first.next.Get(), second.next.Get());
  EXPECT_NE(first.next.Get(), third.next.Get());
  EXPECT_EQ(first.next.Get()->uid, a.next.Get()->uid);
  EXPECT_EQ(third.next.Get()->value, 9);
}

TEST(ClsReadVisitor, SharedObjectMayBeReadFromItsReferenceFirst) {
  TestNode a(1);
  a.next = TestHolder<TestNode>::Adopt(new TestNode(9));
  TestNode b(2);
  b.next = a.next;
  gsl_RecordStore store;
  {
    cls_Save save(store);
    a.DBWrite(cls_WriteVisitor(save));
    b.DBWrite(cls_WriteVisitor(save));
  }
  cls_Load load(store);
  const TestNode second(cls_ReadVisitor(load, 1));
  const TestNode first(cls_ReadVisitor(load, 0));
  EXPECT_EQ(second.next.Get()->value, 9);
  EXPECT_EQ(first.next.Get(), second.next.Get());
}

TEST(ClsReadVisitor, ObjectThatContainsItselfIsRefused) {
  TestHolder<TestNode> loop = TestHolder<TestNode>::Adopt(new TestNode(1));
  loop.Edit()->next = TestHolder<TestNode>::Adopt(new TestNode(2));
  loop.Edit()->next.Edit()->next = loop;
  TestNode top(0);
  top.next = loop;
  gsl_RecordStore store;
  {
    cls_Save save(store);
    top.DBWrite(cls_WriteVisitor(save));
  }
  EXPECT_EQ(MessageOf([&] { ReadBack<TestNode>(store); }), "An object contains itself");
  // A load may go on after the failure and fails the same way again.
  cls_Load load(store);
  for (int i = 0; i < 2; ++i)
    EXPECT_EQ(MessageOf([&] { TestNode(cls_ReadVisitor(load, 0)); }), "An object contains itself");
  loop.Edit()->next.Edit()->next = TestHolder<TestNode>();
}

TEST(ClsReadVisitor, HundredThousandLevelsEndInAnErrorNotInTheStack) {
  const std::vector<unsigned char> bytes = NestedBytes(100000);
  const gsl_RecordStore store = gsl_RecordStore::FromBytes(bytes.data(), bytes.size());
  EXPECT_EQ(store.RecordCount(), 100000u);
  EXPECT_EQ(store.ToBytes(), bytes);
  EXPECT_EQ(MessageOf([&] { ReadBack<TestNode>(store); }), "Records are nested too deep to read");
}

TEST(ClsReadVisitor, ObjectIsOfTheClassThatItsRecordNames) {
  omi_Singleton<cls_MetadataRegistrar>::Instance().initClassMetadata(
      &TestDerivedNode::InitializeMetadata, 3);
  auto* const derived = new TestDerivedNode(5);
  derived->extra = 6;
  TestNode top(0);
  top.next = TestHolder<TestNode>::Adopt(derived);
  const TestNode read = ReadBack<TestNode>(Written(top));
  const auto* const object = dynamic_cast<const TestDerivedNode*>(read.next.Get());
  ASSERT_NE(object, nullptr);
  EXPECT_EQ(object->value, 5);
  EXPECT_EQ(object->extra, 6);
  EXPECT_EQ(object->padding, 1.5);
  EXPECT_EQ(object->uid, derived->uid);
}

TEST(ClsReadVisitor, ObjectOfAnUnknownOrForeignClassIsRefused) {
  for (const unsigned int typeId : {0x7F1000FFu, cls_kCollectionTypeId, 0u}) {
    const gsl_RecordStore store =
        Recorded(TestNode::kTypeId, cls_Uid(), [&](const cls_WriteVisitor& to) {
          const cls_WriteVisitor child(to, {-1, "next"});
          child.StartWrite(typeId, cls_Uid());
        });
    EXPECT_THROW(ReadBack<TestNode>(store), cls_RecordException);
  }
}

TEST(ClsReadVisitor, ReferenceIsNotARecordOfItsOwn) {
  const auto shared = TestHolder<TestNode>::Adopt(new TestNode(8));
  const gsl_RecordStore store = Recorded(1, cls_Uid(), [&](const cls_WriteVisitor& to) {
    shared.Get()->DBWrite(cls_WriteVisitor(to, {-1, "object"}, shared));
    shared.Get()->DBWrite(cls_WriteVisitor(to, {-1, "reference"}, shared));
  });
  cls_Load load(store);
  const cls_ReadVisitor root(load, 0);
  EXPECT_EQ(TestNode(cls_ReadVisitor(root, {-1, "object"})).value, 8);
  EXPECT_EQ(MessageOf([&] {
              cls_ReadVisitor(root, {-1, "reference"});
            }),
            "Field \"reference\" holds a reference, not a record");
}

TEST(ClsReadVisitor, NullObjectAndMissingObjectEmptyTheHolder) {
  const gsl_RecordStore whole = Written(TestNode(1));
  EXPECT_EQ(ReadBack<TestNode>(whole).next.Get(), nullptr);
  EXPECT_EQ(ReadBack<TestNode>(Without(whole, "next")).next.Get(), nullptr);
  cls_Load load(whole);
  TestHolder<TestNode> holder = TestHolder<TestNode>::Adopt(new TestNode(3));
  cls_ReadVisitor(load, 0).ReadObject({-1, "next"}, holder);
  EXPECT_EQ(holder.Get(), nullptr);
}

TEST(ClsReadVisitor, CollectionTypeIsChecked) {
  const gsl_RecordStore list = Written(cls_xp1DArrayListUint());
  cls_Load load(list);
  const cls_ReadVisitor root(load, 0);
  root.CheckCollectionType(57);
  EXPECT_THROW(root.CheckCollectionType(1), cls_RecordException);
  std::vector<double> entries;
  std::size_t rows = 0;
  std::size_t columns = 0;
  EXPECT_THROW(root.ReadDoubles(entries, rows, columns), cls_RecordException);
  EXPECT_THROW(static_cast<void>(root.GetListReader()), cls_RecordException);
}

TEST(ClsArrays, ReadBackWithTheirIdentity) {
  cls_xp1DArrayListUint list;
  for (const unsigned int value : {3u, 0u, 4294967295u})
    list.Append(value);
  const auto readList = ReadBack<cls_xp1DArrayListUint>(Written(list));
  EXPECT_EQ(readList, list);
  EXPECT_EQ(readList.Uid(), list.Uid());

  cls_xp2DArrayDouble matrix(2, 3);
  for (std::size_t r = 0; r < 2; ++r) {
    for (std::size_t c = 0; c < 3; ++c)
      matrix(r, c) = 10.0 * static_cast<double>(r) + static_cast<double>(c);
  }
  const auto readMatrix = ReadBack<cls_xp2DArrayDouble>(Written(matrix));
  ASSERT_EQ(readMatrix.Rows(), 2u);
  ASSERT_EQ(readMatrix.Columns(), 3u);
  EXPECT_EQ(readMatrix(1, 2), 12.0);
  EXPECT_EQ(readMatrix.Uid(), matrix.Uid());
}

TEST(ClsListReader, ListOfValuesHasNoNullEntries) {
  const gsl_RecordStore store =
      Recorded(cls_kCollectionTypeId, cls_Uid(), [](const cls_WriteVisitor& to) {
        const std::unique_ptr<cls_ListWriter> list(to.GetListWriter());
        list->WriteNull(TestNode::kTypeId);
        cls_WriteRequestListObj request(*list);
        cls_xp1DArrayListUint().DBWrite(cls_WriteVisitor(request));
      });
  cls_Load load(store);
  const cls_ReadVisitor root(load, 0);
  const std::unique_ptr<cls_ListReader> list(root.GetListReader());
  EXPECT_EQ(MessageOf([&] { list->ReadValue<TestNode>(); }),
            "A list of values has an entry without a value");
  EXPECT_EQ(MessageOf([&] { list->ReadValue<TestNode>(); }),
            "Entry 1 of root 0 holds a record of class 0x00230001, not 0x7F100001");
}
