#include <TQFoundation/platform/bytes/Checksum.h>

#include <zlib.h>

namespace tq {

std::uint32_t crc32(std::span<const std::byte> bytes) noexcept {
  return static_cast<std::uint32_t>(
      ::crc32_z(0, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size()));
}

}  // namespace tq
