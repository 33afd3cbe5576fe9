#include <TQFoundation/serialisation/TQCompression.h>

#include <gmock/gmock.h>

#include "serialisation/CompressionSupport.h"

namespace tq {
namespace {

using namespace test;
using enum TQCompressionAlgorithm;

TEST(CompressionContainer, HasTheLayoutByteForByte) {
  const std::string zeros(5000, '\0');
  const struct {
    const char* name;
    TQCompressionAlgorithm algorithm;
    std::string plain, head, tail;
  } cases[] = {
      {"nothing", deflate, "", "00000000 00000000 0003", fromHex("00000000 00000000")},
      {"unknown algorithm", TQCompressionAlgorithm{99}, "abc", "00000000 00000000 0003",
       "abc" + fromHex("c2412435 03000000")},
      {"deflate", deflate, zeros, "1f8b0800 00000000 0003", littleEndian(5000, 4)},
      {"few bytes", deflate, std::string(30, 'a'), "1f8b0800 00000000 0003", littleEndian(30, 4)},
      {"LZ4", lz4, zeros, "00010000 00000000 0003 62763431", littleEndian(5000, 4)},
      {"LZ4 raw", lz4Raw, zeros, "01010000 00000000 0003", littleEndian(5000, 4)},
      {"LZMA", lzma, zeros, "06030000 00000000 0003 fd377a58", littleEndian(5000, 4)},
      {"LZFSE", lzfse, zeros, "01080000 00000000 0003 62767832", littleEndian(5000, 4)},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const std::string container =
        textOf(dataByCompressingWithAlgorithm_tq(bytesOf(c.plain), c.algorithm));
    EXPECT_THAT(container, testing::StartsWith(fromHex(c.head)));
    EXPECT_THAT(container, testing::EndsWith(c.tail));
    EXPECT_LE(container.size(), c.plain.size() + 18);
  }
}

TEST(CompressionContainer, GivesBackWhatWasPutIn) {
  const std::string document = documentText(300'000);
  const std::string plains[] = {
      "",
      document.substr(0, 65537),  // an LZ4 block and one byte
      std::string(1'000'000, 'x'),
      randomBytes(30'000) + document + randomBytes(90'000) + document,
      document.substr(0, 3000) + randomBytes(259'000) + document.substr(0, 3000),
  };
  for (const std::string& plain : plains) {
    for (const auto& [name, algorithm] : kAlgorithms) {
      SCOPED_TRACE(std::string(name) + ", " + std::to_string(plain.size()));
      const Ref<Data> container = dataByCompressingWithAlgorithm_tq(bytesOf(plain), algorithm);
      ASSERT_NE(container, nullptr);
      EXPECT_LE(container->length(), plain.size() + 18);
      EXPECT_EQ(textOf(dataByDecompressing_tq(*container)), plain);
    }
  }
}

TEST(CompressionContainer, TakesAStreamAsLongAsThePlain) {
  // Something between random bytes, which are stored, and repetition, which shrinks.
  const std::string noise = randomBytes(40);
  for (const auto& [algorithm, mark] : {std::pair(lz4Raw, '\1'), std::pair(deflate, '\x1f')}) {
    bool found = false;
    for (std::size_t repeated = 4; repeated < 40 && !found; ++repeated) {
      const std::string plain = noise + noise.substr(0, repeated) + "last bytes!!";
      const Ref<Data> container = dataByCompressingWithAlgorithm_tq(bytesOf(plain), algorithm);
      found = container->length() == plain.size() + 18 && container->view()[0] == mark;
      EXPECT_EQ(textOf(dataByDecompressing_tq(*container)), plain);
    }
    EXPECT_TRUE(found) << mark;
  }
}

TEST(CompressionContainer, IsReadWrittenByHand) {
  const std::string head = fromHex("00000000 00000000 0003");
  const std::string lz4Head = fromHex("00010000 00000000 0003");
  const std::string lzfseStream = fromHex("6276782d 03000000") + "abc" + fromHex("62767824");
  const struct {
    const char* name;
    std::string container, plain;
  } cases[] = {
      {"stored, whatever its length says", head + "abc" + fromHex("00000000 ffffffff"), "abc"},
      {"the eight bytes may say anything else",
       fromHex("00000000 12345678 9abc") + "abc" + std::string(8, '\0'), "abc"},
      {"bytes behind the stream", lz4Head + "bv4$more" + std::string(8, '\0'), ""},
      {"LZFSE", fromHex("01080000 00000000 0003") + lzfseStream + fromHex("00000000 03000000"),
       "abc"},
      {"LZFSE, the older layout", fromHex("01080000 03000000 00000000") + lzfseStream, "abc"},
      {"the older layout of another length", fromHex("01080000 02000000 00000000") + lzfseStream,
       "none"},
      {"the older layout has no other algorithm",
       fromHex("00010000 00000000 00000000") + "bv4$" + fromHex("0000"), "none"},
      {"unknown algorithm", fromHex("02010000 00000000 0003") + std::string(8, '\0'), "none"},
      {"shortest", std::string(18, '\0'), ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(textOf(dataByDecompressing_tq(bytesOf(c.container))), c.plain);
  }
}

TEST(CompressionContainer, HeaderAndFooterMustFit) {
  constexpr std::size_t kHuge = ~std::size_t{0};
  const auto bytes = bytesOf("0123456789");
  EXPECT_EQ(textOf(dataByDecompressingWithAlgorithm(bytes, stored, 4, 3, 77)), "456");
  EXPECT_EQ(textOf(dataByDecompressingWithAlgorithm(bytes, stored, 6, 4, 0)), "");
  EXPECT_EQ(dataByDecompressingWithAlgorithm(bytes, stored, 6, 5, 0), nullptr);
  EXPECT_EQ(dataByDecompressingWithAlgorithm(bytes, stored, kHuge, 12, 0), nullptr);
  EXPECT_EQ(dataByDecompressingWithAlgorithm(bytes, stored, 2, kHuge, 0), nullptr);
}

TEST(Gzip, IsRecognisedByItsStartAndFailsWhereNothingIsSaved) {
  EXPECT_TRUE(isGzipped_tq(bytesOf("\x1f\x8b" + std::string(16, 'x'))));
  EXPECT_FALSE(isGzipped_tq(bytesOf("\x1f\x8b" + std::string(15, 'x'))));
  EXPECT_TRUE(isGzipped_tq(*gzipped_tq(bytesOf(documentText(2000)))));
  for (const std::string& plain : {std::string(), randomBytes(1000)}) {
    EXPECT_THROW((void)gzipped_tq(bytesOf(plain)), gzip_tqError);
    Ref<Error> error;
    EXPECT_EQ(gzipped_tqAndReturnError(bytesOf(plain), &error), nullptr);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->domain(), gzip_tqErrorDomain);
    EXPECT_EQ(error->code(), gzip_tqErrorCannotCompress);
  }
}

}  // namespace
}  // namespace tq
