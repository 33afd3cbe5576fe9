// Decodes any text. Decoded objects must be writable and readable, and give the same text again.
// The text, the parsed tree, and the text with a list of what is not read must give the same
// objects. An input that begins with a byte 0xFF, which no text has, chooses the content of a
// well-formed text.

#include <cstddef>
#include <cstdint>
#include <string>

#include <TQFoundation/TQFoundation.h>

#include "JSONGenerator.h"

namespace {

using namespace tq;
using fuzz::require;

/// Reads members of every kind.
class Record final : public Subclass<Record> {
 public:
  static constexpr std::string_view className = "Record";
  explicit Record(TQJSONDecoder& decoder)
      : number_(decoder.decodeDoubleForKey("d", 1)),
        integer_(decoder.decodeIntegerForKey("i", 2)),
        flag_(decoder.decodeBoolForKey("b", true)),
        rect_(decoder.decodeRectForKey("r")),
        child_(decoder.decodeObjectForKey("c")) {}
  void encodeAsJSON(TQJSONEncoder& encoder) const {
    encoder.encodeDouble(number_, "d");
    encoder.encodeInteger(integer_, "i");
    encoder.encodeBool(flag_, "b");
    encoder.encodeRect(rect_, "r");
    encoder.encodeObject(child_, "c");
  }

 private:
  double number_;
  std::int64_t integer_;
  bool flag_;
  Rect rect_;
  Ref<Object> child_;
};

Ref<Data> writtenAgain(const Data& archive) {
  const Ref<Object> object = TQJSONDecoder::decodeDataError(archive, nullptr);
  require(object != nullptr);
  Ref<Data> written = TQJSONEncoder::encodeObjectAsData(object);
  require(written != nullptr);
  return written;
}

Ref<Data> decodedAndWritten(TQJSONDecoder& decoder) {
  const Ref<Object> object = decoder.decode();
  return object ? TQJSONEncoder::encodeObjectAsData(object) : nullptr;
}

bool isSame(const Ref<Data>& a, const Ref<Data>& b) { return a && b ? a->isEqual(*b) : a == b; }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const bool isReady = [] {
    Class::registerClass<Record>();
    setPlainLogSink([](std::string_view) {});
    return true;
  }();
  static_cast<void>(isReady);
  const bool isText = size == 0 || bytes[0] != 0xFF;
  const std::string text =
      isText ? std::string(bytes, bytes + size) : fuzz::JSONGenerator({bytes + 1, size - 1}).text();
  const auto decoder = TQJSONDecoder::initWithData(std::as_bytes(std::span(text)));
  require(isText || decoder->root() != nullptr);
  const Ref<Data> first = decodedAndWritten(*decoder);
  const auto tree = TQJSONDecoder::initWithRootObject(decoder->root());
  require(isSame(decodedAndWritten(*tree), first));
  decoder->setListsUnreadContent(true);
  require(isSame(decodedAndWritten(*decoder), first));
  if (!first) return 0;  // a nested keyed archive may contain what a JSON archive cannot

  // A value in a nested archive is visited at most 256 times for each byte, and takes about 24
  // bytes.
  require(first->length() <= std::size_t{8192} * (text.size() + 1));
  const Ref<Data> second = writtenAgain(*first);  // a power of ten may change once
  require(writtenAgain(*second)->isEqual(*second));
  return 0;
}
