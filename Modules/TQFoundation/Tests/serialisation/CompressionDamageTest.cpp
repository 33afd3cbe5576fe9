#include <TQFoundation/serialisation/TQCompression.h>

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <vector>

#include "serialisation/CompressionSupport.h"

namespace tq {
namespace {

using namespace test;

std::string containerOf(std::string_view plain, TQCompressionAlgorithm algorithm) {
  return std::string(dataByCompressingWithAlgorithm_tq(bytesOf(plain), algorithm)->view());
}

/// Memory that the process ever touched.
std::size_t peakBytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<std::size_t>(usage.ru_maxrss) * 1024;
}

TEST(CompressionDamage, AnotherLengthGivesNone) {
  const std::string plain = documentText(9000);
  for (const auto& [name, algorithm] : kAlgorithms) {
    SCOPED_TRACE(name);
    std::string container = containerOf(plain, algorithm);
    for (const std::uint64_t length : {0u, 1u, 8999u, 9001u, 18000u, 0xffffffffu}) {
      container.replace(container.size() - 4, 4, littleEndian(length, 4));
      EXPECT_EQ(dataByDecompressing_tq(bytesOf(container)), nullptr) << length;
    }
  }
}

TEST(CompressionDamage, CutStreamsGiveNone) {
  // Below and above the length from which LZFSE has blocks of its own.
  for (const std::string& plain : {documentText(900), documentText(6000)}) {
    for (const auto& [name, algorithm] : kAlgorithms) {
      SCOPED_TRACE(name);
      const std::string container = containerOf(plain, algorithm);
      const std::string_view stream = std::string_view(container).substr(10, container.size() - 18);
      for (std::size_t length = 0; length < stream.size(); ++length) {
        ASSERT_EQ(unpacked(algorithm, stream.substr(0, length), plain.size()), nullptr) << length;
      }
    }
  }
}

// Streams carry no sums, so damage may go unnoticed; the length never differs.
TEST(CompressionDamage, FlippedBitsGiveNoneOrTheLength) {
  std::vector<NamedAlgorithm> cases(kAlgorithms.begin(), kAlgorithms.end());
  for (const std::string& plain : {documentText(700), documentText(5000)}) {
    for (const auto& [name, algorithm] : cases) {
      SCOPED_TRACE(name);
      std::string container = containerOf(plain, algorithm);
      std::size_t noticed = 0;
      for (std::size_t bit = 0; bit < 8 * container.size(); bit += 3) {
        const auto mask = static_cast<char>(1 << bit % 8);
        container[bit / 8] ^= mask;
        const Ref<Data> read = dataByDecompressing_tq(bytesOf(container));
        container[bit / 8] ^= mask;
        if (read == nullptr) {
          ++noticed;
        } else if (bit >= 32) {
          ASSERT_EQ(read->length(), plain.size());
        }
      }
      EXPECT_GT(noticed, 0u);
      EXPECT_EQ(textOf(dataByDecompressing_tq(bytesOf(container))), plain);
    }
  }
}

TEST(CompressionDamage, LengthsThatLieTouchNoMemory) {
  const std::size_t before = peakBytes();
  for (const auto& [name, algorithm] : kAlgorithms) {
    SCOPED_TRACE(name);
    const bool isDeflate = algorithm == TQCompressionAlgorithm::deflate;
    const std::string head =
        isDeflate ? fromHex("1f8b0800 00000000 0003")
                  : littleEndian(static_cast<std::uint32_t>(algorithm), 8) + fromHex("0003");
    for (const std::size_t payload : {std::size_t{0}, std::size_t{100}, std::size_t{100'000}}) {
      const std::string container = head + randomBytes(payload) + fromHex("00000000 ffffffff");
      EXPECT_EQ(dataByDecompressing_tq(bytesOf(container)), nullptr);
    }
    EXPECT_EQ(unpacked(algorithm, randomBytes(1000), ~std::uint64_t{0}), nullptr);
  }
  const std::string older = fromHex("01080000 ffffffff ffffffff 62767824 0000");
  EXPECT_EQ(dataByDecompressing_tq(bytesOf(older)), nullptr);
  // Headers inside the streams may lie as well.
  const std::string lying[] = {
      "bvxn" + littleEndian(0xffffffff, 4) + littleEndian(8, 4) + fromHex("0600000000000000"),
      "bvx-" + littleEndian(0xffffffff, 4) + "bvx$",
      "bvx2" + littleEndian(0xffffffff, 4) + std::string(24, '\0'),
      "bvx1" + std::string(4, '\xff') + std::string(800, '\xff')};
  for (const std::string& stream : lying) {
    EXPECT_EQ(unpacked(TQCompressionAlgorithm::lzfse, stream, 100'000), nullptr);
  }
  for (const char* magic : {"bv41", "bv4-"}) {
    const std::string stream = magic + littleEndian(0xffffffff, 4) + littleEndian(4, 4) + "bv4$";
    EXPECT_EQ(unpacked(TQCompressionAlgorithm::lz4, stream, 1000), nullptr);
  }
  EXPECT_LT(peakBytes() - before, std::size_t{200} << 20) << "xz may take 128 MiB for its state";
}

#ifndef TQ_SANITIZED  // they reserve more than any limit leaves
TEST(CompressionFault, WithoutMemoryThereIsNone) {
  // The child process may not grow any more, beyond what is free in its heap already.
  const auto run = [] {
    const std::string plain(std::size_t{64} << 20, 'x');
    const std::string container = containerOf(plain, TQCompressionAlgorithm::lz4);
    rlimit limit{};
    limit.rlim_cur = limit.rlim_max = std::size_t{1} << 20;
    setrlimit(RLIMIT_AS, &limit);
    for (const auto& [name, algorithm] : kAlgorithms) {
      if (dataByCompressingWithAlgorithm_tq(bytesOf(plain), algorithm) != nullptr) _exit(1);
    }
    Ref<Error> error;
    if (gzipped_tqAndReturnError(bytesOf(plain), &error) != nullptr || error == nullptr) _exit(2);
    _exit(dataByDecompressing_tq(bytesOf(container)) == nullptr ? 0 : 3);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}
#endif

}  // namespace
}  // namespace tq
