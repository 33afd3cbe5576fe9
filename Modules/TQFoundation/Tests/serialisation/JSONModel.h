#pragma once

#include <TQFoundation/TQFoundation.h>

#include "support/Errors.h"
#include "support/RandomGraphs.h"
#include "support/Test.h"

namespace tq::test {

inline Ref<String> str(std::string_view text) { return String::of(text); }
inline Ref<Number> num(NumberValue value) { return Number::numberWith(value); }
inline Ref<String> illFormed(std::u16string_view text = u"a\xD800z") {
  return String::stringWithUTF16(text);
}
inline Ref<Data> data(std::string_view bytes) { return Data::dataWithBytes(bytes); }

/// A structured object whose members a test writes and reads by the functions that it sets.
struct Scripted : Subclass<Scripted> {
  static constexpr std::string_view className = "Scripted";
  using Encode = std::function<void(TQJSONEncoder&)>;
  using Decode = std::function<void(TQJSONDecoder&)>;

  explicit Scripted(Encode encode) : encode_(std::move(encode)) {}
  explicit Scripted(TQJSONDecoder& decoder) { onDecode()(decoder); }
  void encodeAsJSON(TQJSONEncoder& encoder) const { encode_(encoder); }

  static Decode& onDecode() {
    static Decode decode;
    return decode;
  }
  Encode encode_;
};

inline std::string described(const Ref<Object>& object) {
  return object ? object->description() : "(null)";
}

/// Its construction may return null.
struct Choosy final : Subclass<Choosy> {
  static constexpr std::string_view className = "Choosy";
  static Ref<Choosy> initWithJSONDecoder(TQJSONDecoder& decoder) {
    return decoder.containsValueForKey("good") ? makeRef<Choosy>() : nullptr;
  }
};

/// Refuses one class, and lists those that it is asked about.
struct Judge final : Subclass<Judge>, TQJSONDecoderDelegate {
  static constexpr std::string_view className = "Judge";
  explicit Judge(const Class* cls) : refused(cls) {}
  bool shouldInstantiateObjectOfClass(TQJSONDecoder& decoder, const Class& objectClass) override {
    EXPECT_FALSE(decoder.containsValueForKey("absent"));
    static_cast<void>(decoder.containsValueForKey("_class"));
    asked += std::string(objectClass.name()) + " ";
    return &objectClass != refused;
  }
  std::string asked;
  const Class* refused;
};

/// A keyed archive in JSON.
inline std::string archived(const Object& object) {
  const auto bytes = KeyedArchiver::archivedDataWithRootObject(object);
  return "{\"_archive\":\"" + base64FromBytes(bytes->bytes()) + "\"}";
}

/// A dictionary with this key and another one.
inline Ref<Object> keyed(Ref<Object> key) {
  const std::pair<Ref<Object>, Ref<Object>> entries[] = {{std::move(key), Null::null()},
                                                         {str("z"), num(1)}};
  return Dictionary::dictionaryWithEntries(entries);
}

/// `depth` arrays around `innermost`.
inline Ref<Object> nested(int depth, Ref<Object> innermost) {
  for (int i = 0; i < depth; ++i) innermost = Array::arrayWithObjects({innermost});
  return innermost;
}

/// An object without any archive form.
struct Opaque final : Subclass<Opaque> {
  static constexpr std::string_view className = "Opaque";
};

/// A sink without a window: every fragment is passed to writeData().
struct TextSink final : Subclass<TextSink, TQJSONEncoder> {
  static constexpr std::string_view className = "TextSink";
  void writeData(const void* bytes, std::size_t length) override {
    text.append(static_cast<const char*>(bytes), length);
  }
  std::string text;
};

/// Returns the archive of `object`, which must be the same with and without a window.
inline std::string archiveOf(LentObject object, Ref<Error>* error = nullptr) {
  const Ref<TextSink> sink = makeRef<TextSink>();
  const bool succeeded = sink->encodeRootObject(object, error);
  const Ref<Data> data = TQJSONEncoder::encodeObjectAsData(object);
  EXPECT_EQ(succeeded, bool(data));
  EXPECT_EQ(succeeded, !sink->error());
  EXPECT_TRUE(!data || data->view() == sink->text);
  return sink->text;
}

/// Returns the members that `encode` writes, without the class record.
inline std::string membersOf(Scripted::Encode encode, Ref<Error>* error = nullptr) {
  std::string text = archiveOf(makeRef<Scripted>(std::move(encode)), error);
  constexpr std::string_view kStart = "{\"_class\":\"Scripted\"";
  EXPECT_TRUE(text.starts_with(kStart) && text.ends_with('}')) << text;
  return text.substr(kStart.size(), text.size() - kStart.size() - 1);
}

/// A structured object with a member of every kind.
struct Record final : Subclass<Record> {
  static constexpr std::string_view className = "Record";
  Record(double real, std::int64_t whole, Ref<Object> object)
      : rect{real, -real, real / 3, 0.1}, number(real), integer(whole), child(std::move(object)) {}
  explicit Record(TQJSONDecoder& d)
      : rect(d.decodeRectForKey("rect")),
        point(d.decodePointForKey("point")),
        number(d.decodeDoubleForKey("number", -1)),
        integer(d.decodeIntegerForKey("integer", -1)),
        flag(d.decodeBoolForKey("flag", false)),
        child(d.decodeObjectForKey("child")) {}

  void encodeAsJSON(TQJSONEncoder& e) const {
    e.encodeDouble(number, "number");
    e.encodeBool(flag, "flag");
    e.encodeObject(child, "child");
    e.encodeInteger(integer, "integer");
    e.encodeRect(rect, "rect");
    e.encodePoint(point, "point");
    e.encodeSize(rect.size, "size");
  }
  Rect rect;
  Point point = rect.origin;
  double number;
  std::int64_t integer;
  bool flag = integer % 2 == 0;
  Ref<Object> child;
};

/// A random graph with records in it.
inline Ref<Object> graphOf(unsigned seed, int depth) {
  return RandomGraphs(seed, makeRef<Record, double, std::int64_t, Ref<Object>>).object(depth);
}

inline Ref<Object> decoded(std::string_view text, Ref<Error>* error = nullptr) {
  Ref<Error> unasked;
  return TQJSONDecoder::decodeDataError(*data(text), error != nullptr ? error : &unasked);
}

}  // namespace tq::test
