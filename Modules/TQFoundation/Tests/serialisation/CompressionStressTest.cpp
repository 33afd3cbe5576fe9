#include <TQFoundation/serialisation/TQCompression.h>

#include <gtest/gtest.h>
#include <sys/mman.h>

#include "serialisation/CompressionSupport.h"

namespace tq {
namespace {

#ifndef TQ_SANITIZED  // they would fill the sparse pages
TEST(CompressionStress, BeyondFourGiBTheContainerKeepsTheLowHalfOfTheLength) {
  constexpr std::size_t kSize = (std::size_t{1} << 32) + 1234;
  // Pages that nobody writes to all stand for one page of zeros.
  void* const zeros =
      ::mmap(nullptr, kSize, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  const Ref<Data> container = dataByCompressingWithAlgorithm_tq(
      {static_cast<const std::byte*>(zeros), kSize}, TQCompressionAlgorithm::lz4);
  ::munmap(zeros, kSize);
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
