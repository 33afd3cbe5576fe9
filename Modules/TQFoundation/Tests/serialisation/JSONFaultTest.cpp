// The n-th allocation fails, for n = 0, 1, 2… until the operation succeeds.

#include <fcntl.h>
#include <unistd.h>

#include "serialisation/JSONModel.h"
#include "support/Bytes.h"
#include "support/FailingAllocations.h"

namespace {

Ref<Object> graph() {
  Class::registerClass<Record>();
  return Array::arrayWithObjects(
      {graphOf(1, 3), makeRef<Record>(0.1, 2, makeRef<Record>(1, 3, test::illFormed())), num(1),
       Array::arrayWithNumbers(std::array<double, 3>{1, 2, 0.5}), Value::valueWithPoint({0.1, 2}),
       Dictionary::dictionaryWithEntries({{"data", test::data(std::string(300, '\xff'))}})});
}

TEST(JSONFault, EncodingSurvivesEveryFailedAllocation) {
  const Ref<Object> object = graph();
  const Ref<Data> expected = TQJSONEncoder::encodeObjectAsData(object);
  ASSERT_TRUE(expected);
  failEachAllocation([&] {  // the sink stays usable
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
  failEachAllocation([&] {  // without its buffer the sink fails
    Ref<Error> error;
    const Ref<FileHandle> file = FileHandle::fileHandleWithFileDescriptor(null);
    const bool succeeded = TQJSONEncoder::encodeObject(object, file, &error);
    EXPECT_NE(succeeded, bool(error));
    return succeeded;
  });
  ::close(null);
}

TEST(JSONFault, DecodingSurvivesEveryFailedAllocation) {
  const Ref<Data> archive = TQJSONEncoder::encodeObjectAsData(graph());
  ASSERT_TRUE(archive);
  const auto isWhole = [&](const Ref<Object>& read) {
    const Ref<Data> again = read ? TQJSONEncoder::encodeObjectAsData(read) : nullptr;
    return again && again->isEqual(*archive);
  };
  const Ref<TQJSONDecoder> decoder = TQJSONDecoder::initWithData(*archive);
  const Ref<Object> tree = decoder->root();
  failEachAllocation([&] { return isWhole(TQJSONDecoder::decodeDataError(*archive, nullptr)); });
  failEachAllocation([&] { return isWhole(TQJSONDecoder::initWithRootObject(tree)->decode()); });
  failEachAllocation([&] {
    Ref<Error> error;
    return !TQJSONDecoder::decodeDataError(*test::data("[1,\"\\x\""), &error) && error;
  });
  for (long n = 0; n < 200; ++n) {  // a decoder that failed can decode again
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

TEST(CompressionFault, EveryAllocationMayFail) {
  const std::string plains[] = {documentText(500), documentText(4500)};
  failEachAllocation([&] {
    bool succeeded = true;
    for (const std::string& plain : plains) {
      for (const auto algorithm : {TQCompressionAlgorithm::lz4, TQCompressionAlgorithm::lzfse}) {
        const Ref<Data> packed = dataByCompressingWithAlgorithm_tq(bytesOf(plain), algorithm);
        const bool mayFail = !packed || allocationsToGo >= 0;
        const Ref<Data> read = packed ? dataByDecompressing_tq(*packed) : nullptr;
        EXPECT_TRUE(read ? read->view() == plain : mayFail);
        succeeded &= read && packed->length() < plain.size();
      }
    }
    return succeeded;
  });
}

}  // namespace
