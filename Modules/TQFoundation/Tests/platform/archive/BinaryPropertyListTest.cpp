#include <TQFoundation/platform/archive/detail/BinaryPropertyList.h>

#include <plist/plist.h>

#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/Date.h>
#include <TQFoundation/objects/Dictionary.h>
#include <TQFoundation/platform/archive/PropertyList.h>

#include "support/Bytes.h"

// libplist reads the lists of this library and writes lists for it, as far as it supports the
// format.

namespace tq::detail {
namespace {

using Writer = BinaryPropertyListWriter;
using Reader = BinaryPropertyListReader;
using Kind = Reader::Kind;

/// Returns the list as libplist writes it after reading it.
std::string rewritten(const Data& list) {
  plist_t node = nullptr;
  plist_from_bin(list.view().data(), static_cast<std::uint32_t>(list.length()), &node);
  char* bytes = nullptr;
  std::uint32_t length = 0;
  plist_to_bin(node, &bytes, &length);
  const std::string again(bytes, length);
  plist_to_bin_free(bytes);
  plist_free(node);
  return again;
}

/// Checks the element of a list that contains it twice: as this library writes the list, and as
/// libplist writes it again.
void expectElement(Writer& writer, Writer::Node element,
                   const std::function<void(const Reader::Node&)>& check) {
  writer.array(std::vector{element});
  const Ref<Data> list = writer.finish();
  const std::string foreign = rewritten(*list);
  for (const std::span<const std::byte> bytes : {list->bytes(), bytesOf(foreign)}) {
    auto reader = Reader::open(bytes, 4);
    ASSERT_TRUE(reader);
    const auto top = reader->node(reader->top());
    ASSERT_TRUE(top);
    const auto node = reader->node(reader->reference(*top, 0));
    ASSERT_TRUE(node);
    check(*node);
  }
}

/// The kinds of numbers that the format distinguishes.
char formOf(NumberValue number) {
  if (number.isBoolean()) return 'c';
  const bool isSigned = !number.isFloating() && number.kind() != NumberKind::uint64;
  return isSigned ? 'q' : number.typeCode();
}

TEST(BinaryPropertyList, NumbersKeepTheirKindInTheSmallestForm) {
  using Signed = std::numeric_limits<std::int64_t>;
  constexpr std::uint64_t kMost = ~std::uint64_t{0};  // libplist reads -1
  // By the size of the object, including its marker.
  const std::pair<std::size_t, std::vector<NumberValue>> cases[] = {
      {1, {true, false}},
      {2, {0, 255}},
      {3, {256, 65535}},
      {5, {65536, 0xFFFF'FFFFu, 0.1f}},
      {9, {std::int64_t{1} << 32, Signed::max(), -1, Signed::min()}},
      {9, {0.1, -0.0, std::numeric_limits<double>::infinity()}},
      {17, {std::uint64_t{1} << 63, kMost}},
  };
  for (const auto& [size, values] : cases) {
    for (const NumberValue value : values) {
      SCOPED_TRACE(value.text());
      Writer writer;
      const Writer::Node number = writer.number(value);
      const Ref<Data> list = writer.finish();
      EXPECT_EQ(list->length(), 8 + size + 1 + 32);
      const auto node = Reader::open(list->bytes(), 4)->node(0);
      ASSERT_TRUE(node);
      EXPECT_EQ(node->kind, Kind::number);
      EXPECT_EQ(node->number.bits(), value.bits());
      EXPECT_EQ(formOf(node->number), formOf(value));
      if (value.isEqual(kMost)) continue;
      expectElement(writer, number,
                    [&](const Reader::Node& n) { EXPECT_TRUE(n.number.isEqual(value)); });
    }
  }
}

TEST(BinaryPropertyList, StringsKeepEveryCodeUnit) {
  const std::u16string texts[] = {u"",
                                  std::u16string(15, u'x'),
                                  u"é",
                                  u"\U0001F600",
                                  std::u16string(70'000, u'ÿ'),
                                  {u'a', 0},
                                  {0xD800},
                                  {0xDC00, 0xD800},
                                  {0, 0xDFFF, u'x', 0}};
  for (const std::u16string& units : texts) {
    const Ref<String> text = String::stringWithUTF16(units);
    Writer writer;
    const Writer::Node string = writer.string(text->view());
    const auto check = [&](const Reader::Node& node) {
      EXPECT_EQ(node.kind, text->view().size() == units.size() ? Kind::ascii : Kind::utf16);
      EXPECT_TRUE(stringFromNode(node)->isEqual(*text));
      EXPECT_TRUE(isString(node, text->view()));
      EXPECT_FALSE(isString(node, "other"));
    };
    if (text->isWellFormed() && units.find(u'\0') == std::u16string::npos) {
      expectElement(writer, string, check);
    } else {
      const Ref<Data> list = writer.finish();
      check(*Reader::open(list->bytes(), 4)->node(0));
    }
  }
}

TEST(BinaryPropertyList, KeepsDataDatesAndUIDs) {
  for (const std::uint32_t length : {0u, 14u, 15u, 255u, 256u, 70'000u}) {
    const std::string bytes(length, '\xAB');
    Writer data, uid;
    expectElement(data, data.data(bytesOf(bytes)), [&](const Reader::Node& node) {
      EXPECT_EQ(node.kind, Kind::data);
      EXPECT_TRUE(std::ranges::equal(node.content, bytesOf(bytes)));
    });
    expectElement(uid, uid.uid(length), [&](const Reader::Node& node) {
      EXPECT_EQ(node.kind, Kind::uid);
      EXPECT_EQ(node.value, length);
    });
  }
  Writer date;
  expectElement(date, date.date(-1.5), [](const Reader::Node& node) {
    EXPECT_EQ(node.kind, Kind::date);
    EXPECT_EQ(node.number.doubleValue(), -1.5);
  });
}

TEST(BinaryPropertyList, ReferencesAreAsWideAsTheCountNeeds) {
  for (const std::uint32_t count : {3u, 253u, 254u, 70'000u}) {
    Writer writer;
    std::vector<Writer::Node> elements;
    for (std::uint32_t i = 0; i < count; ++i) elements.push_back(writer.number(i));
    const Writer::Node array = writer.array(elements);
    const std::pair<Writer::Node, Writer::Node> members[] = {{writer.string("key"), array}};
    writer.dictionary(members);
    const Ref<Data> list = writer.finish();
    const std::string again = rewritten(*list);
    for (const std::span<const std::byte> bytes : {list->bytes(), bytesOf(again)}) {
      auto reader = Reader::open(bytes, 16);
      const auto top = reader->node(reader->top());
      ASSERT_TRUE(top);
      ASSERT_EQ(top->kind, Kind::dictionary);
      ASSERT_EQ(top->value, 1u);
      EXPECT_TRUE(isString(*reader->node(reader->reference(*top, 0)), "key"));
      const auto read = reader->node(reader->reference(*top, 1));
      ASSERT_EQ(read->value, count);
      for (std::uint32_t i = 0; i < count; ++i) {
        ASSERT_EQ(reader->node(reader->reference(*read, i))->number.integerValue(), i);
      }
    }
  }
}

/// Returns a list of the given objects, with offsets and references of one byte.
std::string listOf(std::initializer_list<std::string> objects) {
  std::string list = "bplist00";
  std::string offsets;
  for (const std::string& object : objects) {
    offsets += static_cast<char>(list.size());
    list += object;
  }
  std::string trailer(32, '\0');
  trailer[6] = trailer[7] = 1;
  trailer[15] = static_cast<char>(objects.size());
  trailer[31] = static_cast<char>(list.size());
  return list + offsets + trailer;
}

TEST(BinaryPropertyList, CountsMayHaveEightBytes) {
  for (const char* hex : {"5F10016B", "5F1100016B", "5F12000000016B", "5F1300000000000000016B"}) {
    const std::string list = listOf({test::fromHex(hex)});
    EXPECT_TRUE(isString(*Reader::open(bytesOf(list), 4)->node(0), "k")) << hex;
  }
}

TEST(BinaryPropertyList, IntegersMayHaveSixteenBytes) {
  const Rows<const char*, NumberValue> cases{
      {"14 0000000000000000 8000000000000000", std::uint64_t{1} << 63},
      {"14 ffffffffffffffff ffffffffffffffff", -1},
      {"14 ffffffffffffffff 8000000000000000", std::numeric_limits<std::int64_t>::min()},
  };
  for (const auto& [hex, value] : cases) {
    const std::string list = listOf({test::fromHex(hex)});
    const NumberValue number = Reader::open(bytesOf(list), ~std::size_t{0})->node(0)->number;
    EXPECT_EQ(number.bits(), value.bits()) << hex;
    EXPECT_TRUE(number.isEqual(value)) << hex;
  }
}

TEST(BinaryPropertyList, RefusesInvalidObjects) {
  std::istringstream objects(
      "00 0F 10 1300 1500000000000000000000000000000000000000000000000000000000000000000001 240000 "
      "2200 437A7A 4F 4F50 4F13FFFFFFFFFFFFFFFF 5F1400 617A "
      "6F138000000000000000 8300 88000000000000000000 A200 D100 E0 "
      "1400000000000000010000000000000000 14ffffffffffffffff7fffffffffffffff "
      "14fffffffffffffffe8000000000000000 2000 210000 23 2423232323232323232323232323232323 "
      "3200000000 "
      "5F 5F20016B 5F30016B 8FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF B000 C000 F000 7000 9000");
  for (std::string hex; objects >> hex;) {
    const std::string list = listOf({test::fromHex(hex)});
    auto reader = Reader::open(bytesOf(list), 4);
    ASSERT_TRUE(reader);
    EXPECT_FALSE(reader->node(0)) << hex;
    EXPECT_FALSE(reader->node(1));
  }
  const std::string notASCII = listOf({"\x51\xFF"});
  EXPECT_FALSE(stringFromNode(*Reader::open(bytesOf(notASCII), 4)->node(0)));
}

TEST(BinaryPropertyList, RefusesInvalidTrailers) {
  const std::string good = listOf({"\x09"});
  ASSERT_TRUE(Reader::open(bytesOf(good), 4));
  std::string anyVersion = good;
  anyVersion[7] = '7';
  EXPECT_TRUE(Reader::open(bytesOf(anyVersion), 4));
  const std::size_t trailer = good.size() - 32;
  std::string otherTop = good;
  otherTop.replace(trailer + 16, 8, test::fromHex("0102030405060708"));
  EXPECT_EQ(Reader::open(bytesOf(otherTop), 4)->top(), 0x0102030405060708u);
  const std::pair<std::size_t, char> faults[] = {
      {0, 'B'},          {6, 'X'},           {trailer + 6, 0},       {trailer + 6, 9},
      {trailer + 7, 0},  {trailer + 7, 16},  {trailer + 8, 1},       {trailer + 15, 2},
      {trailer + 31, 7}, {trailer + 31, 11}, {trailer + 24, '\xFF'},
  };
  for (const auto& [at, value] : faults) {
    std::string bad = good;
    bad[at] = value;
    EXPECT_FALSE(Reader::open(bytesOf(bad), 4)) << at;
  }
  for (std::size_t length = 0; length < 40; ++length) {
    EXPECT_FALSE(Reader::open(bytesOf(good).first(length), 4));
  }
  for (const std::size_t offset : {std::size_t{0}, std::size_t{7}, std::size_t{9}, good.size()}) {
    std::string outside = good;  // the only object's offset
    outside[9] = static_cast<char>(offset);
    EXPECT_FALSE(Reader::open(bytesOf(outside), 4)->node(0));
  }
  const std::string none = listOf({});
  auto empty = Reader::open(bytesOf(none), 4);
  ASSERT_TRUE(empty);
  EXPECT_FALSE(empty->node(0));
}

TEST(BinaryPropertyList, StopsAtTheReadingLimit) {
  const std::string list = listOf({test::fromHex("53616263")});
  auto reader = Reader::open(bytesOf(list), 1);
  std::size_t readings = 0;
  while (reader->node(0)) ++readings;
  EXPECT_EQ(readings, list.size() / 4);
  EXPECT_TRUE(reader->nodeAgain(0));
}

TEST(PropertyList, RefusesWhatOnlyOtherListsContain) {
  const std::string key = test::fromHex("516B"), value = "\x09";
  const Rows<const char*, std::string, bool> cases{
      {"good", listOf({test::fromHex("D10102"), key, value}), true},
      {"a shared key", listOf({test::fromHex("D201010101"), key}), true},
      {"a number as a key", listOf({test::fromHex("D10201"), key, value}), false},
      {"an array as a key", listOf({test::fromHex("D10102"), "\xA0", value}), false},
      {"no key", listOf({test::fromHex("D10302"), key, value}), false},
      {"no value", listOf({test::fromHex("D10103"), key, value}), false},
      {"no element", listOf({test::fromHex("A101")}), false},
      {"itself", listOf({test::fromHex("A100")}), false},
      {"itself as a value", listOf({test::fromHex("D10100"), key}), false},
      {"a UID", listOf({test::fromHex("8001")}), false},
      {"an invalid string", listOf({"\x51\xFF"}), false},
  };
  for (const auto& [name, list, isRead] : cases) {
    EXPECT_EQ(propertyListFromBytes(bytesOf(list)) != nullptr, isRead) << name;
  }
}

TEST(PropertyList, HasALargestSize) {
  const std::vector<NumberValue> numbers{1, 2.5};
  const Rows<Ref<Object>, std::size_t> cases{
      // Values of 64 bytes each, and their text and data.
      {Number::numberWith(1), 64},
      {Date::dateWithTimeIntervalSinceReferenceDate(1), 64},
      {Data::dataWithBytes("abc"), 64 + 3},
      {String::of("ab"), 64 + 2},
      {Array::arrayWithNumbers(numbers), 3 * 64},
      {Array::arrayWithObjects({String::of("a"), Array::array()}), 3 * 64 + 1},
      {Dictionary::dictionaryWithEntries({{"key", Dictionary::dictionary()}}), 3 * 64 + 3},
  };
  for (const auto& [object, size] : cases) {
    std::string fault;
    for (std::size_t largest = 0; largest < size; ++largest) {
      ASSERT_FALSE(bytesFromPropertyList(*object, fault, largest)) << object->description();
    }
    EXPECT_EQ(fault, "an object that is too large");
    const Ref<Data> list = bytesFromPropertyList(*object, fault, size);
    ASSERT_TRUE(list) << object->description();
    EXPECT_TRUE(propertyListFromBytes(list->bytes())->isEqual(*object));
  }
}

TEST(PropertyList, SharedObjectsDoNotMultiply) {
  constexpr std::size_t kCount = 100'000;
  // An array that refers to one node again and again, or to a new node each time.
  const auto read = [](bool shared, const auto& write) {
    Writer writer;
    std::vector<Writer::Node> elements;
    while (elements.size() < kCount) {
      elements.push_back(shared && !elements.empty() ? elements.back() : write(writer));
    }
    writer.array(elements);
    return refCast<Array>(propertyListFromBytes(writer.finish()->bytes()));
  };
  const auto array = [](Writer& writer) { return writer.array(std::vector{writer.number(true)}); };
  const Rows<std::function<Writer::Node(Writer&)>, bool> cases{
      {array, false},
      {[&](Writer& writer) {
         const std::pair<Writer::Node, Writer::Node> members[] = {
             {writer.string(""), array(writer)}};
         return writer.dictionary(members);
       },
       false},
      {[](Writer& writer) { return writer.array({}); }, true},
      {[](Writer& writer) { return writer.dictionary({}); }, true},
      {[](Writer& writer) { return writer.string(std::string(1000, 'x')); }, true},
  };
  for (const auto& [write, mayBeShared] : cases) {
    EXPECT_TRUE(mayBeShared || read(false, write));
    const Ref<Array> elements = read(true, write);
    ASSERT_EQ(elements != nullptr, mayBeShared);
    if (!mayBeShared) continue;
    EXPECT_EQ(elements->count(), kCount);
    EXPECT_EQ(elements->firstObject(), elements->lastObject());
  }
}

}  // namespace
}  // namespace tq::detail
