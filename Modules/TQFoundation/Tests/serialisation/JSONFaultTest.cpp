// Every allocation fails once, the n-th for n = 0, 1, 2… until all has worked.

#include <fcntl.h>
#include <unistd.h>

#include "serialisation/JSONModel.h"
#include "support/FailingAllocations.h"

namespace tq {
namespace {

using namespace test;

struct Member final : Subclass<Member> {
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
  failEachAllocation([&] {  // a sink that lives on
    const Ref<MutableData> buffer = MutableData::data();
    const Ref<TQJSONDataEncoder> sink = TQJSONDataEncoder::initWithData(buffer);
    Ref<Error> error;
    const bool succeeded = sink->encodeRootObject(object, &error);
    EXPECT_NE(succeeded, bool(error));
    EXPECT_TRUE(!succeeded || buffer->isEqual(*expected));
    const std::size_t length = buffer->length();
    sink->writeData("x", 1);
    EXPECT_EQ(buffer->length(), length + 1);
    return succeeded;
  });
  const int null = ::open("/dev/null", O_WRONLY);
  failEachAllocation([&] {  // no buffer at all is an error, too
    Ref<Error> error;
    const Ref<FileHandle> file = FileHandle::fileHandleWithFileDescriptor(null);
    const bool succeeded = TQJSONEncoder::encodeObject(object, file, &error);
    EXPECT_NE(succeeded, bool(error));
    return succeeded;
  });
  ::close(null);
}

TEST(JSONFault, DecodingSurvivesEveryFailedAllocation) {
  Class::registerClass<Member>();
  const Ref<Data> archive = TQJSONEncoder::encodeObjectAsData(graph());
  ASSERT_TRUE(archive);
  const auto isWhole = [&](const Ref<Object>& read) {
    const Ref<Data> again = read ? TQJSONEncoder::encodeObjectAsData(read) : nullptr;
    return again && again->isEqual(*archive);
  };
  const Ref<TQJSONDecoder> decoder = TQJSONDecoder::initWithData(*archive);
  const Ref<Object> tree = decoder->root();
  failEachAllocation([&] { return isWhole(TQJSONDecoder::decodeData(*archive, nullptr)); });
  failEachAllocation([&] { return isWhole(TQJSONDecoder::initWithRootObject(tree)->decode()); });
  failEachAllocation([&] {
    Ref<Error> error;
    return !TQJSONDecoder::decodeData(*test::data("[1,\"\\x\""), &error) && error;
  });
  for (long n = 0; n < 200; ++n) {  // a decoder that failed decodes the next time
    allocationsToGo = n;
    try {
      static_cast<void>(decoder->decode());
    } catch (const std::bad_alloc&) {
    }
    allocationsToGo = -1;
    ASSERT_FALSE(decoder->currentObjectDict());
    ASSERT_TRUE(isWhole(decoder->decode())) << n;
  }
}

}  // namespace
}  // namespace tq
