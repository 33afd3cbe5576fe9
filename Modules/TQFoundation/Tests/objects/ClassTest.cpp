#include <TQFoundation/objects/Class.h>

#include "support/Objects.h"

// Fakes: the real classes belong to higher rooms.
namespace {

struct Bare : Subclass<Bare> {
  static constexpr std::string_view className = "Bare";
};

struct Structured : Subclass<Structured> {
  static constexpr std::string_view className = "Structured";
  static constexpr std::string_view codingName = "S";
};

struct Derived final : Subclass<Derived, Structured> {
  static constexpr std::string_view className = "Derived";
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

// Which members JSON archives know is seen in what they write and read.
TEST(Class, KnowsItsNamesAncestorsAndKeyedCoding) {
  const test::Rows<const Class*, std::string_view, std::string_view, bool> cases{
      {&classOf<Bare>, "Bare", "Bare", false},
      {&classOf<Structured>, "Structured", "S", false},
      {&classOf<Derived>, "Derived", "Derived", false},
      {&classOf<Keyed>, "Keyed", "Keyed", true},
      {&classOf<WriteOnly>, "WriteOnly", "WriteOnly", false},
      {&classOf<NotEmpty>, "NotEmpty", "NotEmpty", false},
      {&classOf<MutableArray>, "MutableArray", "NSMutableArray", false},
  };
  for (const auto& [record, name, codingName, isKeyed] : cases) {
    EXPECT_EQ(record->name(), name);
    EXPECT_EQ(record->codingName(), codingName);
    EXPECT_EQ(record->supportsKeyedCoding(), isKeyed) << name;
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
  EXPECT_DEATH(Class::unregisterClass<Array>(), "isLibraryClass");
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
