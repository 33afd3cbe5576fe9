#pragma once

#include <array>

#include <TQFoundation/serialisation/TQCompression.h>

#include "support/Bytes.h"

namespace tq::test {

struct NamedAlgorithm {
  const char* name;
  TQCompressionAlgorithm algorithm;
};

inline constexpr std::array<NamedAlgorithm, 5> kAlgorithms = {{
    {"LZ4", TQCompressionAlgorithm::lz4},
    {"LZ4 raw", TQCompressionAlgorithm::lz4Raw},
    {"deflate", TQCompressionAlgorithm::deflate},
    {"LZMA", TQCompressionAlgorithm::lzma},
    {"LZFSE", TQCompressionAlgorithm::lzfse},
}};

/// None reads as such in a failure.
inline std::string textOf(const Ref<Data>& data) {
  return data != nullptr ? std::string(data->view()) : "none";
}

/// The stream in the container of `plain`.
inline std::string payloadOf(std::string_view plain, TQCompressionAlgorithm algorithm) {
  const Ref<Data> container = dataByCompressingWithAlgorithm_tq(bytesOf(plain), algorithm);
  return std::string(container->view().substr(10, container->length() - 18));
}

inline Ref<Data> unpacked(TQCompressionAlgorithm algorithm, std::string_view stream,
                          std::uint64_t size) {
  return dataByDecompressingWithAlgorithm(bytesOf(stream), algorithm, 0, 0, size);
}

}  // namespace tq::test
