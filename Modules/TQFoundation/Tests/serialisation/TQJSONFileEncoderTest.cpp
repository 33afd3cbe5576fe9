#include <TQFoundation/serialisation/TQJSONFileEncoder.h>

#include <errno.h>
#include <fcntl.h>
#include <unistd.h>

#include <TQFoundation/serialisation/TQJSONDataEncoder.h>
#include <TQFoundation/serialisation/TQJSONURLEncoder.h>

#include "platform/ExpectFileError.h"
#include "serialisation/JSONModel.h"
#include "support/TemporaryDirectory.h"

namespace tq {
namespace {

using test::archiveOf;
using test::expectError;
using test::num;
using test::Scripted;
using test::str;

constexpr std::size_t kBuffer = TQJSONFileEncoder::kBufferSize;

/// Takes the place of the system's writes: keeps their sizes and what came, and fails when told.
class Writes {
 public:
  Writes() : before_(setWriteHook(&hook)) {
    sizes.clear();
    text.clear();
    results.clear();
  }
  ~Writes() { setWriteHook(before_); }
  Writes(const Writes&) = delete;
  Writes& operator=(const Writes&) = delete;

  static inline std::vector<std::size_t> sizes;
  static inline std::string text;
  static inline std::vector<WriteResult> results;  // of the first writes; all others succeed

 private:
  static WriteResult hook(int, std::span<const std::byte> bytes) noexcept {
    sizes.push_back(bytes.size());
    text.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (sizes.size() <= results.size()) return results[sizes.size() - 1];
    return {static_cast<std::ptrdiff_t>(bytes.size()), 0};
  }

