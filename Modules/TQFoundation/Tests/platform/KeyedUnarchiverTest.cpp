#include <TQFoundation/platform/KeyedUnarchiver.h>

#include <gtest/gtest.h>
#include <plist/plist.h>

#include <cstdlib>
#include <functional>

#include <TQFoundation/objects/Date.h>
#include <TQFoundation/objects/Dictionary.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/Null.h>
#include <TQFoundation/objects/Set.h>
#include <TQFoundation/objects/Value.h>
#include <TQFoundation/platform/URL.h>
#include <TQFoundation/platform/detail/BinaryPropertyList.h>

#include "platform/Host.h"

namespace tq {
namespace {

using test::Host;
using test::makeHost;

std::span<const std::byte> bytesOf(std::string_view text) { return std::as_bytes(std::span(text)); }

Ref<Object> unarchive(std::string_view bytes) {
  return KeyedUnarchiver::unarchiveRootObject(bytesOf(bytes));
}

/// Archives written by hand: $objects from index 1 on, the root being 1.
class ByHand {
 public:
  using Node = detail::BinaryPropertyListWriter::Node;
  detail::BinaryPropertyListWriter list;

  void add(Node object) { objects_.push_back(object); }
  Node uid(std::uint64_t value) { return list.uid(value); }
  Node uids(std::initializer_list<std::uint64_t> values) {
    std::vector<Node> nodes;
    for (const std::uint64_t value : values) nodes.push_back(uid(value));
    return list.array(nodes);
  }
  Node record(std::initializer_list<std::pair<std::string_view, Node>> members) {
    std::vector<std::pair<Node, Node>> nodes;
    for (const auto& [key, value] : members) nodes.emplace_back(list.string(key), value);
    return list.dictionary(nodes);
  }
  Node classRecord(std::string_view name) { return record({{"$classname", list.string(name)}}); }

  Ref<Object> read(std::string_view archiver = "NSKeyedArchiver", std::int64_t version = 100000) {
    const Node objects = list.array(objects_);
    record({{"$version", list.number(version)},
            {"$archiver", list.string(archiver)},
            {"$top", record({{"root", uid(1)}})},
            {"$objects", objects}});
    bytes = list.finish();
    return KeyedUnarchiver::unarchiveRootObject(bytes->bytes());
  }

  Ref<Data> bytes;

