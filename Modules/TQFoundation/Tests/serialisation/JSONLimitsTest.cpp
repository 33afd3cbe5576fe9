#include <sys/mman.h>
#include <sys/resource.h>

#include "serialisation/JSONModel.h"
#include "support/TemporaryDirectory.h"

namespace {

/// Arrays that refer twice to the next one: 2^depth paths to one leaf.
Ref<Object> doubled(int depth, Ref<Object> object = str("leaf")) {
  for (int i = 0; i < depth; ++i) object = Array::arrayWithObjects({object, object});
  return object;
}

TEST(JSONLimits, ArchivesThatUnfoldAreRefusedAndTheRestIsRead) {
  Ref<Error> error;
  const std::string text = "[" + archived(*doubled(8)) + "," + archived(*doubled(40)) + ",7]";
  const Ref<Object> read = decoded(text, &error);
  expectLimit(error, ReadingLimit::unfoldedPerByte);
  EXPECT_TRUE(read->isEqual(*Array::arrayWithObjects({doubled(8), num(7)})));
  const ReadingLimits none{.unfoldedPerByte = ~std::uint64_t{0}};
  EXPECT_TRUE(TQJSONDecoder::decodeDataError(*test::data(text), &error, none));
  EXPECT_FALSE(error);
}

TEST(JSONLimits, AreThoseOfTheHost) {
  const std::string text = R"([{"a":1,"b":[true,null]},"x",2.5,{},-7])";
  const auto read = [&](const ReadingLimits& limits, Ref<Error>* error) {
    const auto decoder = TQJSONDecoder::init();
    decoder->setLimits(limits);
    const bool isRead = bool(decoder->decodeData(*test::data(text), error));
    EXPECT_EQ(isRead, bool(TQJSONDecoder::initWithData(*test::data(text), limits)->root()));
    return isRead;
  };
  Ref<Error> error;
  EXPECT_TRUE(read({.textBytes = text.size(), .values = 12, .depth = 3}, &error) && !error);
  EXPECT_FALSE(read({.textBytes = text.size() - 1}, &error));
  expectLimit(error, ReadingLimit::textBytes);
  EXPECT_FALSE(read({.values = 11}, &error));
  expectLimit(error, ReadingLimit::values);
  EXPECT_FALSE(read({.depth = 2}, &error));
  EXPECT_EQ(error->userInfo().objectForKey(DebugDescriptionKey)->description(),
            "Too many nested containers around character 12.");
}

#ifndef TQ_SANITIZED  // sanitizers reserve more memory than the limits allow

Ref<Object> mebibyte() { return str(std::string(std::size_t{1} << 20, 'x')); }

TEST(JSONLimits, TextBeyondFourGiBIsRefusedAtOnce) {
  constexpr std::size_t kSize = std::size_t{1} << 32;
  void* const zeros =
      ::mmap(nullptr, kSize, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  ASSERT_NE(zeros, MAP_FAILED);
  const auto decoder = TQJSONDecoder::initWithData({static_cast<const std::byte*>(zeros), kSize});
  ::munmap(zeros, kSize);
  expectLimit(decoder->error(), ReadingLimit::textBytes);
}

/// Runs `act` in a process with 300 MiB of memory and 20 seconds; it must return true.
template <class Act>
void expectWithinLimits(const Act& act) {
  const auto run = [&] {
    const rlimit memory{std::size_t{300} << 20, std::size_t{300} << 20};
    const rlimit time{20, 20};
    ::setrlimit(RLIMIT_AS, &memory);
    ::setrlimit(RLIMIT_CPU, &time);
    ::_exit(act() ? 0 : 1);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

TEST(JSONLimits, WhatWasReadCanBeUsedWithLittleMemory) {
  for (const int depth : {8, 10, 12, 14, 20, 30, 60, 400}) {
    SCOPED_TRACE(depth);
    const std::string text = archived(*doubled(depth));
    expectWithinLimits([&] {
      Ref<Error> error;
      const Ref<Object> object = decoded(text, &error);
      if (!object) return bool(error);
      const auto json = TQJSONEncoder::encodeObjectAsData(*object);
      return json && json->length() < 2000 * text.size() && object->isEqual(*decoded(text)) &&
             !object->description().empty();
    });
  }
}

TEST(JSONLimits, EncodingASharedGraphEndsWithAnError) {
  expectWithinLimits([] {
    const Ref<MutableData> sink = MutableData::data();
    const auto encoder = TQJSONEncoder::encoderForWritingToMutableData(sink);
    encoder->setLongestArchive(1'000'000);
    Ref<Error> error;
    return !encoder->encodeRootObject(*doubled(60), &error) && sink->length() <= 1'000'000 &&
           error->localizedDescription().starts_with("The archive would be longer than 1000000 ");
  });
  // Without a limit of the host, memory may end before the longest archive is reached.
  expectWithinLimits([] {
    Ref<Error> error;
    return !TQJSONEncoder::encodeObjectAsString(doubled(60, mebibyte()), &error) && error &&
           error->domain() == TQJSONEncoderError;
  });
  const TemporaryDirectory directory;
  const auto file = URL::fileURLWithPath(directory.write("file", ""));
  const auto encoder = TQJSONEncoder::encoderForWritingToURL(*file);
  encoder->setLongestArchive(10'000);
  Ref<Error> error;
  EXPECT_FALSE(encoder->encodeRootObject(*doubled(60), &error));
  expectError(error, TQJSONEncoderError, 0);
  EXPECT_LE(dataWithContentsOfURL(*file, nullptr)->length(), 10'000u + 4096);
}

// The host shares its objects itself. A file needs no memory.
TEST(JSONLimits, NoArchiveIsLongerThanTheDecoderReads) {
  Ref<Error> error;
  EXPECT_FALSE(TQJSONEncoder::encodeObject(doubled(60, mebibyte()),
                                           *URL::fileURLWithPath("/dev/null"), &error));
  expectError(error, TQJSONEncoderError, 0,
              "The archive would be longer than 4294967295 bytes. Objects that are shared are "
              "written each time.");
}

#endif

TEST(JSONLimits, AnArchiveMayBeExactlyAsLongAsAllowed) {
  const Ref<Object> object = Array::arrayWithObjects({str(std::string(5000, 'x')), num(7)});
  const std::size_t length = archiveOf(object).size();
  for (const std::size_t longest : {length - 1, length}) {
    const Ref<MutableData> sink = MutableData::data();
    sink->append(std::string_view("before"));
    const auto encoder = TQJSONEncoder::encoderForWritingToMutableData(sink);
    encoder->setLongestArchive(longest);
    EXPECT_EQ(encoder->encodeRootObject(object), longest == length);
    EXPECT_LE(sink->length(), 6 + longest);
  }
}

// A memory checker found this: the parser reads some bytes after the text.
TEST(JSONLimits, BytesBehindAnArchiveAreZero) {
  const Ref<MutableData> written = MutableData::data();
  written->reserve(1000);
  std::ranges::fill(written->spareRoom(1000), std::byte{0xEE});
  ASSERT_TRUE(TQJSONEncoder::encoderForWritingToMutableData(written)->encodeRootObject(num(12345)));
  for (std::size_t i = 0; i < Data::kReadablePadding; ++i) {
    ASSERT_EQ(written->bytes().data()[written->length() + i], std::byte{0}) << i;
  }
}

TEST(JSONLimits, NumbersOfAMillionDigitsAreRead) {
  const std::string zeros(1'000'000, '0');
  const std::string nines(1'000'000, '9');
  const std::pair<std::string, double> cases[] = {
      {"0." + nines, 1},
      {"0." + zeros + "1e1000001", 1},
      {"25" + zeros + "e-1000001", 2.5},
      {"-" + nines + "e-1000000", -1},
      {"0." + zeros + "1", 0},
      {"1." + zeros + "1", 1},
      {"1e" + zeros + "2", 100},
      {"1e-" + nines, 0},
  };
  for (const auto& [text, value] : cases) {
    Ref<Error> error;
    const Ref<Object> read = decoded(text, &error);
    ASSERT_TRUE(read) << text.substr(0, 10) << error->description();
    EXPECT_EQ(refCast<Number>(read)->doubleValue(), value) << text.substr(0, 10);
  }
  EXPECT_FALSE(decoded(nines));
}

}  // namespace
