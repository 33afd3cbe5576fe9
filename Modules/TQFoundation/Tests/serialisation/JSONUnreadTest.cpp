#include "serialisation/JSONModel.h"

namespace {

/// Kept in keyed archives. Reads one of its three members.
struct Half final : Subclass<Half> {
  static constexpr std::string_view className = "Half";
  void encodeWithCoder(KeyedArchiver& archiver) const {
    archiver.encodeInteger(1, "known");
    archiver.encodeInteger(2, "new");
    archiver.encodeObject(num(3).get(), "$new");
  }
  bool initWithCoder(KeyedUnarchiver& unarchiver) {
    return unarchiver.decodeIntegerForKey("known") == 1;
  }
};

/// Returns one word for each entry.
std::string listed(const UnreadContent& unread) {
  std::string text;
  for (const auto& [kind, className, member, path, count] : unread.entries()) {
    constexpr std::string_view kNames[] = {"member", "unknown", "banned", "refused", "bytes"};
    text += text.empty() ? "" : " ";
    text.append(kNames[static_cast<int>(kind)]).append(":" + className + "." + member);
    text += "@" + path + "*" + std::to_string(count);
  }
  return text;
}

Ref<TQJSONDecoder> listing(Ref<TQJSONDecoder> decoder) {
  decoder->setListsUnreadContent(true);
  static_cast<void>(decoder->decode());
  return decoder;
}

class JSONUnread : public testing::Test {
 protected:
  void SetUp() override {
    Class::registerClass<Record>();
    Class::registerClass<Choosy>();
    Class::registerClass<Scripted>();
    Class::registerClass<Half>();
    TQJSONDecoder::setClass(nullptr, "Banned");
    TQJSONDecoder::setClass(&classOf<Choosy>, "Alias");
    Scripted::onDecode() = [](TQJSONDecoder& decoder) {
      static_cast<void>(decoder.containsValueForKey("asked"));
      static_cast<void>(decoder.decodeObjectForKey("child"));
      static_cast<void>(decoder.containsValueForKey("absent"));
      if (decoder.containsValueForKey("takesAll")) static_cast<void>(decoder.decodeMembers());
      if (decoder.containsValueForKey("takesDict")) static_cast<void>(decoder.currentObjectDict());
      static_cast<void>(decoder.decodePointForKey("at"));
    };
  }
  void TearDown() override { Scripted::onDecode() = nullptr; }
};

TEST_F(JSONUnread, IsListedByNameWithThePathOfTheFirst) {
  const std::pair<std::string_view, std::string_view> cases[] = {
      {R"({"_class":"Record","point":"","number":1,"child":{"a":[{"b":null}]}})", ""},
      {R"([{"_class":"Record","size":"","new":[{}]},{"a~/b":{"_class":"Record","new":1}}])",
       "member:Record.size@/0/size*1 member:Record.new@/0/new*2"},
      {R"({"a~/b":[7,[],{"_class":"Record","new":1}]})", "member:Record.new@/a~0~1b/2/new*1"},
      {R"([{"_class":"Nope","x":{"_class":"Record","new":1}},{"x":{"_class":"Nope"}},{"_class":5}])",
       "unknown:Nope.@/0*2 unknown:.@/2*1"},
      {R"([{"_class":"Banned"},{"_class":"Choosy","x":1},{"_class":"Alias"}])",
       "banned:Banned.@/0*1 refused:Choosy.@/1*1 refused:Alias.@/2*1"},
      {R"([{"_data":5},{"_data":"AAEC","x":1},{"_archive":"AAEC"}])",
       "bytes:.@/0*2 member:.x@/1/x*1"},
      {R"({"_class":"NSValue","type":"size","value":"{1, 2}","unit":"mm"})",
       "member:NSValue.unit@/unit*1"},
      {R"({"_class":"Scripted","asked":1,"at":"1 2","other":2,"_data":""})",
       "member:Scripted.other@/other*1"},
      {R"({"_class":"Scripted","takesAll":1,"other":2})", ""},
      {R"({"_class":"Scripted","takesDict":1,"other":2})", ""},
      {R"({"_class":"Scripted","child":{"_class":"Scripted","takesAll":1,"x":2},"at":"","other":2})",
       "member:Scripted.other@/other*1"},
  };
  const auto judge = makeRef<Judge>(&classOf<Choosy>);
  for (const auto& [text, expected] : cases) {
    SCOPED_TRACE(text);
    const auto decoder = TQJSONDecoder::initWithData(*test::data(text));
    decoder->setDelegate(Weak<TQJSONDecoderDelegate>(judge));
    EXPECT_EQ(listed(listing(decoder)->unreadContent()), expected);
    EXPECT_EQ(decoder->unreadContent().isEmpty(), expected.empty());
    const auto silent = TQJSONDecoder::initWithData(*test::data(text));
    const Ref<Object> read = silent->decode();
    EXPECT_TRUE(silent->unreadContent().isEmpty());
    EXPECT_EQ(silent->unreadContent().count(), 0u);
    // The same from a parsed tree, without paths.
    const auto tree = TQJSONDecoder::initWithRootObject(silent->root());
    tree->setDelegate(Weak<TQJSONDecoderDelegate>(judge));
    const UnreadContent& ofTree = listing(tree)->unreadContent();
    EXPECT_EQ(ofTree.count(), decoder->unreadContent().count());
    ASSERT_EQ(ofTree.entries().size(), decoder->unreadContent().entries().size());
    for (const auto& entry : ofTree.entries()) EXPECT_EQ(entry.path, "");
  }
}

TEST_F(JSONUnread, IsListedInKeyedArchives) {
  const Ref<Object> halves = Array::arrayWithObjects({makeRef<Half>(), makeRef<Half>(), str("x")});
  const auto text = test::data("[0," + archived(*halves) + "]");
  const auto read = [&] {
    return listed(listing(TQJSONDecoder::initWithData(*text))->unreadContent());
  };
  EXPECT_EQ(read(), "member:Half.new@/1*2 member:Half.$new@/1*2");
  Class::unregisterClass<Half>();
  EXPECT_EQ(read(), "unknown:Half.@/1*1");
  TQJSONDecoder::setClass(&classOf<Record>, "Other");  // has no effect on keyed archives
  EXPECT_EQ(read(), "unknown:Half.@/1*1");
  Class::registerClass<Half>();
  TQJSONDecoder::setClass(nullptr, "Half");
  EXPECT_EQ(read(), "banned:Half.@/1*1");
  TQJSONDecoder::setClass(&classOf<Half>, "Half");
}

TEST_F(JSONUnread, IsListedWithinBounds) {
  std::string text = R"({"_class":"Record")";
  for (int i = 0; i < 1000; ++i) text += ",\"new" + std::to_string(i) + "\":0";
  const auto many = listing(TQJSONDecoder::initWithData(*test::data(text + "}")));
  EXPECT_EQ(many->unreadContent().entries().size(), UnreadContent::kMostEntries);
  EXPECT_EQ(many->unreadContent().count(), 1000u);
  const std::string name(UnreadContent::kMostBytes, 'x');
  text = R"({"_class":"Record","short":1,")" + name + R"(":2,"last":3})";
  const auto wide = listing(TQJSONDecoder::initWithData(*test::data(text)));
  EXPECT_EQ(listed(wide->unreadContent()),
            "member:Record.short@/short*1 member:Record.last@/last*1");
  EXPECT_EQ(wide->unreadContent().count(), 3u);
}

// The list must stay right when a constructor throws and when it reads another archive.
TEST_F(JSONUnread, SurvivesConstructorsThatThrowOrReplaceTheRoot) {
  Scripted::onDecode() = [](TQJSONDecoder& decoder) {
    if (decoder.containsValueForKey("throws")) throw Exception(RangeException, "thrown");
    Ref<Error> error;
    const auto other = test::data(R"({"deep":[{"_class":"Record","new":1}]})");
    EXPECT_TRUE(decoder.decodeData(*other, &error));
    static_cast<void>(decoder.containsValueForKey("b"));
  };
  const auto decoder =
      listing(TQJSONDecoder::initWithData(*test::data(R"({"_class":"Scripted","a":1,"b":2})")));
  const std::string expected = "member:Record.new@/deep/0/new*1 member:Scripted.a@/a*1";
  EXPECT_EQ(listed(decoder->unreadContent()), expected);
  Ref<Error> error;
  EXPECT_FALSE(decoder->decodeData(*test::data(R"({"_class":"Scripted","throws":1})"), &error));
  EXPECT_TRUE(error);
  EXPECT_FALSE(decoder->containsValueForKey("x"));
  EXPECT_EQ(listed(decoder->unreadContent()), expected);
}

}  // namespace
