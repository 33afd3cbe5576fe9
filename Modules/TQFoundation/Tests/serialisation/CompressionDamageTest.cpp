#include <TQFoundation/serialisation/TQCompression.h>

#include <gtest/gtest.h>
#include <sys/resource.h>

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

// Below and above the length from which LZFSE has blocks of its own. Streams carry no sums, so
// flipped bits may go unnoticed; the length never differs.
TEST(CompressionDamage, GivesNoneOrTheLength) {
  for (const std::string& plain : {documentText(700), documentText(5000)}) {
    for (const auto& [name, algorithm] : kAlgorithms) {
      SCOPED_TRACE(name);
      std::string container = containerOf(plain, algorithm);
      const std::string_view stream = std::string_view(container).substr(10, container.size() - 18);
      for (const std::uint64_t length :
           {std::uint64_t{0}, plain.size() - 1, plain.size() + 1, std::uint64_t{0xffffffff}}) {
        ASSERT_EQ(unpacked(algorithm, stream, length), nullptr) << length;
      }
      for (std::size_t length = 0; length < stream.size(); ++length) {
        ASSERT_EQ(unpacked(algorithm, stream.substr(0, length), plain.size()), nullptr) << length;
      }
      for (std::size_t bit = 32; bit < 8 * container.size(); bit += 3) {
        const auto mask = static_cast<char>(1 << bit % 8);
        container[bit / 8] ^= mask;
        const Ref<Data> read = dataByDecompressing_tq(bytesOf(container));
        container[bit / 8] ^= mask;
        ASSERT_TRUE(read == nullptr || read->length() == plain.size());
      }
    }
  }
}

TEST(CompressionDamage, LengthsThatLieTouchNoMemory) {
  const std::size_t before = peakBytes();
  for (const auto& [name, algorithm] : kAlgorithms) {
    SCOPED_TRACE(name);
    EXPECT_EQ(unpacked(algorithm, randomBytes(100'000), 0xffffffff), nullptr);
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
  const std::string block = "bv41" + littleEndian(0xffffffff, 4) + littleEndian(4, 4) + "bv4$";
  EXPECT_EQ(unpacked(TQCompressionAlgorithm::lz4, block, 1000), nullptr);
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
