#include <cstdint>
#include <cstdlib>
#include <span>

#include <TQFoundation/serialisation/TQCompression.h>

namespace {

void require(bool condition) {
  if (!condition) std::abort();
}

/// Compresses and decompresses the plain bytes, which must be unchanged.
void checkRoundTrip(const tq::Data& plain, tq::TQCompressionAlgorithm algorithm) {
  const tq::Ref<tq::Data> container = tq::dataByCompressingWithAlgorithm_tq(plain, algorithm);
  require(container->length() <= plain.length() + 18);
  const tq::Ref<tq::Data> back = tq::dataByDecompressing_tq(*container);
  require(back != nullptr && back->isEqual(plain));
}

}  // namespace

// The input is a container from an untrusted source.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using enum tq::TQCompressionAlgorithm;
  const auto bytes = std::as_bytes(std::span(data, size));
  const tq::Ref<tq::Data> plain = tq::dataByDecompressing_tq(bytes);
  if (plain == nullptr) return 0;
  require(plain->length() <= size * 7100);
  if (plain->length() > 100'000) return 0;
  for (const auto algorithm : {deflate, lz4, lz4Raw, lzfse}) checkRoundTrip(*plain, algorithm);
  require((tq::gzipped_tqAndReturnError(*plain, nullptr) != nullptr) ==
          tq::isGzipped_tq(*tq::dataByCompressingWithAlgorithm_tq(*plain, deflate)));
  return 0;
}
