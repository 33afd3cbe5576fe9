#include <TQFoundation/platform/archive/KeyedUnarchiver.h>

#include <plist/plist.h>

#include <regex>

#include <TQFoundation/platform/archive/detail/BinaryPropertyList.h>

#include "platform/archive/Host.h"
#include "support/Bytes.h"
#include "support/Errors.h"

namespace {

/// Returns the parts that are not empty.
std::vector<std::string_view> split(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  while (!text.empty()) {
    const std::string_view part = text.substr(0, text.find(separator));
    if (!part.empty()) parts.push_back(part);
    text.remove_prefix(std::min(part.size() + 1, text.size()));
  }
  return parts;
}

/// Builds archives from texts, one for each entry of $objects from index 1, which is the root:
/// 'x' is a string, #1.5 a number, <abc> data, 3 a UID, [3,4] an array, @Name the record of a
/// class, and {key=3 key=#1} any other record.
class ByHand {
 public:
  using Node = detail::BinaryPropertyListWriter::Node;

  ByHand(std::initializer_list<std::string> objects = {}) {
    Class::registerClass<Host>();
    for (const std::string& object : objects) add(object);
  }
  void add(std::string_view object) { add(node(object)); }
  void add(Node object) { objects_.push_back(object); }

  Node node(std::string_view text) {
    const std::string_view rest = text.substr(1);
    const std::string_view inside = rest.substr(0, rest.size() - !rest.empty());
    const char kind = text.front();
    if (kind == '\'') return list_.string(inside);
    if (kind == '<') return list_.data(bytesOf(inside));
    if (kind == '#' && rest.find('.') != rest.npos)
      return list_.number(std::stod(std::string(rest)));
    if (kind == '#') return list_.number(std::stoll(std::string(rest)));
    if (kind == '@') {
      const std::string name(rest);
      return node("{$classname='" + name + "' $classes=['" + name +
                  "','NSObject'] $classhints=['X']}");
    }
    if (kind == '[') {
      std::vector<Node> elements;
      for (const std::string_view each : split(inside, ',')) elements.push_back(node(each));
      return list_.array(elements);
    }
    if (kind != '{') return list_.uid(std::stoull(std::string(text)));
    std::vector<std::pair<Node, Node>> members;
    for (const std::string_view member : split(inside, ' ')) {
      const std::size_t key = member.find('=');
      members.emplace_back(list_.string(member.substr(0, key)), node(member.substr(key + 1)));
    }
    return list_.dictionary(members);
  }

  /// @param head  the members of the archive besides its objects
  Ref<Object> read(std::string_view head = kHead, std::string_view objectsKey = "$objects") {
    std::vector<std::pair<Node, Node>> members = {
        {list_.string(objectsKey), list_.array(objects_)}};
    for (const std::string_view member : split(head, ' ')) {
      const std::size_t key = member.find('=');
      members.emplace_back(list_.string(member.substr(0, key)), node(member.substr(key + 1)));
    }
    list_.dictionary(members);
    bytes = list_.finish();
    return KeyedUnarchiver::unarchiveRootObject(bytes->bytes());
  }

  static constexpr std::string_view kHead =
      "$version=#100000 $archiver='NSKeyedArchiver' $top={root=1}";
  Ref<Data> bytes;

