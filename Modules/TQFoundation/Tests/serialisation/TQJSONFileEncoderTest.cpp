#include <TQFoundation/serialisation/TQJSONFileEncoder.h>

#include <errno.h>
#include <fcntl.h>
#include <unistd.h>

#include <TQFoundation/serialisation/TQJSONDataEncoder.h>
#include <TQFoundation/serialisation/TQJSONURLEncoder.h>

#include "serialisation/JSONModel.h"
#include "support/FailingSystemCalls.h"
#include "support/TemporaryDirectory.h"

namespace {

constexpr std::size_t kBuffer = TQJSONFileEncoder::kBufferSize;

/// Replaces the system's writes: records their sizes and bytes, and fails as scripted.
struct Writes {
  explicit Writes(std::vector<WriteResult> first = {}) {
    results = std::move(first);
    sizes.clear();
    text.clear();
    FailingSystemCalls::insteadOfWrite = record;
  }
  ~Writes() { FailingSystemCalls::insteadOfWrite = nullptr; }
  Writes(const Writes&) = delete;
  Writes& operator=(const Writes&) = delete;

  static ssize_t record(int, const void* bytes, std::size_t count) {
    sizes.push_back(count);
    text.append(static_cast<const char*>(bytes), count);
    if (sizes.size() > results.size()) return static_cast<ssize_t>(count);
    errno = results[sizes.size() - 1].errorNumber;
    return results[sizes.size() - 1].count;
  }