 private:
  std::vector<Node> objects_{list.string("$null")};
};

std::string xmlOf(const Data& archive) {
  plist_t list = nullptr;
  plist_from_bin(reinterpret_cast<const char*>(archive.bytes().data()),
                 static_cast<std::uint32_t>(archive.length()), &list);
  char* text = nullptr;
  std::uint32_t length = 0;
  plist_to_xml(list, &text, &length);
  std::string xml(text, length);
  plist_to_xml_free(text);
  plist_free(list);
  std::erase_if(xml, [](char c) { return c == '\n' || c == '\t'; });
  return xml.substr(xml.find("<dict>"));
}

/// XML has no UIDs: a dictionary of one key stands for each.
plist_t withUIDs(plist_t node) {
  if (plist_get_node_type(node) == PLIST_ARRAY) {
    plist_t array = plist_new_array();
    for (std::uint32_t i = 0; i < plist_array_get_size(node); ++i) {
      plist_array_append_item(array, withUIDs(plist_array_get_item(node, i)));
    }
    return array;
  }
  if (plist_get_node_type(node) != PLIST_DICT) return plist_copy(node);
  if (plist_t uid = plist_dict_get_item(node, "CF$UID")) {
    std::uint64_t value = 0;
    plist_get_uint_val(uid, &value);
    return plist_new_uid(value);
  }
  plist_t dictionary = plist_new_dict();
  plist_dict_iter iterator = nullptr;
  plist_dict_new_iter(node, &iterator);
  char* key = nullptr;
  plist_t value = nullptr;
  for (plist_dict_next_item(node, iterator, &key, &value); value != nullptr;
       plist_dict_next_item(node, iterator, &key, &value)) {
    plist_dict_set_item(dictionary, key, withUIDs(value));
    std::free(key);
  }
  std::free(iterator);
  return dictionary;
}

Ref<Object> fromXML(std::string_view members) {
  const std::string xml =
      "<plist version=\"1.0\"><dict><key>$version</key><integer>100000</integer>"
      "<key>$archiver</key><string>NSKeyedArchiver</string><key>$top</key><dict>"
      "<key>root</key><dict><key>CF$UID</key><integer>1</integer></dict></dict>"
      "<key>$objects</key><array><string>$null</string>" +
      std::string(members) + "</array></dict></plist>";
  plist_t list = nullptr;
  plist_from_xml(xml.data(), static_cast<std::uint32_t>(xml.size()), &list);
  char* bytes = nullptr;
  std::uint32_t length = 0;
  plist_t archive = withUIDs(list);
  plist_to_bin(archive, &bytes, &length);
  plist_free(archive);
  const Ref<Object> object = unarchive({bytes, length});
  plist_to_bin_free(bytes);
  plist_free(list);
  return object;
}

std::string uidXML(int uid) {
  return "<dict><key>CF$UID</key><integer>" + std::to_string(uid) + "</integer></dict>";
}

TEST(KeyedUnarchiver, WritesTheRecordsThatAnotherReaderExpects) {
  // The platform's own numbering: the value, its text, then its class.
  EXPECT_EQ(
      xmlOf(*KeyedArchiver::archivedDataWithRootObject(*Value::valueWithRect({1, 2, 3, 4.5}))),
      "<dict><key>$version</key><integer>100000</integer>"
      "<key>$archiver</key><string>NSKeyedArchiver</string>"
      "<key>$top</key><dict><key>root</key>" +
          uidXML(1) +
          "</dict>"
          "<key>$objects</key><array><string>$null</string>"
          "<dict><key>NS.special</key><integer>3</integer><key>NS.rectval</key>" +
          uidXML(2) + "<key>$class</key>" + uidXML(3) +
          "</dict><string>{{1, 2}, {3, 4.5}}</string>"
          "<dict><key>$classname</key><string>NSValue</string><key>$classes</key><array>"
          "<string>NSValue</string><string>NSObject</string></array></dict></array></dict></"
          "plist>");
}

TEST(KeyedUnarchiver, ReadsArchivesWrittenElsewhere) {
  const auto classXML = [](std::string_view name) {
    return "<dict><key>$classname</key><string>" + std::string(name) +
           "</string><key>$classes</key><array><string>" + std::string(name) +
           "</string><string>NSObject</string></array>"
           "<key>$classhints</key><array><string>X</string></array></dict>";
  };
  const std::pair<std::string, Ref<Object>> cases[] = {
      {"<dict><key>$class</key>" + uidXML(2) + "<key>NS.string</key><string>é</string></dict>" +
           classXML("NSMutableString"),
       String::of("é")},
      {"<dict><key>NS.objects</key><array>" + uidXML(3) + uidXML(3) + "</array><key>$class</key>" +
           uidXML(2) + "</dict>" + classXML("NSMutableArray") + "<real>1.5</real>",
       Array::arrayWithNumbers(std::vector<double>{1.5, 1.5})},
      {"<dict><key>NS.objects</key><array>" + uidXML(3) + "</array><key>$class</key>" + uidXML(2) +
           "</dict>" + classXML("NSMutableSet") + "<string>x</string>",
       Set::setWithObjects({String::of("x")})},
      {"<dict><key>NS.base</key>" + uidXML(3) + "<key>NS.relative</key>" + uidXML(5) +
           "<key>$class</key>" + uidXML(2) + "</dict>" + classXML("NSURL") +
           "<dict><key>NS.base</key>" + uidXML(0) + "<key>NS.relative</key>" + uidXML(4) +
           "<key>$class</key>" + uidXML(2) +
           "</dict><string>file:///a/</string>"
           "<string>b%20c</string>",
       URL::fileURLWithPath("/a/b c")},
      {"<dict><key>NS.time</key><real>12.5</real><key>$class</key>" + uidXML(2) + "</dict>" +
           classXML("NSDate"),
       Date::dateWithTimeIntervalSinceReferenceDate(12.5)},
      {"<dict><key>NSDomain</key>" + uidXML(3) +
           "<key>NSCode</key><integer>7</integer>"
           "<key>NSUserInfo</key>" +
           uidXML(0) + "<key>$class</key>" + uidXML(2) + "</dict>" + classXML("NSError") +
           "<string>d</string>",
       Error::errorWithDomain("d", 7)},
      {"<dict><key>NS.special</key><integer>1</integer><key>NS.pointval</key>" + uidXML(3) +
           "<key>$class</key>" + uidXML(2) + "</dict>" + classXML("NSValue") +
           "<string>{1, 2.5}</string>",
       Value::valueWithPoint({1, 2.5})},
  };
  for (const auto& [members, expected] : cases) {
    const Ref<Object> object = fromXML(members);
    ASSERT_TRUE(object) << members;
    EXPECT_TRUE(object->isEqual(*expected)) << object->description();
  }
}

TEST(KeyedUnarchiver, TellsArchivesByTheirHeader) {
  const auto read = [](std::string_view archiver, std::int64_t version) {
    ByHand archive;
    archive.add(archive.list.string("x"));
    return archive.read(archiver, version);
  };
  EXPECT_TRUE(read("NSKeyedArchiver", 100000));
  EXPECT_FALSE(read("NSArchiver", 100000));
  EXPECT_FALSE(read("NSKeyedArchiver", 100001));
  EXPECT_FALSE(unarchive(""));
  EXPECT_FALSE(unarchive("{\"_class\":\"X\"}"));
}

TEST(KeyedUnarchiver, RefusesRecordsThatMakeNoSense) {
  Class::registerClass<Host>();
  using Node = ByHand::Node;
  // Object 1 is the record, 2 its class, 3 a string, 4 an empty array, 5 a host of itself.
  const struct {
    const char* name;
    std::string_view className;
    std::function<Node(ByHand&)> record;
  } cases[] = {
      {"unknown class", "Elsewhere",
       [](ByHand& a) {
         return a.record({{"$class", a.uid(2)}});
       }},
      {"no class", "NSNull", [](ByHand& a) { return a.record({}); }},
      {"class is none", "NSNull",
       [](ByHand& a) {
         return a.record({{"$class", a.uid(0)}});
       }},
      {"class out of range", "NSNull",
       [](ByHand& a) {
         return a.record({{"$class", a.uid(9)}});
       }},
      {"class is a string", "NSNull",
       [](ByHand& a) {
         return a.record({{"$class", a.uid(3)}});
       }},
      {"class is itself", "NSNull",
       [](ByHand& a) {
         return a.record({{"$class", a.uid(1)}});
       }},
      {"no elements", "NSArray",
       [](ByHand& a) {
         return a.record({{"$class", a.uid(2)}});
       }},
      {"itself", "NSArray",
       [](ByHand& a) {
         return a.record({{"NS.objects", a.uids({1})}, {"$class", a.uid(2)}});
       }},
      {"itself, set", "NSSet",
       [](ByHand& a) {
         return a.record({{"NS.objects", a.uids({1})}, {"$class", a.uid(2)}});
       }},
      {"element none", "NSArray",
       [](ByHand& a) {
         return a.record({{"NS.objects", a.uids({3, 0})}, {"$class", a.uid(2)}});
       }},
      {"element out of range", "NSMutableArray",
       [](ByHand& a) {
         return a.record({{"NS.objects", a.uids({77})}, {"$class", a.uid(2)}});
       }},
      {"member twice", "NSSet",
       [](ByHand& a) {
         return a.record({{"NS.objects", a.uids({3, 3})}, {"$class", a.uid(2)}});
       }},
      {"container as a member", "NSSet",
       [](ByHand& a) {
         return a.record({{"NS.objects", a.uids({4})}, {"$class", a.uid(2)}});
       }},
      {"keys without values", "NSDictionary",
       [](ByHand& a) {
         return a.record(
             {{"NS.keys", a.uids({3})}, {"NS.objects", a.uids({})}, {"$class", a.uid(2)}});
       }},
      {"value is itself", "NSDictionary",
       [](ByHand& a) {
         return a.record(
             {{"NS.keys", a.uids({3})}, {"NS.objects", a.uids({1})}, {"$class", a.uid(2)}});
       }},
      {"container as a key", "NSMutableDictionary",
       [](ByHand& a) {
         return a.record(
             {{"NS.keys", a.uids({4})}, {"NS.objects", a.uids({3})}, {"$class", a.uid(2)}});
       }},
      {"short UUID", "NSUUID",
       [](ByHand& a) {
         return a.record({{"NS.uuidbytes", a.list.data(bytesOf("123"))}, {"$class", a.uid(2)}});
       }},
      {"unknown form", "NSValue",
       [](ByHand& a) {
         return a.record({{"NS.special", a.list.number(9)}, {"$class", a.uid(2)}});
       }},
      {"host without its name", "Host",
       [](ByHand& a) {
         return a.record({{"$class", a.uid(2)}});
       }},
      {"host that would hold itself", "Host",
       [](ByHand& a) {
         return a.record({{"name", a.uid(3)}, {"content", a.uid(1)}, {"$class", a.uid(2)}});
       }},
      {"number", "NSNumber",
       [](ByHand& a) {
         return a.record({{"$class", a.uid(2)}});
       }},
      {"a UID", "NSNull", [](ByHand& a) { return a.uid(3); }},
      {"an array", "NSNull", [](ByHand& a) { return a.uids({3}); }},
  };
  for (const auto& c : cases) {
    ByHand archive;
    archive.add(c.record(archive));
    archive.add(archive.classRecord(c.className));
    archive.add(archive.list.string("x"));
    archive.add(archive.record({{"NS.objects", archive.uids({})}, {"$class", archive.uid(5)}}));
    archive.add(archive.classRecord("NSArray"));
    EXPECT_FALSE(archive.read()) << c.name;
  }
}

TEST(KeyedUnarchiver, NestsToItsLimit) {
  for (const int depth : {512, 513}) {
    ByHand archive;
    for (std::uint64_t i = 1; i <= static_cast<std::uint64_t>(depth); ++i) {
      archive.add(
          archive.record({{"NS.objects", archive.uids({i + 2})}, {"$class", archive.uid(2)}}));
      if (i == 1) archive.add(archive.classRecord("NSArray"));
    }
    archive.add(archive.list.string("x"));
    // Object 2 is the class, so the first array leads to 3, and so on.
    EXPECT_EQ(static_cast<bool>(archive.read()), depth == 512) << depth;
  }
}

TEST(KeyedUnarchiver, SharedPartsOfAFileMakeNoBombs) {
  const std::string large(100'000, 'x');
  ByHand data;
  const auto shared =
      data.record({{"NS.data", data.list.data(bytesOf(large))}, {"$class", data.uid(2)}});
  std::vector<ByHand::Node> references;
  for (std::uint64_t i = 3; i < 1000; ++i) references.push_back(data.uid(i));
  data.add(data.record({{"NS.objects", data.list.array(references)}, {"$class", data.uid(3)}}));
  data.add(data.classRecord("NSMutableData"));
  data.add(data.classRecord("NSArray"));
  for (int i = 4; i < 1000; ++i) data.add(shared);
  EXPECT_FALSE(data.read());
  EXPECT_LT(data.bytes->length(), 120'000u);

  // 2^60 leaves, each array twice in the one above it: shared in memory as in the file.
  ByHand doubling;
  for (std::uint64_t i = 1; i <= 60; ++i) {
    const std::uint64_t next = i == 1 ? 3 : i + 2;
    doubling.add(doubling.record(
        {{"NS.objects", doubling.uids({next, next})}, {"$class", doubling.uid(2)}}));
    if (i == 1) doubling.add(doubling.classRecord("NSArray"));
  }
  doubling.add(doubling.list.string("x"));
  EXPECT_TRUE(doubling.read());
}

std::vector<std::string> sampleArchives() {
  Class::registerClass<Host>();
  const Ref<Host> child = makeHost("child");
  const Ref<Host> parent = makeHost("parent é", Array::arrayWithObjects({child, Null::null()}));
  child->back = parent;
  const Ref<Object> samples[] = {
      parent,
      Array::arrayWithObjects({String::of("a"), Number::numberWith(1), Number::numberWith(0.5f),
                               Value::valueWithRect({1, 2, 3, 4}), Value::valueWithRange({1, 2})}),
      Dictionary::dictionaryWithEntries({{"set", Set::setWithObjects({String::of("m")})},
                                         {"error", Error::errorWithDomain("d", 1, "x")},
                                         {"url", URL::fileURLWithPath("/a")}}),
  };
  std::vector<std::string> archives;
  for (const Ref<Object>& sample : samples) {
    archives.emplace_back(KeyedArchiver::archivedDataWithRootObject(*sample)->view());
  }
  return archives;
}

/// Whatever comes out can be looked at.
void use(const Ref<Object>& object) {
  if (!object) return;
  EXPECT_FALSE(object->description().empty() && object->kind() != ObjectKind::string);
  EXPECT_TRUE(object->isEqual(*object));
  (void)object->hash();
}

TEST(KeyedUnarchiver, SurvivesTruncationAtEveryLength) {
  for (const std::string& archive : sampleArchives()) {
    for (std::size_t length = 0; length < archive.size(); ++length) {
      EXPECT_FALSE(unarchive(std::string(archive, 0, length))) << length;
    }
  }
}

TEST(KeyedUnarchiver, SurvivesEveryChangeOfOneByte) {
  for (std::string archive : sampleArchives()) {
    ASSERT_TRUE(unarchive(archive));
    for (char& byte : archive) {
      const char before = byte;
      for (const int change : {1, 2, 4, 8, 16, 32, 64, 128, 255}) {
        byte = static_cast<char>(before ^ change);
        use(unarchive(archive));
      }
      byte = before;
    }
  }
}

}  // namespace
}  // namespace tq
