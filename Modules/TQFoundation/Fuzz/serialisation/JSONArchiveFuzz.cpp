// Decodes any text. Decoded objects must be writable and readable, and give the same text again.

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include <TQFoundation/TQFoundation.h>

namespace {

using namespace tq;

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
  Ref<Data> written = object ? TQJSONEncoder::encodeObjectAsData(object) : nullptr;
  if (!written) std::abort();
  return written;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const bool isReady = [] {
    Class::registerClass<Record>();
    setPlainLogSink([](std::string_view) {});
    return true;
  }();
  static_cast<void>(isReady);
  const auto text = std::as_bytes(std::span(bytes, size));
  const Ref<Object> object = TQJSONDecoder::initWithData(text)->decode();
  if (!object) return 0;
  const Ref<Data> first = TQJSONEncoder::encodeObjectAsData(object);
  // A value in a nested archive is visited at most 256 times for each byte, and takes about 24
  // bytes.
  if (first && first->length() > std::size_t{8192} * (size + 1)) std::abort();
  if (!first) return 0;  // a nested keyed archive may contain what a JSON archive cannot
  const Ref<Data> second = writtenAgain(*first);  // a power of ten may change once
  if (!writtenAgain(*second)->isEqual(*second)) std::abort();
  return 0;
}
