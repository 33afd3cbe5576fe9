#include <TQFoundation/platform/archive/KeyedArchiver.h>

#include "platform/archive/Host.h"
#include "support/RandomGraphs.h"

namespace {

Ref<Object> number(NumberValue value) { return Number::numberWith(value); }
Ref<Object> text(std::string_view value) { return String::of(value); }

Ref<Data> archive(const Object& root) { return KeyedArchiver::archivedDataWithRootObject(root); }

/// Archives and unarchives `root`, and checks that the copy has the same archive.
Ref<Object> roundTrip(const Object& root) {
  const Ref<Data> bytes = archive(root);
  Ref<Object> copy = KeyedUnarchiver::unarchiveRootObject(bytes->bytes());
  EXPECT_TRUE(copy && archive(*copy)->isEqual(*bytes)) << root.description();
  return copy;
}

std::string reasonForRefusing(const Object& root) {
  try {
    (void)archive(root);
  } catch (const Exception& exception) {
    EXPECT_EQ(exception.name(), InvalidArgumentException);
    return exception.reason();
  }
  return "";
}

TEST(KeyedArchiver, KeepsEveryLibraryClass) {
  const float floats[] = {1, 2};
  const Ref<Object> objects[] = {
      text(""),
      text("$null"),
      text(std::string_view("a\0é\U0001F600", 8)),
      text(std::string(20, 'x')),
      text("é" + std::string(70'000, 'y')),
      String::stringWithUTF16(u"\xD800 and \xDC00"),
      Data::dataWithBytes(std::string(300, '\xFF')),
      MutableData::dataWithLength(2),
      Array::array(),
      Array::arrayWithObjects({text("a"), number(2), Null::null(), Array::array()}),
      MutableArray::arrayWithArray(*Array::arrayWithObjects({text("a")})),
      Dictionary::dictionary(),
      Dictionary::dictionaryWithEntries({{"b", number(1)}, {"a", Dictionary::dictionary()}}),
      MutableDictionary::dictionary(),
      Set::set(),
      Set::setWithObjects({text("x"), number(1)}),
      Null::null(),
      Date::dateWithTimeIntervalSinceReferenceDate(-0.1),
      Value::valueWithPoint({0.1, -0.0}),
      Value::valueWithSize({1e300, 5e-324}),
      Value::valueWithRect({1, 2, -3, 4.000000000000001}),
      Value::valueWithPoint({kInf, kNaN}),
      Value::valueWithRange({7, std::numeric_limits<std::uint64_t>::max()}),
      Value::valueWith("{Floats=ff}", floats),
      Error::errorWithDomain("domain", -5, "what é"),
      Error::errorWithDomain("", 0),
      UUID::UUIDWithString("68753A44-4D6F-1226-9C60-0050E4C00067"),
      URL::fileURLWithPath("/a b/\xFF"),
      URL::URLWithString("https://example.org/é"),
  };
  for (const Ref<Object>& object : objects) {
    EXPECT_TRUE(KeyedArchiver::supportsKeyedCoding(*object));
    const Ref<Object> copy = roundTrip(*object);
    ASSERT_TRUE(copy);
    EXPECT_TRUE(copy->isEqual(*object)) << copy->description();
    EXPECT_EQ(&copy->classForCoder(), &object->classForCoder());
    // A reader compares the members of sets; comparing containers could take unlimited time.
    const bool isContainer = objectCast<Array>(object.get()) || objectCast<Set>(object.get()) ||
                             objectCast<Dictionary>(object.get()) ||
                             objectCast<Error>(object.get());
    const std::string reason = reasonForRefusing(*Set::setWithObjects({object}));
    EXPECT_EQ(reason.find("a member of a set") != reason.npos, isContainer)
        << object->description();
  }
  const auto all = roundTrip(*Array::arrayWithObjects(objects));
  EXPECT_TRUE(all->isEqual(*Array::arrayWithObjects(objects)));
  for (const char* name : {"NSArray", "NSData", "NSDate", "NSDictionary", "NSError",
                           "NSMutableArray", "NSMutableData", "NSMutableDictionary", "NSNull",
                           "NSNumber", "NSSet", "NSString", "NSURL", "NSUUID", "NSValue"}) {
    EXPECT_TRUE(Class::classNamed(name)) << name;
  }
}

TEST(KeyedArchiver, KeepsTheKindsOfNumbersThatTheFormatHas) {
  // Several have equal bits.
  const std::vector<NumberValue> values = {true,
                                           1,
                                           std::int8_t{-3},
                                           std::int64_t{1} << 63,
                                           std::uint64_t{1} << 63,
                                           ~std::uint64_t{0},
                                           -0.0f,
                                           0.1f,
                                           -0.0,
                                           0.1,
                                           kInf,
                                           5e-324,
                                           1e-320};
  constexpr std::string_view kCodes = "cqqqQQffddddd";
  std::vector<Ref<Object>> boxes;
  for (const NumberValue value : values) boxes.push_back(number(value));
  const Ref<Array> packed = Array::arrayWithNumbers(values);
  const Ref<Array> copy = refCast<Array>(roundTrip(*packed));
  EXPECT_TRUE(copy->isPacked());
  ASSERT_EQ(copy->count(), values.size());
  for (std::size_t i = 0; i < values.size(); ++i) {
    const auto single = refCast<Number>(roundTrip(*boxes[i]));
    for (const NumberValue read : {copy->numberAtIndex(i), single->value()}) {
      EXPECT_EQ(read.bits(), values[i].bits()) << values[i].text();
      EXPECT_EQ(read.typeCode(), kCodes[i]) << values[i].text();
    }
  }
  // Boxed numbers give the same archive as packed ones.
  EXPECT_EQ(archive(*Array::arrayWithObjects(std::move(boxes)))->view(), archive(*packed)->view());
}

TEST(KeyedArchiver, KeepsHostObjectsTheirCyclesAndWhatTheyShare) {
  const Ref<Host> parent = makeHost("parent é");
  parent->flag = true;
  parent->integer = -7;
  parent->single = 0.1f;
  parent->number = 0.1;
  const Ref<Host> child = makeHost("child");
  child->back = parent;
  const Ref<Host> self = makeHost("self");
  self->back = self;
  const Ref<Array> list = Array::arrayWithObjects({text("x")});
  const Ref<Array> equal = Array::arrayWithObjects({text("x")});
  parent->content = Array::arrayWithObjects({child, self, child, list, equal, list});

  const Ref<Host> copy = refCast<Host>(roundTrip(*parent));
  ASSERT_TRUE(copy);
  EXPECT_EQ(
      std::tuple(copy->name, copy->bytes, copy->flag, copy->integer, copy->single, copy->number),
      std::tuple("parent é", "parent é", true, -7, 0.1f, 0.1));
  EXPECT_TRUE(copy->knowsAbsentKeys);
  const auto* children = objectCast<Array>(copy->content.get());
  ASSERT_TRUE(children);
  EXPECT_EQ(&children->objectAtIndex(0), &children->objectAtIndex(2));
  EXPECT_EQ(&children->objectAtIndex(3), &children->objectAtIndex(5));
  EXPECT_NE(&children->objectAtIndex(3), &children->objectAtIndex(4));
  const auto backOf = [&](std::size_t i) {
    return static_cast<Host&>(children->objectAtIndex(i)).back.lock();
  };
  EXPECT_EQ(backOf(0), copy);
  EXPECT_EQ(backOf(1).get(), &children->objectAtIndex(1));
}

TEST(KeyedArchiver, RestoresCyclesThroughContainers) {
  const Ref<Host> host = makeHost("x");
  const auto dictionary =
      Dictionary::dictionaryWithEntries({{"before", text("y")}, {"x", host}, {"later", text("y")}});
  const auto list = Array::arrayWithObjects({text("before"), host, text("later")});
  const Ref<Object> containers[] = {list, MutableArray::arrayWithArray(*list), dictionary,
                                    MutableDictionary::dictionaryWithDictionary(*dictionary)};
  for (const Ref<Object>& container : containers) {
    host->back = container;
    const Ref<Object> copy = roundTrip(*container);
    ASSERT_TRUE(copy);
    const auto* array = objectCast<Array>(copy.get());
    const Object& member = array != nullptr ? array->objectAtIndex(1)
                                            : *static_cast<Dictionary&>(*copy).objectForKey("x");
    EXPECT_EQ(static_cast<const Host&>(member).back.lock(), copy);
  }

  // A set is created after its members.
  const Ref<Set> set = Set::setWithObjects({host});
  host->back = set;
  EXPECT_NE(reasonForRefusing(*set), "");
}

struct Plain final : Subclass<Plain> {
  static constexpr std::string_view className = "Plain";
};

TEST(KeyedArchiver, RefusesUnsupportedObjectsWithAReason) {
  const Ref<MutableArray> cycle = MutableArray::array();
  cycle->addObject(Array::arrayWithObjects({cycle}));
  const Ref<Object> plain = makeRef<Plain>();
  EXPECT_FALSE(KeyedArchiver::supportsKeyedCoding(*plain));
  const std::pair<Ref<Object>, std::string_view> cases[] = {
      {Array::arrayWithObjects({plain}), "class Plain has no encodeWithCoder"},
      {cycle, "A cycle of containers"},
      {Value::valueWithBytes("\xFF", {}), "A type signature that is not UTF-8"},
      {Error::errorWithDomain("\xFF", 1), "An error's domain that is not UTF-8"},
      {URL::fileURLWithPath(std::string_view("/a\0b", 4)), "a path with a NUL"},
  };
  for (const auto& [object, reason] : cases) {
    EXPECT_NE(reasonForRefusing(*object).find(reason), std::string::npos)
        << reasonForRefusing(*object);
  }
  cycle->removeAllObjects();
}

/// Changes the container that it is in while it is written.
struct Meddling final : Subclass<Meddling> {
  static constexpr std::string_view className = "Meddling";
  void encodeWithCoder(KeyedArchiver&) const {
    if (const auto act = change) act();
  }
  bool initWithCoder(KeyedUnarchiver&) { return true; }
  std::function<void()> change;
};

TEST(KeyedArchiver, RefusesAContainerThatChangesMeanwhile) {
  Class::registerClass<Meddling>();
  const Ref<MutableArray> array = MutableArray::array();
  const Ref<MutableDictionary> entries = MutableDictionary::dictionary();
  const std::function<void()> changes[] = {
      [&] { array->removeAllObjects(), entries->removeAllObjects(); },
      [&] {
        array->removeObjectAtIndex(0), array->addObject(text("new"));
        entries->removeObjectForKey(*text("b")), entries->setObject(text("new"), "new");
      },
      [&] { array->replaceObjectAtIndex(1, text("new")), entries->setObject(text("new"), "b"); },
  };
  for (const auto& change : changes) {
    for (const char* form : {"element", "key", "value"}) {
      array->removeAllObjects();
      entries->removeAllObjects();
      const auto host = makeRef<Meddling>();
      host->change = change;
      array->addObject(host);
      array->addObject(text("b"));
      const bool isKey = form == std::string_view("key");
      entries->setObject(host, isKey ? Ref<Object>(host) : text("a"));
      entries->setObject(text("x"), "b");
      const Object& archived = form[0] == 'e' ? static_cast<Object&>(*array) : *entries;
      EXPECT_NE(reasonForRefusing(archived).find("was changed"), std::string::npos) << form;
    }
  }
}

/// Throws a number while it is written or read.
struct Thrower final : Subclass<Thrower> {
  static constexpr std::string_view className = "Thrower";
  static inline bool inWriting = false;

  void encodeWithCoder(KeyedArchiver&) const {
    if (inWriting) throw 42;
  }
  bool initWithCoder(KeyedUnarchiver&) { throw 42; }
};

TEST(KeyedArchiver, FailsEvenIfTheHostCatchesTheException) {
  Class::registerClass<Thrower>();
  const Ref<Thrower> thrower = makeRef<Thrower>();
  for (const char* name : {"strict", "forgiving"}) {
    const Ref<Host> host = makeHost(name, Array::arrayWithObjects({makeHost("x", thrower)}));
    Thrower::inWriting = true;
    EXPECT_THROW((void)archive(*host), int);
    Thrower::inWriting = false;
    EXPECT_FALSE(KeyedUnarchiver::unarchiveRootObject(archive(*host)->bytes()));
    host->content = makeRef<Plain>();
    EXPECT_NE(reasonForRefusing(*host), "");
  }
}

TEST(KeyedArchiver, NestsToItsLimit) {
  Ref<Object> arrays = text("x");
  Ref<Object> hosts = text("x");
  for (int depth = 0; depth < KeyedArchiver::kMaximumDepth; ++depth) {
    arrays = Array::arrayWithObjects({arrays});
    hosts = makeHost("", hosts);
  }
  for (const Ref<Object>& object : {arrays, hosts}) {
    EXPECT_TRUE(roundTrip(*object));
    EXPECT_NE(reasonForRefusing(*Array::arrayWithObjects({object})).find("512"), std::string::npos);
  }
}

TEST(KeyedArchiver, RandomGraphsKeepTheirArchive) {
  const auto host = [](double real, std::int64_t, Ref<Object> child) {
    return makeHost(std::to_string(real), std::move(child));
  };
  for (unsigned seed = 0; seed < 2'000 && !HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    roundTrip(*RandomGraphs(seed, host, true).object(6));
  }
}

}  // namespace