  WriteHook before_;
};

Ref<FileHandle> anyFile() { return FileHandle::fileHandleWithFileDescriptor(-1); }

using Sizes = std::vector<std::size_t>;

TEST(TQJSONFileEncoder, WritesWholeBuffersAndTheRestAtTheEnd) {
  const Writes writes;
  const struct {
    std::size_t archiveSize;
    Sizes sizes;
  } cases[] = {
      {2, {2}},
      {kBuffer - 1, {kBuffer - 1}},
      {kBuffer, {kBuffer}},
      {kBuffer + 1, {kBuffer, 1}},
      {2 * kBuffer, {kBuffer, kBuffer}},
      {10 * kBuffer + 5,
       {kBuffer, kBuffer, kBuffer, kBuffer, kBuffer, kBuffer, kBuffer, kBuffer, kBuffer, kBuffer,
        5}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.archiveSize);
    // One long string, and many short ones.
    const Ref<String> one = str(std::string(c.archiveSize - 2, 'x'));
    Writes::sizes.clear();
    Writes::text.clear();
    EXPECT_TRUE(TQJSONEncoder::encodeObject(one, anyFile(), nullptr));
    EXPECT_EQ(Writes::sizes, c.sizes);
    EXPECT_EQ(Writes::text, archiveOf(one));

    const Ref<MutableArray> many = MutableArray::array();
    for (std::size_t size = 1; size + 40 < c.archiveSize; size += 5) many->addObject(num(1.25));
    const std::size_t missing = c.archiveSize - archiveOf(many).size();
    if (missing > 2) many->addObject(str(std::string(missing - 3, 'y')));
    Writes::sizes.clear();
    Writes::text.clear();
    EXPECT_TRUE(TQJSONEncoder::encodeObject(many, anyFile(), nullptr));
    EXPECT_EQ(Writes::text, archiveOf(many));
    EXPECT_TRUE(Writes::text.size() != c.archiveSize || Writes::sizes == c.sizes);
  }
}

TEST(TQJSONFileEncoder, LeavesTheBufferAsItIsAfterTheFinalWrite) {
  const Writes writes;
  const Ref<TQJSONFileEncoder> sink = TQJSONFileEncoder::initWithFile(anyFile());
  sink->writeData("abc", 3);
  sink->writeData(nullptr, 0);
  sink->finishWriting();
  sink->finishWriting();
  sink->writeData("d", 1);
  sink->finishWriting();
  EXPECT_EQ(Writes::text, "abcabcabcd");
  EXPECT_EQ(Writes::sizes, (Sizes{3, 3, 4}));
  TQJSONFileEncoder::initWithFile(anyFile())->finishWriting();
  EXPECT_EQ(Writes::sizes.back(), 0u);
}

TEST(TQJSONFileEncoder, TellsTheFirstFailedWriteAndGoesOn) {
  const Ref<String> text = str(std::string(3 * kBuffer, 'x'));
  const Sizes all = {kBuffer, kBuffer, kBuffer, 2};
  const WriteResult full = {kBuffer, 0};
  const struct {
    std::vector<WriteResult> results;
    std::int64_t code;
  } cases[] = {
      {{{-1, EIO}}, EIO},
      {{{100, 0}}, 0},
      {{full, {0, 0}, {-1, ENOSPC}}, 0},
      {{full, {-1, EINTR}, {-1, ENOSPC}}, EINTR},
      {{full, full, full, {-1, EDQUOT}}, EDQUOT},
      {{full, full, full, {1, 0}}, 0},
  };
  for (const auto& c : cases) {
    const Writes writes;
    Writes::results = c.results;
    Ref<Error> error;
    EXPECT_FALSE(TQJSONEncoder::encodeObject(text, anyFile(), &error));
    expectError(error, TQJSONFileEncoderError, c.code, "Archive write failed");
    EXPECT_EQ(Writes::sizes, all);
    EXPECT_EQ(Writes::text, archiveOf(text));
  }
}

TEST(TQJSONFileEncoder, FlushesAfterAFailedEncodingToo) {
  const Writes writes;
  Writes::results = {{-1, EIO}};
  Ref<Error> error;
  const auto broken = Array::arrayWithObjects({num(1), makeRef<test::Opaque>()});
  EXPECT_FALSE(TQJSONEncoder::encodeObject(broken, anyFile(), &error));
  expectError(error, TQJSONEncoderError, 1, "Error - can't encode object of class Opaque");
  EXPECT_EQ(Writes::text, "[1,]");
  const auto throwing =
      makeRef<Scripted>([](TQJSONEncoder&) { throw Exception("Name", "reason"); });
  EXPECT_FALSE(TQJSONEncoder::encodeObject(throwing, anyFile(), &error));
  expectError(error, TQJSONEncoderError, 0, "reason");
  EXPECT_EQ(Writes::text, R"([1,]{"_class":"Scripted")");
}

TEST(TQJSONFileEncoder, TellsOfFullAndClosedFiles) {
  Ref<Error> error;
  const int full = ::open("/dev/full", O_WRONLY);
  const Ref<FileHandle> file = FileHandle::fileHandleWithFileDescriptor(full);
  EXPECT_FALSE(TQJSONEncoder::encodeObject(num(1), file, &error));
  expectError(error, TQJSONFileEncoderError, ENOSPC, "Archive write failed");
  EXPECT_GE(::fcntl(full, F_GETFD), 0);  // left open
  ::close(full);
  EXPECT_FALSE(TQJSONEncoder::encodeObject(num(1), file, &error));
  expectError(error, TQJSONFileEncoderError, EBADF, "Archive write failed");
  EXPECT_FALSE(TQJSONEncoder::encodeObject(num(1), Ref<FileHandle>(), &error));
  expectError(error, TQJSONFileEncoderError, EBADF, "Archive write failed");
  EXPECT_EQ(TQJSONEncoder::encoderForWritingToFile(file)->objectClass().name(),
            "TQJSONFileEncoder");
}

TEST(TQJSONURLEncoder, WritesOverAFileThatIsThere) {
  const test::TemporaryDirectory directory;
  const Ref<URL> url = URL::fileURLWithPath(directory.write("x", "0123456789"));
  EXPECT_TRUE(TQJSONEncoder::encodeObject(str("ab"), *url, nullptr));
  EXPECT_EQ(directory.read("x"), "\"ab\"456789");  // no shorter than it was

  const auto big = str(std::string(5 * kBuffer, 'x'));
  EXPECT_TRUE(TQJSONEncoder::encodeObject(big, *url, nullptr));
  EXPECT_EQ(directory.read("x"), archiveOf(big));
  const Ref<Object> again = TQJSONDecoder::decodeFileAtURL(*url, nullptr);
  EXPECT_TRUE(again && again->isEqual(*big));
}

TEST(TQJSONURLEncoder, MakesNoFileAndSaysSo) {
  const test::TemporaryDirectory directory;
  const Ref<URL> url = URL::fileURLWithPath(directory.path("none"));
  Ref<Error> error;
  bool encoded = false;
  const auto object = makeRef<Scripted>([&](TQJSONEncoder&) { encoded = true; });
  EXPECT_FALSE(TQJSONEncoder::encodeObject(object, *url, &error));
  test::expectFileError(error, 4, ENOENT, "The file “none” doesn’t exist.");
  EXPECT_FALSE(encoded);
  EXPECT_FALSE(std::filesystem::exists(directory.path("none")));
  EXPECT_FALSE(
      TQJSONEncoder::encodeObject(object, *URL::fileURLWithPath(directory.path("")), &error));
  test::expectFileError(error, 512, EISDIR, error->localizedDescription());
}

TEST(TQJSONURLEncoder, ClosesItsFileWhenItGoes) {
  const test::TemporaryDirectory directory;
  const Ref<URL> url = URL::fileURLWithPath(directory.write("x", ""));
  Ref<TQJSONURLEncoder> sink = TQJSONURLEncoder::initWithURL(*url);
  const Ref<FileHandle> file = sink->output();
  ASSERT_GE(file->fileDescriptor(), 0);
  sink = nullptr;
  EXPECT_EQ(file->fileDescriptor(), -1);
  EXPECT_EQ(directory.read("x"), "");
}

TEST(TQJSONDataEncoder, AppendsToTheBufferItIsGiven) {
  const Ref<MutableData> buffer = MutableData::data();
  buffer->append("start ");
  EXPECT_TRUE(TQJSONEncoder::encoderForWritingToMutableData(buffer)->encodeRootObject(num(1)));
  const Ref<TQJSONDataEncoder> sink = TQJSONDataEncoder::initWithData(buffer);
  EXPECT_TRUE(sink->encodeRootObject(str(std::string(1000, 'x'))));
  sink->writeData(" end", 4);
  EXPECT_EQ(buffer->view(), "start 1\"" + std::string(1000, 'x') + "\" end");
  EXPECT_EQ(sink->data(), buffer);
}

TEST(TQJSONDataEncoder, CannotDoWithoutABuffer) {
  const Ref<TQJSONDataEncoder> without = TQJSONDataEncoder::initWithData(nullptr);
  expectError(without->error(), TQJSONDataEncoderError, 0, "Invalid output");
  const Ref<TQJSONDataEncoder> taken = TQJSONDataEncoder::initWithData(MutableData::data());
  taken->setData(nullptr);
  for (const auto& sink : {without, taken}) {
    Ref<Error> error;
    bool encoded = false;
    const auto object = makeRef<Scripted>([&](TQJSONEncoder&) { encoded = true; });
    EXPECT_FALSE(sink->encodeRootObject(object, &error));
    expectError(error, TQJSONDataEncoderError, 0, "Invalid output");
    EXPECT_FALSE(encoded);
    sink->writeData("x", 1);
  }
}

}  // namespace
}  // namespace tq
