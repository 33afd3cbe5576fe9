// Every allocation and every write fails once, the n-th for n = 0, 1, 2… until all has worked.

#include <errno.h>

#include "serialisation/JSONModel.h"
#include "support/FailingAllocations.h"

namespace tq {
namespace {

using test::failEachAllocation;
using test::num;
using test::str;

class Member final : public Subclass<Member> {
 public:
  static constexpr std::string_view className = "Member";
  explicit Member(Ref<Object> kept) : content(std::move(kept)) {}
  explicit Member(TQJSONDecoder& decoder) : content(decoder.decodeObjectForKey("content")) {}
  void encodeAsJSON(TQJSONEncoder& encoder) const {
    encoder.encodeObject(content, "content");
    encoder.encodeRect({1, 2, 3, 0.1}, "rect");
  }
  Ref<Object> content;
};

Ref<Object> graph() {
  const std::pair<Ref<Object>, Ref<Object>> entries[] = {
      {str("list"), Array::arrayWithObjects({num(1), str("a long string that is not held inline"),
                                             Value::valueWithPoint({0.1, 2})})},
      {num(0.56), test::data(std::string(300, '\xff'))},
      {str("member"), makeRef<Member>(makeRef<Member>(test::illFormed()))},
      {str("packed"), Array::arrayWithNumbers(std::array<double, 3>{1, 2, 0.5})},
  };
  return Dictionary::dictionaryWithEntries(entries);
}

TEST(JSONFault, EncodingSurvivesEveryFailedAllocation) {
  const Ref<Object> object = graph();
  const Ref<Data> expected = TQJSONEncoder::encodeObjectAsData(object);
  ASSERT_TRUE(expected);
  failEachAllocation([&] {
    Ref<Error> error;
    const Ref<Data> data = TQJSONEncoder::encodeObjectAsData(object, &error);
    if (bool(data) == bool(error)) throw std::logic_error("neither archive nor error");
    return data && data->isEqual(*expected);
  });
  failEachAllocation([&] {  // a sink that lives on
    const Ref<MutableData> buffer = MutableData::data();
    const Ref<TQJSONDataEncoder> sink = TQJSONDataEncoder::initWithData(buffer);
    Ref<Error> error;
    const bool succeeded = sink->encodeRootObject(object, &error);
    if (succeeded != !sink->error()) throw std::logic_error("an error that nobody hears of");
    const std::size_t length = buffer->length();
    sink->writeData("x", 1);
    if (buffer->length() != length + 1) throw std::logic_error("the sink is broken");
    return succeeded;
  });
}

TEST(JSONFault, DecodingSurvivesEveryFailedAllocation) {
  Class::registerClass<Member>();
  const Ref<Object> object = graph();
  const Ref<Data> archive = TQJSONEncoder::encodeObjectAsData(object);
  ASSERT_TRUE(archive);
  const auto isWhole = [&](const Ref<Object>& read) {
    const Ref<Data> again = read ? TQJSONEncoder::encodeObjectAsData(read) : nullptr;
    return again && again->isEqual(*archive);
  };
  failEachAllocation([&] {
    Ref<Error> error;
    return isWhole(TQJSONDecoder::decodeData(*archive, &error));
  });
  // A decoder that failed decodes the next time.
  const Ref<TQJSONDecoder> decoder = TQJSONDecoder::initWithData(*archive);
  for (long n = 0; n < 200; ++n) {
    allocationsToGo = n;
    try {
      static_cast<void>(decoder->decode());
    } catch (const std::bad_alloc&) {
    }
    allocationsToGo = -1;
    ASSERT_FALSE(decoder->currentObjectDict());
    ASSERT_TRUE(isWhole(decoder->decode())) << n;
  }
  const Ref<Object> tree = decoder->root();
  failEachAllocation([&] { return isWhole(TQJSONDecoder::initWithRootObject(tree)->decode()); });
  failEachAllocation([&] {
    Ref<Error> error;
    return !TQJSONDecoder::decodeData(*test::data("[1,\"\\x\""), &error) && error;
  });
}

long writesToGo;

TEST(JSONFault, EveryFailedWriteIsTold) {
  const Ref<String> text = str(std::string(20'000, 'x'));
  const WriteHook before = setWriteHook([](int, std::span<const std::byte> bytes) noexcept {
    return writesToGo-- == 0 ? WriteResult{-1, EIO}
                             : WriteResult{static_cast<std::ptrdiff_t>(bytes.size()), 0};
  });
  const Ref<FileHandle> file = FileHandle::fileHandleWithFileDescriptor(-1);
  for (long n = 0;; ++n) {
    writesToGo = n;
    Ref<Error> error;
    const bool succeeded = TQJSONEncoder::encodeObject(text, file, &error);
    if (writesToGo >= 0) {
      EXPECT_TRUE(succeeded);
      EXPECT_EQ(n, 5);
      break;
    }
    EXPECT_FALSE(succeeded);
    test::expectError(error, TQJSONFileEncoderError, EIO, "Archive write failed");
  }
  setWriteHook(before);
}

}  // namespace
}  // namespace tq
