#include <TQFoundation/platform/bytes/Codec.h>

#include <sys/mman.h>

#include <TQFoundation/platform/bytes/Digest.h>

#include "support/Bytes.h"
#include "support/Errors.h"

namespace {

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

// Runs of literals and matches around the lengths at which opcodes and triples are split.
TEST(LZFSEStream, KeepsRunsAndMatchesOfEveryLength) {
  const std::string noise = randomBytes(40'090);
  const std::string text = documentText(600);
  std::string digits;
  for (const char byte : noise) {
    for (const int shift : {0, 4}) digits += "0123456789abcdef"[byte >> shift & 15];
  }
  std::vector<std::string> plains{
      text + noise.substr(0, 900) + text,  // more literals than may wait for a match
      // The 100 literals and the match at the end are the only triple of the last block.
      noise.substr(0, 39'990) + noise.substr(0, 2000) + noise.substr(39'990) +
          noise.substr(20'000, 2000),
      digits,  // literals of 4 bits: short matches are not worth it
  };
  for (const std::size_t few : {0u, 260u, 530u}) {
    for (std::size_t length = few; length < few + 40; ++length) {
      plains.push_back(noise.substr(0, length) + std::string(60, 'z'));
      for (const std::size_t distance : {9u, 1535u, 1536u}) {
        std::string plain = noise.substr(0, distance);
        while (plain.size() < distance + length) plain += plain[plain.size() - distance];
        plains.push_back(plain + noise.substr(3000, 9) + std::string(60, 'z'));
      }
    }
  }
  for (const std::string& plain : plains) {
    const std::string stream = packed(lzfseCodec, plain, plain.size() + 12);
    ASSERT_LT(stream.size(), plain.size() + 12) << "not stored";
    ASSERT_EQ(unpacked(lzfseCodec, stream, plain.size()), plain);
  }
}

// A block of the plain form without plain bytes, whose symbols take no bits, and that block with
// one field changed. The byte before it is for distances to reach.
TEST(LZFSEStream, ChecksTheFieldsOfAHeader) {
  std::string block = "bvx1" + std::string(776, '\0');
  const auto set = [&](std::size_t at, std::int64_t value) {
    const std::size_t width = at < 32 || at == 40 ? 4 : 2;
    block.replace(at, width, littleEndian(static_cast<std::uint64_t>(value), width));
  };
  const auto isReadWith = [&](std::size_t at, std::int64_t value) {
    set(at, value);
    const std::string stream = "bvx-" + littleEndian(1, 4) + "x" + block + "bvx$";
    EXPECT_FALSE(unpacked(lzfseCodec, stream.substr(0, 9 + at), 1));
    return unpacked(lzfseCodec, stream, 1) == "x";
  };
  constexpr std::size_t kTripleBytes = 24, kRuns = 50, kLengths = 90, kDistances = 130,
                        kLiterals = 258;
  EXPECT_TRUE(isReadWith(kTripleBytes, 8)) << "without any symbol";
  const std::pair<std::size_t, std::int64_t> weights[] = {
      {kRuns, 64}, {kLengths, 64}, {kDistances + 2, 256}, {kLiterals, 1024}};
  for (const auto& [at, value] : weights) set(at, value);
  const Rows<std::size_t, std::vector<std::int64_t>, std::vector<std::int64_t>> fields{
      {4, {0}, {1}},                      // plain bytes
      {12, {0, 4, 40'000}, {3, 40'004}},  // literals
      {16, {0, 1, 10'000}, {10'001}},     // triples
      {20, {0}, {1, -1}},                 // bytes of literals
      {kTripleBytes, {8}, {7, 0, 9}},     // bytes of triples
      {28, {0}, {-1, -8, 1}},             // unused bits of no byte
      {40, {0, -7}, {-8, 1}},             // unused bits of 0
      {32, {0, 1023}, {1024}},            // states
      {38, {0, 1023}, {1024}},
      {44, {0, 63}, {64}},
      {46, {0, 63}, {64}},
      {48, {0, 255}, {256}},
      {kRuns, {64}, {0, 63, 65}},
      {kLengths, {64}, {0, 63, 65}},
      {kDistances, {0}, {1}},
      {kLiterals, {1024}, {0, 1023, 1025}},
  };
  set(12, 4);
  set(16, 1);
  for (const auto& [at, good, bad] : fields) {
    const std::string before = block;
    for (const std::int64_t value : good) EXPECT_TRUE(isReadWith(at, value)) << at << ' ' << value;
    for (const std::int64_t value : bad) EXPECT_FALSE(isReadWith(at, value)) << at << ' ' << value;
    block = before;
  }
  set(kLiterals, 512);
  EXPECT_FALSE(isReadWith(kLiterals + 2, 512)) << "now a literal takes a bit";
  block.insert(772, 8, '\0');
  EXPECT_TRUE(isReadWith(20, 8)) << "and there are 64";
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
      {"LZ4 raw of nothing", &lz4RawCodec, "", "", true},
      {"an empty block", &lzfseCodec, "",
       "bvx2" + littleEndian(0, 4) + littleEndian(std::uint64_t{7} << 60, 8) +
           littleEndian(std::uint64_t{7} << 60 | std::uint64_t{8} << 40, 8) + littleEndian(32, 8) +
           littleEndian(0, 8) + "bvx$",
       false},
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
  for (const std::string& plain :
       {documentText(6000), randomBytes(5000), documentText(300), documentText(30)}) {
    for (const Codec* codec : codecs) {
      bool fits = false;
      const std::size_t size = packed(*codec, plain, plain.size() + 700).size();
      for (std::size_t room = 0; room < plain.size() + 700;) {
        const bool isNear = room + 10 > size && room < size + 2 && codec != &lzmaCodec;
        room += isNear ? 1 : 1 + room / (codec == &lzmaCodec ? 4 : 15);
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

// Opcodes after a literal "x", and what they add to it; null for invalid ones.
TEST(LZFSEStream, ChecksTheOpcodesOfShortData) {
  const Rows<const char*, const char*> cases{
      {"", ""},          {"0001", "xxx"},     {"0000", nullptr},
      {"0002", nullptr}, {"070100", "xxx"},   {"070000", nullptr},
      {"a00400", "xxx"}, {"a00000", nullptr}, {"0e", ""},
      {"16", ""},        {"1e", nullptr},     {"36", nullptr},
      {"70", nullptr},   {"d0", nullptr},     {"f1", nullptr},
      {"4679", nullptr}, {"0001f2", "xxxxx"}, {"0001 4679", "xxxyyyy"},
      {"e179", "y"},     {"e9", nullptr},     {"e0", nullptr},
  };
  for (const auto& [hex, added] : cases) {
    const std::string opcodes = "\xe1x" + fromHex(hex) + fromHex("0600000000000000");
    for (const int size : {4, 400}) {  // of what an invalid opcode stands in
      const std::string plain = added != nullptr ? std::string("x") + added : repeated("x", size);
      const std::string stream = "bvxn" + littleEndian(plain.size(), 4) +
                                 littleEndian(opcodes.size(), 4) + opcodes + "bvx$";
      EXPECT_EQ(unpacked(lzfseCodec, stream, plain.size()).has_value(), added != nullptr) << hex;
      EXPECT_EQ(unpacked(lzfseCodec, stream, plain.size()).value_or(plain), plain) << hex;
    }
  }
  EXPECT_FALSE(
      unpacked(lzfseCodec, "bvxn" + fromHex("00000000 08000000 0600000000000000") + "bvx$", 0));
}

// No block is skipped: stored bytes after a damaged one do not replace its own.
TEST(Stream, NoDamagedBlockIsSkipped) {
  const std::tuple<const Codec*, std::string, std::string> codecs[] = {
      {&lz4Codec, "bv4-", "bv4$"}, {&lzfseCodec, "bvx-", "bvx$"}};
  for (const auto& [codec, stored, end] : codecs) {
    for (const std::size_t size : {700u, 5000u}) {
      const std::string plain = documentText(size);
      std::string stream = packed(*codec, plain, size + 12);
      const std::size_t bits = 8 * (stream.size() - end.size());
      stream.replace(bits / 8, end.size(), stored + littleEndian(size, 4) + plain + end);
      for (std::size_t bit = 0; bit < bits; bit += bit < 500 || bit + 64 > bits ? 1 : 17) {
        const auto mask = static_cast<char>(1 << bit % 8);
        stream[bit / 8] ^= mask;
        ASSERT_FALSE(unpacked(*codec, stream, size)) << bit;
        stream[bit / 8] ^= mask;
      }
    }
  }
}

// The library that reads blocks has lengths of 31 bits. The pages are never written.
TEST(LZ4Stream, RefusesBlocksOfTwoGiB) {
  constexpr std::size_t kSize = 0xffffffff;
  void* const memory = ::mmap(nullptr, kSize, PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  ASSERT_NE(memory, MAP_FAILED);
  const std::span<std::byte> huge(static_cast<std::byte*>(memory), kSize);
  std::array<std::byte, 1> one{};
  const std::string toHuge = "bv41" + littleEndian(kSize, 4) + littleEndian(1, 4) + "xbv4$";
  EXPECT_FALSE(lz4Codec.decode(bytesOf(toHuge), huge));
  EXPECT_FALSE(lz4RawCodec.decode(one, huge));
  EXPECT_EQ(lz4RawCodec.encode(huge, one), 0u);
  const std::string fromHuge = "bv41" + littleEndian(1, 4) + littleEndian(kSize - 12, 4);
  std::ranges::copy(bytesOf(fromHuge), huge.begin());
  EXPECT_FALSE(lz4Codec.decode(huge, one));
  EXPECT_FALSE(lz4RawCodec.decode(huge, one));
  ::munmap(memory, kSize);
}

// The system opens this file, but nothing is mapped where it begins.
TEST(Digest, ReportsReadErrors) {
  Ref<Error> error;
  EXPECT_FALSE(sha1DigestOfFile(*URL::fileURLWithPath("/proc/self/mem"), &error));
  expectFileError(error, 256, EIO, "The file “mem” couldn’t be opened.");
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
