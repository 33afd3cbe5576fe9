#include <TQFoundation/platform/bytes/Codec.h>

#include <TQFoundation/platform/bytes/Digest.h>

#include "support/Bytes.h"

namespace {

using namespace test;

std::string packed(const Codec& codec, std::string_view plain, std::size_t capacity) {
  std::vector<std::byte> room(capacity);
  const std::size_t size = codec.encode(bytesOf(plain), room);
  return {reinterpret_cast<const char*>(room.data()), size};
}

std::optional<std::string> unpacked(const Codec& codec, std::string_view stream, std::size_t size) {
  std::string plain(size, '?');
  if (!codec.decode(bytesOf(stream), std::as_writable_bytes(std::span(plain)))) return std::nullopt;
  return plain;
}

// Streams from the format's reference encoder (true), and streams made to use every form at its
// limits.
TEST(LZFSEStream, ReadsStreamsOfOtherEncoders) {
  const Rows<const char*, std::size_t, const char*, bool> cases{
      {"empty", 0, "da39a3ee5e6b4b0d3255bfef95601890afd80709", true},
      {"one", 1, "c3156e00d3c2588c639e0d3cf6821258b05761c7", true},
      {"seven", 7, "de69b8a4a5604d0486e6420db81e39eb464a17b2", true},
      {"text100", 100, "cb94d43dae6a7dc31c15b22e540d280d426dc61b", true},
      {"rand2000", 2000, "537e1806134cdb5035f0c9a035766f87dcb84198", true},
      {"rep4096", 4096, "21f71fef581769bfa5d3d8dd9dfa15d8e3c8dd9e", true},
      {"text3000", 3000, "a3da84ac0250f200b86bba7ca64fda356c963de0", true},
      {"rep4095", 4095, "f454aa587cf3c3b9059ede530a27a727259df32b", true},
      {"rand4096", 4096, "31066b9a480e63dd724022aac577353646a555bd", true},
      {"rand4096.stored", 4096, "31066b9a480e63dd724022aac577353646a555bd", true},
      {"zeros5000", 5000, "044ef48af264fd3e304ab9e64f9656f37af763a6", true},
      {"text64k", 65536, "9d733add752c2d8f8978c10dafa7653bd3a0c12f", true},
      {"text64k.v1", 65536, "9d733add752c2d8f8978c10dafa7653bd3a0c12f", true},
      {"mixed300k", 307200, "8f03165d057e1c8687e6a44bf9144fb89c04a03a", true},
      {"lzvn-ops", 68302, "5e3411120f1b0fd64d92d232f713e057aa5cd7b9", false},
      {"chain", 15429, "82d5eb8dc50c04db684883576a3e5cd0b1caece0", false},
      {"limits", 270914, "9c406e719e6887950031de998c9d3947bb48cbff", false},
  };
  for (const auto& [name, plainSize, sha1, isReferenceEncoding] : cases) {
    SCOPED_TRACE(name);
    const std::string stream = fileContents(TQ_TEST_DATA "/" + std::string(name) + ".lzfse");
    ASSERT_FALSE(stream.empty());
    const auto plain = unpacked(lzfseCodec, stream, plainSize);
    ASSERT_TRUE(plain);
    EXPECT_TRUE(std::ranges::equal(*sha1Digest(bytesOf(*plain)), bytesOf(fromHex(sha1))));
    EXPECT_FALSE(unpacked(lzfseCodec, stream, plainSize + 1));
    EXPECT_TRUE(plainSize == 0 || !unpacked(lzfseCodec, stream, plainSize - 1));

    const std::string ours = packed(lzfseCodec, *plain, plainSize + 700);
    EXPECT_EQ(unpacked(lzfseCodec, ours, plainSize), plain);
    EXPECT_TRUE(!isReferenceEncoding || ours.size() <= stream.size());
  }
}

TEST(Stream, KnownAnswers) {
  const std::string tests = repeated("test ", 16);
  const std::string zero(1, '\0');
  // True: this library's encoder writes the same stream.
  const Rows<const char*, const Codec*, std::string, std::string, bool> cases{
      {"LZ4 of a byte", &lz4Codec, zero, fromHex("6276342d 01000000 00 62763424"), true},
      {"LZ4 stored", &lz4Codec, tests, fromHex("6276342d 50000000") + tests + fromHex("62763424"),
       false},
      {"LZ4 raw, literals", &lz4RawCodec, tests, fromHex("f041") + tests, false},
      {"LZMA of nothing", &lzmaCodec, "",
       fromHex("fd377a585a000000ff12d941 00000000 1cdf4421 06729e7a 0100000000 00595a"), true},
      {"LZMA of a byte", &lzmaCodec, zero,
       fromHex("fd377a585a000000ff12d941 02c005012101160027e86383 0100000000000000"
               "00011101ada65804 06729e7a0100000000 00595a"),
       true},
      {"LZVN", &lzfseCodec, tests,
       fromHex("6276786e 50000000 15000000 e57465737420 3805 f02f e27420 0600000000000000"
               "62767824"),
       false},
  };
  for (const auto& [name, codec, plain, stream, isOurs] : cases) {
    SCOPED_TRACE(name);
    EXPECT_EQ(unpacked(*codec, stream, plain.size()), plain);
    EXPECT_TRUE(!isOurs || packed(*codec, plain, 100) == stream);
  }
}

// An encoder uses the output up to its last byte, or reports that it is too small.
TEST(Stream, FitsOrIsRefused) {
  const Codec* const codecs[] = {&deflateCodec, &lz4Codec, &lz4RawCodec, &lzmaCodec, &lzfseCodec};
  for (const std::string& plain : {documentText(6000), randomBytes(5000)}) {
    for (const Codec* codec : codecs) {
      bool fits = false;
      for (std::size_t room = 0; room < plain.size() + 700; room += 1 + room / 15) {
        const std::string stream = packed(*codec, plain, room);
        ASSERT_LE(stream.size(), room);
        if (stream.empty()) continue;
        fits = true;
        ASSERT_EQ(unpacked(*codec, stream, plain.size()), plain);
      }
      EXPECT_TRUE(fits);
    }
  }
}

// Blocks of a framed stream share one history, including that of stored blocks.
TEST(LZ4Stream, MatchesReachIntoEarlierBlocks) {
  const std::string block = fromHex("0f 0500 01 50") + "again";  // 20 bytes from 5 back, 5 literals
  const std::string sizes = littleEndian(25, 4) + littleEndian(block.size(), 4);
  const std::string stream = "bv4-" + littleEndian(5, 4) + "hello" + "bv41" + sizes + block +
                             "bv4-" + littleEndian(0, 4) + "bv4$";
  EXPECT_EQ(unpacked(lz4Codec, stream, 30), "hellohellohellohellohelloagain");
}

}  // namespace
