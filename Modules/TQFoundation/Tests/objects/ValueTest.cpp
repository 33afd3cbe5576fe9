#include <filesystem>
#include <unordered_set>

#include <TQFoundation/objects/GeometryText.h>

#include "support/Objects.h"
#include "support/TemporaryDirectory.h"

namespace {

TEST(Value, ReturnsTheStructureOnlyForItsSignature) {
  const Ref<Value> point = Value::valueWithPoint({1, 2});
  EXPECT_EQ(point->pointValue()->y, 2);
  EXPECT_FALSE(point->sizeValue());
  EXPECT_FALSE(point->rectValue());
  EXPECT_FALSE(Value::valueWithBytes(Value::kPointType, {})->pointValue());
  EXPECT_EQ(Value::valueWithRect({1, 2, -3, 4})->rectValue()->size.width, -3);
  EXPECT_EQ(*Value::valueWithRange({3, 4})->rangeValue(), (Range{3, 4}));
  EXPECT_FALSE(point->isEqual(*Value::valueWithSize({1, 2})));
  EXPECT_TRUE(point->isEqual(*Value::valueWithPoint({1, 2})));
  EXPECT_EQ(point->hash(), Value::valueWithPoint({1, 2})->hash());
  EXPECT_FALSE(Value::valueWithPoint({0.0, 0})->isEqual(*Value::valueWithPoint({-0.0, 0})));
  EXPECT_EQ(Value::valueWithRect({1, 2, 3, 0.1})->description(),
            "{{1, 2}, {3, 0.10000000000000001}}");
  EXPECT_EQ(Value::valueWith("{X=c}", 'x')->description(), "<{X=c}, 1 bytes>");
}

TEST(Hash, IsKeyedWithASecretOfTheProcess) {
  const std::hash<std::string_view> plain;
  const std::string zeros(16, '\0');
  const std::pair<Ref<Object>, std::size_t> cases[] = {
      {Number::numberWith(1.5), std::hash<double>{}(1.5)},
      {Date::dateWithTimeIntervalSinceReferenceDate(1.5), std::hash<double>{}(1.5)},
      {String::of("ab"), plain("ab")},
      {Data::dataWithBytes("ab"), plain("ab")},
      {UUID::UUIDWithBytes({}), plain(zeros)},
      {Value::valueWithBytes("a", {}), plain("a") ^ plain("")},
      {Error::errorWithDomain("ab", 1), plain("ab") ^ 1},
  };
  for (const auto& [object, foreseen] : cases) {
    EXPECT_NE(object->hash(), foreseen) << object->description();
  }
  std::unordered_set<std::size_t> ofZeros;
  for (const std::size_t length : {0u, 1u, 2u, 7u, 8u, 9u, 16u, 17u}) {
    ofZeros.insert(Data::dataWithBytes(std::string(length, '\0'))->hash());
  }
  EXPECT_EQ(ofZeros.size(), 8u);
  // The hash covers signature and bytes separately.
  const std::string_view text = "ab";
  EXPECT_NE(Value::valueWithBytes(text, std::as_bytes(std::span(text)))->hash(),
            Value::valueWithBytes("", {})->hash());
}

TEST(Hash, DistinguishesRecordsButNotTheirOrder) {
  const auto number = [](int value) -> Ref<Object> { return Number::numberWith(value); };
  const auto record = [&](int a, int b) -> Ref<Object> {
    return Dictionary::dictionaryWithEntries({{"a", number(a)}, {"b", number(b)}});
  };
  std::unordered_set<std::size_t> hashes;
  for (int i = 1; i < 1000; ++i) {
    for (const Ref<Object>& object :
         {record(0, i), record(i, 0), Ref<Object>(Set::setWithObjects({number(-1), number(i)})),
          Ref<Object>(Array::arrayWithObjects({String::of("first"), number(i)})),
          Ref<Object>(Array::arrayWithNumbers(std::vector<double>{0, double(i), 0}))}) {
      EXPECT_TRUE(hashes.insert(object->hash()).second) << object->description();
    }
  }
  EXPECT_EQ(Dictionary::dictionaryWithEntries({{"b", number(2)}, {"a", number(1)}})->hash(),
            record(1, 2)->hash());
  EXPECT_EQ(Set::setWithObjects({number(1), number(2)})->hash(),
            Set::setWithObjects({Number::numberWith(2.0), Number::numberWith(true)})->hash());

  Ref<Object> nest = record(1, 2);
  for (int depth = 0; depth < 200'000; ++depth) nest = Array::arrayWithObjects({nest});
  EXPECT_EQ(nest->hash(), Array::arrayWithObjects({Array::arrayWithObjects({nest})})->hash());
}

TEST(GeometryText, ReadsNumbersAndIgnoresOtherCharacters) {
  const test::Rows<std::string_view, Rect> cases{
      {"", {0, 0, 0, 0}},
      {"{{1, 2}, {3, 4}}", {1, 2, 3, 4}},
      {"{1, 2, 3, 4}", {1, 2, 3, 4}},
      {"1 2 3 4 5", {1, 2, 3, 4}},
      {"{1e+20, 1e-05}", {1e20, 1e-5, 0, 0}},
      {"-0.6a5.4das-105.7bfh24.3", {-0.6, 5.4, -105.7, 24.3}},
      {"--1+-2", {-1, -2, 0, 0}},
      {"1e2e3", {100, 3, 0, 0}},
      {"{nan, inf}", {0, 0, 0, 0}},
  };
  for (const auto& [text, rect] : cases) {
    SCOPED_TRACE(text);
    test::expectFields(rectFromText(text), rect);
    EXPECT_EQ(pointFromText(text).y, rect.origin.y);
    EXPECT_EQ(sizeFromText(text).width, rect.origin.x);
  }
  const Rect exact{0.1, -1.0 / 3, 5e-324, 1.7976931348623157e308};
  test::expectFields(rectFromText(textFromRect(exact)), exact);
}

TEST(Data, GrowsShrinksAndFillsWithZeros) {
  const Ref<MutableData> data = MutableData::data();
  std::string expected;
  for (int i = 0; i < 1'000; ++i) {
    const std::string piece(static_cast<std::size_t>(i % 7), static_cast<char>(i));
    data->append(piece);
    expected += piece;
  }
  EXPECT_EQ(data->view(), expected);
  const Ref<Object> fixed = data->copy();
  data->setLength(2);
  data->setLength(5);
  EXPECT_EQ(data->view(), expected.substr(0, 2) + std::string(3, '\0'));
  EXPECT_EQ(static_cast<const Data&>(*fixed).view(), expected);
  const std::span<std::byte> room = data->spareRoom(10);
  ASSERT_GE(room.size(), 10u);
  room[0] = std::byte{'!'};
  data->commit(1);
  EXPECT_EQ(data->view().back(), '!');
  EXPECT_DEATH(data->commit(room.size() + 1), "Assertion failed");
  EXPECT_THROW(data->reserve(~std::size_t{0}), std::bad_alloc);
  EXPECT_THROW((void)data->spareRoom(~std::size_t{0}), std::bad_alloc);
  EXPECT_EQ(data->length(), 6u);
  EXPECT_EQ(Data::dataByTakingBytes(*data)->view().back(), '!');
  data->append("x");
  EXPECT_EQ(data->view(), "x") << "a buffer grows again after its bytes were taken";

  EXPECT_TRUE(MutableData::dataWithLength(2)->isEqual(*Data::dataWithBytes(std::string(2, '\0'))));
  EXPECT_EQ(Data::dataWithBytes("\x0A\x1B")->description(), "<2 bytes: 0a1b>");
  for (const Ref<Data>& empty : {Data::dataWithBytes(""), Ref<Data>(MutableData::data()),
                                 Data::dataByTakingBytes(*MutableData::data())}) {
    EXPECT_EQ(empty->length(), 0u);
    const std::byte* padding = empty->bytes().data();
    EXPECT_EQ(std::count(padding, padding + Data::kReadablePadding, std::byte{0}), 64);
  }
}

/// Returns new objects of all classes that compare by value, of which no two are equal.
std::vector<Ref<Object>> unequalObjects() {
  const auto number = [](int n) -> Ref<Object> { return Number::numberWith(n); };
  std::vector<Ref<Object>> objects{Null::null(), Array::array(), Dictionary::dictionary(),
                                   Set::set(),
                                   Dictionary::dictionaryWithEntries({{"a", number(1)}})};
  for (const int n : {1, 2}) {
    const std::string text = std::to_string(n);
    const Ref<Object> leaves[] = {number(n),
                                  String::of(text),
                                  Data::dataWithBytes(std::as_bytes(std::span(text))),
                                  Date::dateWithTimeIntervalSinceReferenceDate(n),
                                  UUID::UUIDWithBytes({static_cast<std::uint8_t>(n)}),
                                  URL::fileURLWithPath("/" + text),
                                  URL::URLWithString("mailto:" + text),
                                  Error::errorWithDomain("domain", n),
                                  Error::errorWithDomain(text, 1),
                                  Error::errorWithDomain("domain", 1, text),
                                  Value::valueWithPoint({1.0 * n, 0}),
                                  Value::valueWithSize({1.0 * n, 0})};
    for (const Ref<Object>& leaf : leaves) {
      objects.insert(objects.end(),
                     {leaf, Array::arrayWithObjects({leaf}), Set::setWithObjects({leaf}),
                      Dictionary::dictionaryWithEntries({{"key", leaf}})});
    }
    objects.push_back(Array::arrayWithObjects({number(n), number(n)}));
    objects.push_back(Dictionary::dictionaryWithEntries({{text, number(1)}, {"a", number(1)}}));
  }
  return objects;
}

TEST(Object, IsEqualToObjectsOfItsClassWithTheSameValue) {
  const std::vector<Ref<Object>> objects = unequalObjects();
  const std::vector<Ref<Object>> others = unequalObjects();
  // The members of these sets are compared by numbers, twice in each array.
  const auto inSets = [](const Ref<Object>& object) {
    const auto with = [&](Ref<Object> other) {
      return Set::setWithObjects({Array::arrayWithObjects({object}), std::move(other)});
    };
    return Array::arrayWithObjects({with(Null::null()), with(Number::numberWith(1))});
  };
  for (std::size_t i = 0; i < objects.size(); ++i) {
    for (std::size_t j = 0; j < objects.size(); ++j) {
      EXPECT_EQ(objects[i]->isEqual(*others[j]), i == j)
          << objects[i]->description() << ", " << others[j]->description();
    }
    EXPECT_EQ(objects[i]->hash(), others[i]->hash()) << objects[i]->description();
    EXPECT_TRUE(inSets(objects[i])->isEqual(*inSets(others[i])));
    EXPECT_FALSE(inSets(objects[i])->isEqual(*inSets(others[(i + 4) % others.size()])));
  }
}

TEST(Object, DescribesItsContent) {
  const std::pair<Ref<Object>, std::string> cases[] = {
      {Date::dateWithTimeIntervalSinceReferenceDate(1.5), "1.5 s"},
      {UUID::UUIDWithBytes({}), "00000000-0000-0000-0000-000000000000"},
      {URL::URLWithString("/a b"), "file:///a%20b"},
      {Data::dataWithBytes(std::string(25, '\x0A')),
       "<25 bytes: 0a0a0a0a0a0a0a0a0a0a0a0a0a0a0a0a0a0a0a0a0a0a0a0a…>"},
  };
  for (const auto& [object, text] : cases) EXPECT_EQ(object->description(), text);
  EXPECT_STREQ(Exception("Name", "").what(), "Name");
}

TEST(UUID, ReadsAndWritesItsText) {
  const Ref<UUID> uuid = UUID::UUIDWithString("68753a44-4d6f-1226-9c60-0050E4C00067");
  ASSERT_TRUE(uuid);
  EXPECT_EQ(uuid->UUIDString(), "68753A44-4D6F-1226-9C60-0050E4C00067");
  EXPECT_EQ(uuid->bytes()[15], 0x67);
  EXPECT_TRUE(uuid->isEqual(*UUID::UUIDWithBytes(uuid->bytes())));
  EXPECT_EQ(uuid->hash(), UUID::UUIDWithBytes(uuid->bytes())->hash());
  for (const char* text :
       {"", "68753A44-4D6F-1226-9C60-0050E4C0006", "68753A44-4D6F-1226-9C60-0050E4C0006G",
        "68753A4444D6F-1226-9C60-0050E4C00067", "68753A44-4D6F-1226-9C60-0050E4C000-7",
        "68753A44-4D6F-1226-9C60-0050E4C00067 ", "+8753A44-4D6F-1226-9C60-0050E4C00067"}) {
    EXPECT_FALSE(UUID::UUIDWithString(text)) << text;
  }
}

TEST(Error, HasTextForPeopleAndForProgrammers) {
  const Ref<Error> plain = Error::errorWithDomain("domain", 7);
  EXPECT_EQ(plain->localizedDescription(),
            "The operation couldn’t be completed. (domain error 7.)");
  EXPECT_EQ(plain->description(),
            "Error Domain=domain Code=7 \"The operation couldn’t be completed. (domain error 7.)\" "
            "UserInfo={}");
  const auto textOf = [](std::string_view domain, std::int64_t code) {
    return Error::errorWithDomain(domain, code)->localizedDescription();
  };
  EXPECT_EQ(textOf(POSIXErrorDomain, 2), "No such file or directory");
  EXPECT_EQ(textOf(POSIXErrorDomain, 2 + (1LL << 32)),
            "The operation couldn’t be completed. (NSPOSIXErrorDomain error 4294967298.)");
  const std::pair<std::string_view, int> unknown[] = {
      {POSIXErrorDomain, -1}, {POSIXErrorDomain, 99999}, {CocoaErrorDomain, 1}, {"domain", 3840}};
  for (const auto& [domain, code] : unknown) {
    EXPECT_EQ(textOf(domain, code), "The operation couldn’t be completed. (" + std::string(domain) +
                                        " error " + std::to_string(code) + ".)");
  }
  EXPECT_EQ(textOf(CocoaErrorDomain, 3840),
            "The data couldn’t be read because it isn’t in the correct format.");
  const auto noText = Dictionary::dictionaryWithEntries({{LocalizedDescriptionKey, plain}});
  EXPECT_EQ(Error::errorWithDomain("domain", 7, noText)->localizedDescription(),
            plain->localizedDescription());
  const Ref<Error> error = Error::errorWithDomain("domain", 7, "bad \xFF byte");
  EXPECT_EQ(error->localizedDescription(), "bad � byte");
  EXPECT_FALSE(error->isEqual(*plain));
  EXPECT_TRUE(error->isEqual(*Error::errorWithDomain("domain", 7, "bad � byte")));
  EXPECT_EQ(error->copy(), error);
  const auto info = MutableDictionary::dictionaryWithDictionary(error->userInfo());
  const auto own = Error::errorWithDomain("domain", 7, info);
  info->removeAllObjects();
  EXPECT_TRUE(own->isEqual(*error));
  Ref<Error> out;
  setOutError(&out, error);
  EXPECT_EQ(out, error);
  setOutError(nullptr, error);
}

TEST(DateAndNull, AreEqualByValueAndByIdentity) {
  for (const double seconds : {0.5, std::nan("")}) {
    const auto date = Date::dateWithTimeIntervalSinceReferenceDate(seconds);
    EXPECT_TRUE(date->isEqual(*Date::dateWithTimeIntervalSinceReferenceDate(seconds)));
  }
  EXPECT_EQ(Null::null(), Null::null());
  EXPECT_FALSE(Null::null()->isEqual(*Number::numberWith(0)));
}

TEST(URL, KeepsPathsAndDecodesFileURLs) {
  const test::Rows<std::string_view, std::string_view, std::string_view, std::string_view> cases{
      {"/a/b c.txt", "/a/b c.txt", "b c.txt", "file:///a/b%20c.txt"},
      {"/a%20b", "/a%20b", "a%20b", "file:///a%2520b"},
      {"file:///a%20b/%C3%A9", "/a b/\xC3\xA9", "\xC3\xA9", "file:///a%20b/%C3%A9"},
      {"FILE://localhost/x", "/x", "x", "file:///x"},
      {"file:/x/y/", "/x/y/", "y", "file:///x/y/"},
      {"/", "/", "/", "file:///"},
      {"/\xFF?#", "/\xFF?#", "\xFF?#", "file:///%FF%3F%23"},
      {"", "", "", "file://"},
      {"https://example.org/a%20b", "", "a%20b", "https://example.org/a%20b"},
      {"Z+a-b.9:c", "", "Z+a-b.9:c", "Z+a-b.9:c"},
      {"files:///a", "", "a", "files:///a"},
      {"FiLE:/%7e%4A", "/~J", "~J", "file:///~J"},
  };
  for (const auto& [text, path, last, absolute] : cases) {
    SCOPED_TRACE(text);
    const Ref<URL> url = URL::URLWithString(text);
    ASSERT_TRUE(url);
    EXPECT_EQ(url->path(), path);
    EXPECT_EQ(url->lastPathComponent(), last);
    EXPECT_EQ(url->absoluteString(), absolute);
    const Ref<URL> again = URL::URLWithString(url->absoluteString());
    EXPECT_TRUE(url->isEqual(*again));
    EXPECT_EQ(url->hash(), again->hash());
  }
  for (const char* text : {"file://elsewhere/x", "file:///%", "file:///%2", "file:///%zz",
                           "file:///%4g", "file:///%@1", "file:///a%00b"}) {
    EXPECT_FALSE(URL::URLWithString(text)) << text;
  }
}

TEST(URL, AppendsRelativePathsToTheWorkingDirectory) {
  for (const std::string_view path : {"a:b", "a", "a/b:c", "{:b", "9:b", "a_b:c"}) {
    const Ref<URL> url = URL::fileURLWithPath(path);
    EXPECT_EQ(url->path(), (std::filesystem::current_path() / path).string());
    EXPECT_TRUE(URL::URLWithString(url->absoluteString())->isEqual(*url));
    EXPECT_EQ(URL::URLWithString(path)->isEqual(*url), path != "a:b") << path;
  }
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path("/");
  EXPECT_EQ(URL::fileURLWithPath("a")->path(), "/a");
  std::filesystem::current_path(test::TemporaryDirectory().path(""));  // removed at once
  EXPECT_EQ(URL::fileURLWithPath("a")->path(), "a");
  std::filesystem::current_path(before);
}

}  // namespace