  static inline std::vector<std::size_t> sizes;
  static inline std::string text;
  static inline std::vector<WriteResult> results;  // of the first writes; all others succeed
};

const Ref<FileHandle> anyFile = FileHandle::fileHandleWithFileDescriptor(-1);

using Sizes = std::vector<std::size_t>;

TEST(TQJSONFileEncoder, WritesWholeBuffersAndTheRestAtTheEnd) {
  for (const std::size_t size :
       {std::size_t{60}, kBuffer - 1, kBuffer, kBuffer + 1, 2 * kBuffer, 10 * kBuffer + 5}) {
    SCOPED_TRACE(size);
    Sizes sizes((size - 1) / kBuffer, kBuffer);
    sizes.push_back(size - kBuffer * sizes.size());
    // One long string, and many numbers before a string of the remaining length.
    const Ref<MutableArray> many = MutableArray::array();
    for (std::size_t i = 1; i + 40 < size; i += 5) many->addObject(num(1.25));
    many->addObject(str(std::string(size - archiveOf(many).size() - 3, 'y')));
    for (const Ref<Object>& object : {Ref<Object>(str(std::string(size - 2, 'x'))), {many}}) {
      const Writes writes;
      EXPECT_TRUE(TQJSONEncoder::encodeObject(object, anyFile, nullptr));
      EXPECT_EQ(Writes::sizes, sizes);
      EXPECT_EQ(Writes::text, archiveOf(object));
    }
  }
}

TEST(TQJSONFileEncoder, LeavesTheBufferAsItIsAfterTheFinalWrite) {
  const Writes writes;
  const Ref<TQJSONFileEncoder> sink = TQJSONFileEncoder::initWithFile(anyFile);
  for (const std::string_view text : {std::string_view("abc"), std::string_view(), {"d"}}) {
    sink->writeData(text.data(), text.size());
    sink->finishWriting();
  }
  EXPECT_EQ(Writes::text, "abcabcabcd");
  sink->writeData(std::string(kBuffer - 4, 'e').data(), kBuffer - 4);
  sink->finishWriting();
  EXPECT_EQ(Writes::sizes, (Sizes{3, 3, 4, kBuffer}));
}

TEST(TQJSONFileEncoder, ReportsTheFirstFailedWriteAndGoesOn) {
  const Ref<String> text = str(std::string(3 * kBuffer, 'x'));
  const Sizes all = {kBuffer, kBuffer, kBuffer, 2};
  const WriteResult full = {kBuffer, 0};
  const Rows<std::vector<WriteResult>, std::int64_t> cases{
      {{{-1, EIO}}, EIO},
      {{{100, 0}}, 0},
      {{full, {-1, EINTR}, {-1, ENOSPC}}, EINTR},
      {{full, full, full, {1, 0}}, 0},
  };
  for (const auto& [results, code] : cases) {
    const Writes writes(results);
    Ref<Error> error;
    EXPECT_FALSE(TQJSONEncoder::encodeObject(text, anyFile, &error));
    expectError(error, TQJSONFileEncoderError, code, "Archive write failed");
    EXPECT_EQ(Writes::sizes, all);
    EXPECT_EQ(Writes::text, archiveOf(text));
  }
  const Writes writes({{-1, EIO}});  // what could be encoded is written after an error, too
  Ref<Error> error;
  EXPECT_FALSE(
      TQJSONEncoder::encodeObject(Array::arrayWithObjects({makeRef<Opaque>()}), anyFile, &error));
  EXPECT_EQ(error->domain(), TQJSONEncoderError);
  EXPECT_EQ(Writes::text, "[]");
}

struct ThrowingSink final : Subclass<ThrowingSink, TQJSONFileEncoder> {
  static constexpr std::string_view className = "ThrowingSink";
  explicit ThrowingSink(bool isNumber) : Subclass(anyFile), isNumber_(isNumber) {}
  void finishWriting() override {
    if (isNumber_) throw 7;
    throw std::runtime_error("no flush");
  }
  bool isNumber_;
};

TEST(TQJSONFileEncoder, WritesOneArchiveAndReportsWhatTheFlushThrows) {
  const Writes writes;
  Ref<Error> error;
  for (const bool isNumber : {false, true}) {
    EXPECT_FALSE(makeRef<ThrowingSink>(isNumber)->encodeRootObject(num(1), &error));
    expectError(error, TQJSONFileEncoderError, 1, isNumber ? "unknown exception" : "no flush");
  }
  const Ref<TQJSONFileEncoder> sink = TQJSONFileEncoder::initWithFile(anyFile);
  EXPECT_TRUE(sink->encodeRootObject(num(1)));
  EXPECT_FALSE(sink->encodeRootObject(num(2), &error));
  EXPECT_EQ(Writes::text, "1");  // not twice
}

TEST(TQJSONURLEncoder, WritesOverAnExistingFileAndCreatesNone) {
  const TemporaryDirectory directory;
  const Ref<URL> url = URL::fileURLWithPath(directory.write("x", "0123456789"));
  EXPECT_TRUE(TQJSONEncoder::encodeObject(str("ab"), *url, nullptr));
  EXPECT_EQ(directory.read("x"), "\"ab\"456789");  // no shorter than it was
  Ref<TQJSONURLEncoder> sink = TQJSONURLEncoder::initWithURL(*url);
  const Ref<FileHandle> file = sink->output();
  ASSERT_GE(file->fileDescriptor(), 0);
  sink = nullptr;
  EXPECT_EQ(file->fileDescriptor(), -1);  // closed

  Ref<Error> error;
  const auto object = makeRef<Scripted>([&](TQJSONEncoder&) { ADD_FAILURE(); });
  const Ref<URL> none = URL::fileURLWithPath(directory.path("none"));
  EXPECT_FALSE(TQJSONEncoder::encodeObject(object, *none, &error));
  expectFileError(error, 4, ENOENT, "The file “none” doesn’t exist.");
  EXPECT_FALSE(std::filesystem::exists(directory.path("none")));
}

TEST(TQJSONEncoder, SavesTheWholeArchiveOrLeavesTheFile) {
  const TemporaryDirectory directory;
  const Ref<URL> url = URL::fileURLWithPath(directory.path("x"));
  EXPECT_TRUE(TQJSONEncoder::saveObject(str("a document"), *url));
  EXPECT_TRUE(TQJSONEncoder::saveObject(str("ab"), *url));
  EXPECT_EQ(directory.read("x"), "\"ab\"");  // as short as it is
  Ref<Error> error;
  EXPECT_FALSE(TQJSONEncoder::saveObject(Array::arrayWithObjects({str("c"), makeRef<Opaque>()}),
                                         *url, &error));
  EXPECT_EQ(error->domain(), TQJSONEncoderError);
  const auto unchecked = [](const Ref<String>& text) {
    return makeRef<Scripted>(
        [text](TQJSONEncoder& e) { e.encodeStringWithoutCheckingFormat(text.get(), "key", true); });
  };
  constexpr std::string_view kNotRead = "The archive could not be read back. ";
  EXPECT_FALSE(TQJSONEncoder::saveObject(unchecked(str("5\" pipe")), *url, &error));
  expectError(error, TQJSONEncoderError, 0,
              std::string(kNotRead) + "Badly formed container around character 31.");
  EXPECT_FALSE(TQJSONEncoder::saveObject(unchecked(illFormed()), *url, &error));
  EXPECT_TRUE(error->localizedDescription().starts_with("The archive is not well-formed UTF-8"));
  EXPECT_FALSE(TQJSONEncoder::saveObject(nullptr, *url, &error));
  EXPECT_TRUE(error->localizedDescription().starts_with(kNotRead));
  EXPECT_EQ(directory.read("x"), "\"ab\"");
  EXPECT_TRUE(TQJSONEncoder::saveObject(unchecked(str("5 pipes")), *url));
  const Ref<URL> none = URL::fileURLWithPath(directory.path("none/x"));
  EXPECT_FALSE(TQJSONEncoder::saveObject(str("ab"), *none, &error));
  expectError(error, CocoaErrorDomain, 4);
}

TEST(TQJSONDataEncoder, AppendsToItsBufferAndRequiresOne) {
  const Ref<MutableData> buffer = MutableData::data();
  buffer->append("start ");
  EXPECT_TRUE(TQJSONEncoder::encoderForWritingToMutableData(buffer)->encodeRootObject(num(1)));
  const Ref<TQJSONDataEncoder> sink = TQJSONDataEncoder::initWithData(buffer);
  EXPECT_TRUE(sink->encodeRootObject(str(std::string(1000, 'x'))));
  sink->writeData(" end", 4);
  EXPECT_EQ(buffer->view(), "start 1\"" + std::string(1000, 'x') + "\" end");
  sink->setData(nullptr);
  for (const auto& without : {sink, TQJSONDataEncoder::initWithData(nullptr)}) {
    Ref<Error> error;
    const auto object = makeRef<Scripted>([&](TQJSONEncoder&) { ADD_FAILURE(); });
    EXPECT_FALSE(without->encodeRootObject(object, &error));
    expectError(error, TQJSONDataEncoderError, 0, "Invalid output");
    without->writeData("x", 1);
  }
}

}  // namespace
