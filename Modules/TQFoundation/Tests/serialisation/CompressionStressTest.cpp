#include <TQFoundation/serialisation/TQCompression.h>

#include <gtest/gtest.h>
#include <sys/mman.h>

#include "serialisation/CompressionSupport.h"

namespace tq {
namespace {

#ifndef TQ_SANITIZED  // they would fill the sparse pages
// Pages that nobody writes to all stand for one page of zeros.
class SparseZeros {
 public:
  explicit SparseZeros(std::size_t size)
      : size_(size),
        memory_(
            ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0)) {}
  ~SparseZeros() { ::munmap(memory_, size_); }
  SparseZeros(const SparseZeros&) = delete;
  SparseZeros& operator=(const SparseZeros&) = delete;

  [[nodiscard]] std::span<const std::byte> bytes() const {
    return {static_cast<const std::byte*>(memory_), size_};
  }

 private:
  std::size_t size_;
  void* memory_;
};

TEST(CompressionStress, BeyondFourGiBTheContainerKeepsTheLowHalfOfTheLength) {
  constexpr std::size_t kSize = (std::size_t{1} << 32) + 1234;
  const SparseZeros zeros(kSize);
  const Ref<Data> container =
      dataByCompressingWithAlgorithm_tq(zeros.bytes(), TQCompressionAlgorithm::lz4);
  ASSERT_NE(container, nullptr);
  EXPECT_LT(container->length(), kSize / 200);
  EXPECT_EQ(container->view().substr(0, 10), test::fromHex("00010000 00000000 0003"));
  EXPECT_EQ(container->view().substr(container->length() - 8, 4), test::fromHex("d7fa6ace"))
      << "the sum of all bytes";
  EXPECT_EQ(container->view().substr(container->length() - 4), test::littleEndian(1234, 4));
  EXPECT_EQ(dataByDecompressing_tq(*container), nullptr) << "1234 is not the length";
}
#endif

}  // namespace
}  // namespace tq
