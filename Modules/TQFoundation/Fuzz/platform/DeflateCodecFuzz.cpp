#include "CodecFuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return tq::fuzz::fuzzCodec(tq::deflateCodec, data, size);
}