 private:
  detail::BinaryPropertyListWriter list_;
  std::vector<Node> objects_{list_.string("$null")};
};

/// The archive as the text of XML without white space, after its head.
std::string xmlOf(const Data& archive) {
  plist_t list = nullptr;
  plist_from_bin(archive.view().data(), static_cast<std::uint32_t>(archive.length()), &list);
  char* text = nullptr;
  std::uint32_t length = 0;
  plist_to_xml(list, &text, &length);
  std::string xml(text, length);
  plist_to_xml_free(text);
  plist_free(list);
  std::erase_if(xml, [](char c) { return c == '\n' || c == '\t'; });
  const std::regex uid("<dict><key>CF.UID</key><integer>(\\d+)</integer></dict>");
  return std::regex_replace(xml.substr(xml.find("<dict>")), uid, "<uid>$1</uid>");
}

TEST(KeyedUnarchiver, WritesRecordsForOtherReaders) {
  // Numbered as on the platform: the value, its text, then its class.
  EXPECT_EQ(
      xmlOf(*KeyedArchiver::archivedDataWithRootObject(*Value::valueWithRect({1, 2, 3, 4.5}))),
      "<dict><key>$version</key><integer>100000</integer>"
      "<key>$archiver</key><string>NSKeyedArchiver</string>"
      "<key>$top</key><dict><key>root</key><uid>1</uid></dict>"
      "<key>$objects</key><array><string>$null</string><dict><key>NS.special</key>"
      "<integer>3</integer><key>NS.rectval</key><uid>2</uid><key>$class</key><uid>3</uid>"
      "</dict><string>{{1, 2}, {3, 4.5}}</string>"
      "<dict><key>$classname</key><string>NSValue</string><key>$classes</key><array><string>"
      "NSValue</string><string>NSObject</string></array></dict></array></dict></plist>");
}

TEST(KeyedUnarchiver, ReadsRecordsOfOtherWriters) {
  std::pair<ByHand, Ref<Object>> cases[] = {
      {{"{$class=2 NS.string='é'}", "@NSMutableString"}, String::of("é")},
      {{"{NS.objects=[3,3] $class=2}", "@NSMutableArray", "#1.5"},
       Array::arrayWithNumbers(std::vector<double>{1.5, 1.5})},
      {{"{NS.objects=[3] $class=2}", "@NSMutableSet", "'x'"},
       Set::setWithObjects({String::of("x")})},
      {{"{NS.base=3 NS.relative=5 $class=2}", "@NSURL", "{NS.base=0 NS.relative=4 $class=2}",
        "'file:///a/'", "'b%20c'"},
       URL::fileURLWithPath("/a/b c")},
      {{"{NS.time=#12.5 $class=2}", "@NSDate"}, Date::dateWithTimeIntervalSinceReferenceDate(12.5)},
      {{"{NSDomain=3 NSCode=#7 NSUserInfo=0 $class=2}", "@NSError", "'d'"},
       Error::errorWithDomain("d", 7)},
      {{"{NS.special=#1 NS.pointval=3 $class=2}", "@NSValue", "'{1, 2.5}'"},
       Value::valueWithPoint({1, 2.5})},
  };
  for (auto& [archive, expected] : cases) {
    const Ref<Object> object = archive.read();
    ASSERT_TRUE(object) << expected->description();
    EXPECT_TRUE(object->isEqual(*expected)) << object->description();
  }
}

TEST(KeyedUnarchiver, KeysAreCopiedAndMembersOfSetsAreNot) {
  const auto read = [](const char* record, const char* className) {
    return ByHand({record, className, "{NS.data=<abc> $class=4}", "@NSMutableData"}).read();
  };
  const auto pairs =
      refCast<Dictionary>(read("{NS.keys=[3] NS.objects=[3] $class=2}", "@NSDictionary"));
  ASSERT_TRUE(pairs);
  EXPECT_EQ(&pairs->keys()[0]->classForCoder(), &classOf<Data>);
  EXPECT_EQ(&pairs->values()[0]->classForCoder(), &classOf<MutableData>);
  const auto set = refCast<Set>(read("{NS.objects=[3] $class=2}", "@NSSet"));
  EXPECT_EQ(&set->allObjects()[0]->classForCoder(), &classOf<MutableData>);
}

TEST(KeyedUnarchiver, RefusesInvalidArchives) {
  EXPECT_TRUE(ByHand({"'x'"}).read());
  const std::string head(ByHand::kHead);
  for (const std::string_view member : split(head, ' ')) {
    const std::string key(member.substr(0, member.find('=')));
    for (const std::string& other : {std::string(), key + "=#7", key + "='x'", key + "={x=1}"}) {
      std::string changed = head;
      changed.replace(changed.find(member), member.size(), other);
      EXPECT_FALSE(ByHand({"'x'"}).read(changed)) << changed;
    }
  }
  EXPECT_FALSE(ByHand({"'x'"}).read(head, "other"));
  EXPECT_FALSE(ByHand({"'x'"}).read(head + " $objects='x'", "other"));
  EXPECT_FALSE(KeyedUnarchiver::unarchiveRootObject(bytesOf("{\"_class\":\"X\"}")));
  EXPECT_FALSE(KeyedUnarchiver::unarchiveRootObject(bytesOf("bplist00")));
  detail::BinaryPropertyListWriter text;
  text.string("text");
  EXPECT_FALSE(KeyedUnarchiver::unarchiveRootObject(text.finish()->bytes()));
  // Object 1 is the record, 2 its class, 3 a string, 4 an empty array and 5 its class.
  const test::Rows<const char*, const char*, const char*> cases{
      {"unknown class", "Elsewhere", "{$class=2}"},
      {"no class", "NSNull", "{}"},
      {"class is none", "NSNull", "{$class=0}"},
      {"class out of range", "NSNull", "{$class=6}"},
      {"class is a string", "NSNull", "{$class=3}"},
      {"class is itself", "NSNull", "{$class=1}"},
      {"element none", "NSArray", "{NS.objects=[3,0] $class=2}"},
      {"member twice", "NSSet", "{NS.objects=[3,3] $class=2}"},
      {"container as a member", "NSSet", "{NS.objects=[4] $class=2}"},
      {"keys without values", "NSDictionary", "{NS.keys=[3] NS.objects=[] $class=2}"},
      {"container as a key", "NSMutableDictionary", "{NS.keys=[4] NS.objects=[3] $class=2}"},
      {"short UUID", "NSUUID", "{NS.uuidbytes=<123> $class=2}"},
      {"unknown form", "NSValue", "{NS.special=#9 $class=2}"},
      {"number", "NSNumber", "{$class=2}"},
      {"a UID", "NSNull", "3"},
      {"an array", "NSNull", "[3]"},
  };
  for (const auto& [fault, className, record] : cases) {
    ByHand archive = {record, std::string("@") + className, "'x'", "{NS.objects=[] $class=5}",
                      "@NSArray"};
    EXPECT_FALSE(archive.read()) << fault;
  }
  for (const char* index : {"#-1", "#1.5"}) {
    for (const char* range :
         {"location=3 NS.rangeval.length=4", "location=4 NS.rangeval.length=3"}) {
      const std::string record = std::string("{NS.special=#4 NS.rangeval.") + range + " $class=2}";
      EXPECT_FALSE(ByHand({record, "@NSValue", index, "#1"}).read()) << record;
    }
  }
  // A member refers back to its set, which is created after it.
  EXPECT_FALSE(
      ByHand({"{NS.objects=[3] $class=2}", "@NSSet", "{name=4 back=1 $class=5}", "'n'", "@Host"})
          .read());
}

// In each record, each member is left out or has a value of another kind, or refers to nothing.
TEST(KeyedUnarchiver, RefusesRecordsWithoutTheirMembers) {
  // Object 2 is the class, 3 a string, 4 a number, 5 an empty array, 7 a dictionary and 9 a URL.
  const char* const others[] = {"'{1, 2}'",
                                "#4",
                                "{NS.objects=[] $class=6}",
                                "@NSArray",
                                "{NS.keys=[] NS.objects=[] $class=8}",
                                "@NSDictionary",
                                "{NS.relative=11 $class=10}",
                                "@NSURL",
                                "'file:///'"};
  // The class, its members, and the changes that give an object.
  const Rows<const char*, const char*, std::set<std::string>> records{
      {"NSString", "NS.string=3", {"NS.string='x'"}},
      {"NSData", "NS.data=<x>", {}},
      {"NSMutableData", "NS.data=<x>", {}},
      {"NSArray", "NS.objects=[3]", {}},
      {"NSMutableArray", "NS.objects=[3]", {}},
      {"NSSet", "NS.objects=[3]", {}},
      {"NSDictionary", "NS.keys=[3] NS.objects=[3]", {}},
      {"NSMutableDictionary", "NS.keys=[3] NS.objects=[3]", {}},
      {"NSDate", "NS.time=#1.5", {"NS.time=#-1"}},
      {"NSValue", "NS.special=#1 NS.pointval=3", {}},
      {"NSValue", "NS.special=#2 NS.sizeval=3", {}},
      {"NSValue", "NS.special=#3 NS.rectval=3", {}},
      {"NSValue", "NS.special=#4 NS.rangeval.location=4 NS.rangeval.length=4", {}},
      {"NSValue", "TQ.type=3 TQ.bytes=<x>", {}},
      {"NSError", "NSDomain=3 NSUserInfo=7", {"NSUserInfo", "NSUserInfo=0"}},
      {"NSUUID", "NS.uuidbytes=<0123456789abcdef>", {}},
      {"NSURL", "NS.base=9 NS.relative=3", {"NS.base", "NS.base=0"}},
      {"Host", "name=3 content=3", {"content", "content=0", "content=5"}},
  };
  for (const auto& [name, record, good] : records) {
    const auto isRead = [&, className = name](const std::string& members) {
      ByHand archive = {"{" + members + " $class=2}", std::string("@") + className};
      for (const char* other : others) archive.add(other);
      return archive.read() != nullptr;
    };
    EXPECT_TRUE(isRead(record)) << record;
    for (const std::string_view member : split(record, ' ')) {
      const std::string key(member.substr(0, member.find('=')));
      for (const char* value : {"", "=0", "=1", "=5", "=99", "=#-1", "=<x>", "='x'", "=[0]", "=[1]",
                                "=[99]", "=[#1]", "=[<x>]", "={x=1}"}) {
        const std::string change = key + value;
        if (change == member) continue;
        std::string changed = record;
        changed.replace(changed.find(member), member.size(), *value != '\0' ? change : "");
        EXPECT_EQ(isRead(changed), good.contains(change)) << name << ": " << changed;
      }
    }
  }
}

TEST(KeyedUnarchiver, ListsTheMembersThatNobodyAskedFor) {
  ByHand archive = {"{first=3 name=3 $$mine=3 $class=2 last=3}", "@Host", "'x'"};
  ASSERT_TRUE(archive.read());
  UnreadContent unread;
  ASSERT_TRUE(
      KeyedUnarchiver::unarchiveRootObject(archive.bytes->bytes(), nullptr, {}, nullptr, &unread));
  std::set<std::string> members;
  for (const UnreadContent::Entry& entry : unread.entries()) members.insert(entry.member);
  EXPECT_EQ(members, (std::set<std::string>{"first", "$mine", "last"}));
}

// Whatever a damaged archive is read as is an object like any other.
TEST(KeyedUnarchiver, DamageIsRefusedOrGivesAnObject) {
  const Ref<Host> host = makeHost(
      "x",
      Array::arrayWithObjects(
          {Dictionary::dictionaryWithEntries({{"k", Number::numberWith(1)}}), String::of("é"),
           Set::setWithObjects({Value::valueWithPoint({1, 2})}), Data::dataWithBytes("d"),
           Null::null(),
           MutableArray::arrayWithArray(*Array::arrayWithNumbers(std::vector<double>{1.5, 2}))}));
  host->back = host->content;
  const Ref<Data> archive = KeyedArchiver::archivedDataWithRootObject(*host);
  std::string bytes(archive->view());
  std::size_t readCount = 0;
  for (std::size_t bit = 0; bit < 8 * bytes.size(); bit += 7) {
    const auto mask = static_cast<char>(1 << bit % 8);
    bytes[bit / 8] ^= mask;
    UnreadContent unread;
    const Ref<Object> read =
        KeyedUnarchiver::unarchiveRootObject(bytesOf(bytes), nullptr, {}, nullptr, &unread);
    EXPECT_EQ(read == nullptr, KeyedUnarchiver::unarchiveRootObject(bytesOf(bytes)) == nullptr);
    EXPECT_TRUE(!read || !read->description().empty());
    readCount += read ? 1 : 0;
    bytes[bit / 8] ^= mask;
  }
  EXPECT_GT(readCount, bytes.size() / 20);
  EXPECT_LT(readCount, bytes.size() / 2);
}

/// Arrays that each refer `times` times to the next one. The innermost one refers to the string
/// "leaf". Object 2 is the class, so the first array refers to 3, and so on.
ByHand nestedArrays(int depth, int times) {
  ByHand archive;
  for (int i = 1; i <= depth; ++i) {
    const std::string next = std::to_string(i == 1 ? 3 : i + 2) + ",";
    archive.add("{NS.objects=[" + repeated(next, times) + "] $class=2}");
    if (i == 1) archive.add("@NSArray");
  }
  archive.add("'leaf'");
  return archive;
}

TEST(KeyedUnarchiver, RefusesWhatExceedsALimitWithAnError) {
  // Hosts and arrays in turns; each array contains the next host twice. 2 is a name, 3 and 4
  // classes.
  ByHand hosts = {"{name=2 content=5 $class=3}", "'n'", "@Host", "@NSArray"};
  for (int i = 5; i < 65; i += 2) {
    const std::string next = std::to_string(i + 1);
    hosts.add("{NS.objects=[" + next + "," + next + "] $class=4}");
    hosts.add("{name=2 content=" + std::to_string(i + 2) + " $class=3}");
  }
  hosts.add("'leaf'");
  ByHand longText = {"{NS.objects=[" + repeated("3,", 1000) + "] $class=2}", "@NSArray",
                     "'" + std::string(1000, 'x') + "'"};
  const Rows<const char*, ByHand, ReadingLimits, std::optional<ReadingLimit>> cases{
      {"depth", nestedArrays(512, 1), {}, {}},
      {"too deep", nestedArrays(513, 1), {}, ReadingLimit::depth},
      {"too deep for the host", nestedArrays(4, 1), {.depth = 3}, ReadingLimit::depth},
      {"2^10 uses", nestedArrays(10, 2), {}, {}},
      {"no value",
       ByHand({"{NS.objects=[3,3] $class=2}", "@NSArray", "#1"}),
       {.unfoldedPerByte = 0},
       ReadingLimit::unfoldedPerByte},
      {"2^30 uses", nestedArrays(30, 2), {}, ReadingLimit::unfoldedPerByte},
      {"2^512 uses", nestedArrays(512, 2), {}, ReadingLimit::unfoldedPerByte},
      {"2^30 uses by hosts", hosts, {}, ReadingLimit::unfoldedPerByte},
      {"2^54 uses allowed", nestedArrays(52, 2), {.unfoldedPerByte = ~std::uint64_t{0}}, {}},
      {"2^55 uses, which cannot be counted",
       nestedArrays(53, 2),
       {.unfoldedPerByte = ~std::uint64_t{0}},
       ReadingLimit::unfoldedPerByte},
      {"2^10 refused", nestedArrays(10, 2), {.unfoldedPerByte = 8}, ReadingLimit::unfoldedPerByte},
      {"a million characters", longText, {}, {}},
      {"refused", longText, {.unfoldedPerByte = 100}, ReadingLimit::unfoldedPerByte},
      {"values", nestedArrays(10, 1), {.values = 13}, {}},
      {"too many values", nestedArrays(10, 1), {.values = 12}, ReadingLimit::values},
      {"no archive", ByHand({"[3]"}), {}, {}},
  };
  for (auto [name, archive, limits, exceeded] : cases) {
    SCOPED_TRACE(name);
    (void)archive.read();
    Ref<Error> error = Error::errorWithDomain("old", 1);
    const auto object =
        KeyedUnarchiver::unarchiveRootObject(archive.bytes->bytes(), &error, limits);
    EXPECT_EQ(object == nullptr, exceeded.has_value() || name == std::string("no archive"));
    EXPECT_EQ(error != nullptr, exceeded.has_value());
    if (exceeded) expectLimit(error, *exceeded);
  }
}

/// Reads a thousand objects that share one record in the file. Object 3 is their class, 4 is
/// `text`, 5 a URL with that text, and 7 a short text.
Ref<Object> readThousandOf(const std::string& record, const std::string& className,
                           const std::string& text) {
  std::string references;
  for (int i = 8; i < 1008; ++i) references += std::to_string(i) + ",";
  ByHand archive = {"{NS.objects=[" + references + "] $class=2}", "@NSArray", "@" + className};
  for (const auto& each : {"'" + text + "'", std::string("{NS.base=0 NS.relative=4 $class=6}")}) {
    archive.add(each);
  }
  archive.add("@NSURL");
  archive.add("'y'");
  const auto shared = archive.node(record);
  for (int i = 0; i < 1000; ++i) archive.add(shared);
  return archive.read();
}

TEST(KeyedUnarchiver, PaysForSharedRecordsEachTime) {
  const std::string large = "file:///" + std::string(100'000, 'x');
  const test::Rows<const char*, std::string> cases{
      {"NSMutableData", "{NS.data=<" + large + "> $class=3}"},
      {"NSError", "{NSDomain=4 NSCode=#1 $class=3}"},
      {"NSValue", "{TQ.type=4 TQ.bytes=<ab> $class=3}"},
      {"NSValue", "{NS.special=#1 NS.pointval=4 $class=3}"},
      {"NSURL", "{NS.base=5 NS.relative=7 $class=3}"},
      {"NSDictionary", "{NS.keys=[4] NS.objects=[4] $class=3}"},
  };
  for (const auto& [className, record] : cases) {
    EXPECT_FALSE(readThousandOf(record, className, large)) << record.substr(0, 50);
  }
  // Keys of the length that paths usually have.
  EXPECT_TRUE(readThousandOf("{NS.keys=[4] NS.objects=[4] $class=3}", "NSDictionary",
                             std::string(500, 'x')));
}

}  // namespace
