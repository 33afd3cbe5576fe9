#include <TQFoundation/objects/Class.h>

#include <gtest/gtest.h>

#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/Value.h>

// Fakes: the real classes belong to higher rooms.
namespace tq {

struct Bare : Subclass<Bare> {
  static constexpr std::string_view className = "Bare";
};

struct Constructed final : Subclass<Constructed> {
  static constexpr std::string_view className = "Constructed";
  explicit Constructed(TQJSONDecoder&) {}
};

struct Made final : Subclass<Made> {
  static constexpr std::string_view className = "Made";
  static Ref<Made> initWithJSONDecoder(TQJSONDecoder&) { return nullptr; }
};

struct Structured : Subclass<Structured> {
  static constexpr std::string_view className = "Structured";
  static constexpr std::string_view codingName = "S";
  explicit Structured(TQJSONDecoder&) {}
  void encodeAsJSON(TQJSONEncoder&) const { ++encoded; }
  void encodeAsKey(TQJSONEncoder&) const {}
  Ref<Object> replacementObjectForJSONEncoder(TQJSONEncoder&) const { return nullptr; }
  static inline int encoded = 0;

 protected:
  Structured() = default;
};

/// Inherits encoding, but not construction.
struct Derived final : Subclass<Derived, Structured> {
  static constexpr std::string_view className = "Derived";
  void startEncodingObject(TQJSONEncoder&) const {}
};

/// These take the names of another class and of a library class.
struct Usurper final : Subclass<Usurper> {
  static constexpr std::string_view className = "S";
};
struct Impostor final : Subclass<Impostor> {
  static constexpr std::string_view className = "NSArray";
};

struct Posing final : Subclass<Posing> {
  static constexpr std::string_view className = "Posing";
  using CodingClass = Bare;
};

struct Keyed : Subclass<Keyed> {
  static constexpr std::string_view className = "Keyed";
  void encodeWithCoder(KeyedArchiver&) const {}
  bool initWithCoder(KeyedUnarchiver&) { return true; }
};

struct WriteOnly final : Subclass<WriteOnly> {
  static constexpr std::string_view className = "WriteOnly";
  void encodeWithCoder(KeyedArchiver&) const {}
};

struct NotEmpty final : Subclass<NotEmpty, Keyed> {
  static constexpr std::string_view className = "NotEmpty";
  explicit NotEmpty(int) {}
};

namespace {

/// Returns a letter for each JSON function that the class has.
std::string jsonParts(const Class& record) {
  const JSONCoding& json = record.json();
  std::string parts;
  if (json.initWithJSONDecoder != nullptr) parts += 'i';
  if (json.replacementObject != nullptr) parts += 'r';
  if (json.encodeAsJSON != nullptr) parts += 'e';
  if (json.startEncodingObject != nullptr) parts += 's';
  if (json.finishEncodingObject != nullptr) parts += 'f';
  if (json.encodeClassInfo != nullptr) parts += 'c';
  if (json.encodeAsRAWArchive != nullptr) parts += 'a';
  if (json.encodeAsKey != nullptr) parts += 'k';
  return parts;
}

TEST(Class, KnowsAtCompileTimeWhatATypeCanDo) {
  const struct {
    const Class& record;
    std::string_view name, codingName, json;
    bool keyed;
  } cases[] = {
      {classOf<Bare>, "Bare", "Bare", "", false},
      {classOf<Constructed>, "Constructed", "Constructed", "i", false},
      {classOf<Made>, "Made", "Made", "i", false},
      {classOf<Structured>, "Structured", "S", "irek", false},
      {classOf<Derived>, "Derived", "Derived", "resk", false},
      {classOf<Keyed>, "Keyed", "Keyed", "", true},
      {classOf<WriteOnly>, "WriteOnly", "WriteOnly", "", false},
      {classOf<NotEmpty>, "NotEmpty", "NotEmpty", "", false},
      {classOf<MutableArray>, "MutableArray", "NSMutableArray", "", false},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.record.name(), c.name);
    EXPECT_EQ(c.record.codingName(), c.codingName);
    EXPECT_EQ(jsonParts(c.record), c.json) << c.name;
    EXPECT_EQ(c.record.supportsKeyedCoding(), c.keyed) << c.name;
  }
  EXPECT_TRUE(classOf<Derived>.isSubclassOf(classOf<Structured>));
  EXPECT_TRUE(classOf<Derived>.isSubclassOf(classOf<Object>));
  EXPECT_FALSE(classOf<Structured>.isSubclassOf(classOf<Derived>));
  EXPECT_EQ(classOf<Object>.parent(), nullptr);
}

TEST(Class, HasOneRecordInLibraryAndProgram) {
  // The library created the array; this program names its class.
  EXPECT_EQ(&Array::array()->objectClass(), &classOf<Array>);
  EXPECT_EQ(&Value::valueWithPoint({})->classForCoder(), &classOf<Value>);
  EXPECT_EQ(&makeRef<Posing>()->classForCoder(), &classOf<Bare>);
  EXPECT_EQ(&makeRef<Derived>()->classForCoder(), &classOf<Derived>);
}

TEST(Class, IsFoundByItsCodingNameAfterRegistration) {
  EXPECT_EQ(Class::classNamed("S"), nullptr);
  Class::registerClass<Structured>();
  EXPECT_EQ(Class::classNamed("S"), &classOf<Structured>);
  EXPECT_EQ(Class::classNamed("Structured"), nullptr);
  EXPECT_EQ(Class::classNamed("s"), nullptr);
  Class::registerClass<Structured>();
  EXPECT_DEATH(Class::registerClass<Usurper>(), "another class is registered");
  EXPECT_DEATH(Class::registerClass<Impostor>(), "another class is registered");
  Class::unregisterClass<Usurper>();  // has no effect: the name is another class's
  EXPECT_EQ(Class::classNamed("S"), &classOf<Structured>);
  Class::unregisterClass<Structured>();
  EXPECT_EQ(Class::classNamed("S"), nullptr);
  Class::registerClass<Usurper>();
  EXPECT_EQ(Class::classNamed("S"), &classOf<Usurper>);
}

TEST(Class, DescribesObjectsByNameAndAddress) {
  const Ref<Bare> bare = makeRef<Bare>();
  char expected[64];
  std::snprintf(expected, sizeof expected, "<Bare: %p>", static_cast<void*>(bare.get()));
  EXPECT_EQ(bare->description(), expected);
}

}  // namespace
}  // namespace tq
