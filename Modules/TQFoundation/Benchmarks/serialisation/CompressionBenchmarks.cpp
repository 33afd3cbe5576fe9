#include <benchmark/benchmark.h>
#include <libdeflate.h>
#include <lz4.h>
#include <zlib.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <random>
#include <string>

#include <TQFoundation/serialisation/TQCompression.h>

#include "serialisation/Versus.h"

namespace tq {
namespace {

using enum TQCompressionAlgorithm;
using bench::versus;

/// Returns archive text of shapes: the keys repeat, the numbers do not.
const std::string& document(std::size_t size) {
  static auto& documents = *new std::map<std::size_t, std::string>;
  std::string& text = documents[size];
  std::mt19937 random(1);
  std::uniform_real_distribution<double> coordinate(0, 1000);
  while (text.size() < size) {
    text += R"({"_class":"Shape","name":"Oval )" + std::to_string(random() % 10000) +
            R"(","frame":"{{)" + std::to_string(coordinate(random)) + ", " +
            std::to_string(coordinate(random)) + R"(}, {100, 64}}","hidden":false,"opacity":1,)" +
            R"("fill":{"_class":"Color","red":0.25,"green":)" +
            std::to_string(coordinate(random) / 1000) + R"(,"blue":1,"alpha":1},"points":[)";
    for (int i = 0; i < 6; ++i) text += "\"{" + std::to_string(coordinate(random)) + ", 12.5}\",";
    text += "null]},\n";
  }
  text.resize(size);
  return text;
}

std::span<const std::byte> bytesOf(const std::string& text) {
  return std::as_bytes(std::span(text));
}

/// A handwritten container: one block, the stream, the checksum, truncation.
template <class Encode>
void packByHand(const std::string& plain, Encode encode) {
  auto* block = static_cast<char*>(std::malloc(plain.size() + 18));
  const std::size_t size = encode(block + 10);
  const std::size_t sum = ::crc32_z(0, reinterpret_cast<const Bytef*>(plain.data()), plain.size());
  std::memcpy(block + 10 + size, &sum, 8);
  benchmark::DoNotOptimize(block = static_cast<char*>(std::realloc(block, size + 18)));
  std::free(block);
}

template <class Decode>
void unpackByHand(std::size_t size, Decode decode) {
  auto* block = static_cast<char*>(std::malloc(size));
  decode(block);
  benchmark::DoNotOptimize(block);
  std::free(block);
}

std::size_t deflateWithLibdeflate(const std::string& plain, char* out) {
  libdeflate_compressor* state = libdeflate_alloc_compressor(5);
  const std::size_t size =
      libdeflate_deflate_compress(state, plain.data(), plain.size(), out, plain.size());
  libdeflate_free_compressor(state);
  return size;
}

std::size_t deflateWithZlib(const std::string& plain, char* out) {
  z_stream stream{};
  deflateInit2(&stream, 5, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY);
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(plain.data()));
  stream.avail_in = static_cast<uInt>(plain.size());
  stream.next_out = reinterpret_cast<Bytef*>(out);
  stream.avail_out = static_cast<uInt>(plain.size());
  ::deflate(&stream, Z_FINISH);
  const std::size_t size = stream.total_out;
  deflateEnd(&stream);
  return size;
}

void inflateWithZlib(std::string_view packed, std::size_t size, char* out) {
  z_stream stream{};
  inflateInit2(&stream, -15);
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
  stream.avail_in = static_cast<uInt>(packed.size());
  stream.next_out = reinterpret_cast<Bytef*>(out);
  stream.avail_out = static_cast<uInt>(size);
  inflate(&stream, Z_FINISH);
  inflateEnd(&stream);
}

std::string_view payloadOf(const Data& container) {
  return container.view().substr(10, container.length() - 18);
}

std::string packedWithZlib(const std::string& plain) {
  std::string packed(plain.size(), '\0');
  packed.resize(deflateWithZlib(plain, packed.data()));
  return packed;
}

/// Times the whole container. "ratio" is its size relative to the plain bytes, "peer_ratio" that of
/// the peer's stream.
template <class Encode>
void compress(benchmark::State& state, TQCompressionAlgorithm algorithm, Encode peer) {
  const std::string& plain = document(static_cast<std::size_t>(state.range(0)));
  const auto size = static_cast<double>(plain.size());
  std::size_t ours = 0;
  std::size_t theirs = 0;
  versus(
      state, plain.size(),
      [&] { ours = dataByCompressingWithAlgorithm_tq(bytesOf(plain), algorithm)->length(); },
      [&] { packByHand(plain, [&](char* out) { return theirs = peer(plain, out); }); });
  state.counters["ratio"] = static_cast<double>(ours) / size;
  state.counters["peer_ratio"] = static_cast<double>(theirs) / size;
}

/// Times reading the whole container against decompressing `packed` into a new block.
template <class Decode>
void decompress(benchmark::State& state, TQCompressionAlgorithm algorithm, Decode peer) {
  const std::string& plain = document(static_cast<std::size_t>(state.range(0)));
  const Ref<Data> container = dataByCompressingWithAlgorithm_tq(bytesOf(plain), algorithm);
  versus(
      state, plain.size(), [&] { benchmark::DoNotOptimize(dataByDecompressing_tq(*container)); },
      [&] { unpackByHand(plain.size(), [&](char* out) { peer(payloadOf(*container), out); }); });
}

void BM_Deflate_CompressVsLibdeflate(benchmark::State& state) {
  compress(state, deflate, deflateWithLibdeflate);
}
void BM_Deflate_CompressVsZlib(benchmark::State& state) {
  compress(state, deflate, deflateWithZlib);
}
void BM_LZFSE_CompressVsZlib(benchmark::State& state) { compress(state, lzfse, deflateWithZlib); }
void BM_LZ4_CompressVsLiblz4(benchmark::State& state) {
  compress(state, lz4, [](const std::string& plain, char* out) {
    LZ4_stream_t* stream = LZ4_createStream();
    std::size_t size = 0;
    for (std::size_t at = 0; at < plain.size(); at += 65536) {
      const auto block = static_cast<int>(std::min<std::size_t>(65536, plain.size() - at));
      const int most = LZ4_compressBound(block);
      size += static_cast<std::size_t>(
          LZ4_compress_fast_continue(stream, plain.data() + at, out + size, block, most, 1));
    }
    LZ4_freeStream(stream);
    return size;
  });
}
void BM_LZ4Raw_CompressVsLiblz4(benchmark::State& state) {
  compress(state, lz4Raw, [](const std::string& plain, char* out) {
    const auto size = static_cast<int>(plain.size());
    return static_cast<std::size_t>(LZ4_compress_default(plain.data(), out, size, size));
  });
}

void BM_Deflate_DecompressVsLibdeflate(benchmark::State& state) {
  const auto size = static_cast<std::size_t>(state.range(0));
  decompress(state, deflate, [size](std::string_view packed, char* out) {
    libdeflate_decompressor* decoder = libdeflate_alloc_decompressor();
    libdeflate_deflate_decompress(decoder, packed.data(), packed.size(), out, size, nullptr);
    libdeflate_free_decompressor(decoder);
  });
}
void BM_LZ4Raw_DecompressVsLiblz4(benchmark::State& state) {
  const auto size = static_cast<int>(state.range(0));
  decompress(state, lz4Raw, [size](std::string_view packed, char* out) {
    LZ4_decompress_safe(packed.data(), out, static_cast<int>(packed.size()), size);
  });
}
void BM_LZFSE_DecompressVsZlib(benchmark::State& state) {
  const auto size = static_cast<std::size_t>(state.range(0));
  const std::string packed = packedWithZlib(document(size));
  decompress(state, lzfse,
             [&](std::string_view, char* out) { inflateWithZlib(packed, size, out); });
}

/// From 64 KiB to 50 MB, to show that the cost is linear.
void sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->ArgName("bytes")->Arg(1 << 16)->Arg(1 << 20)->Arg(50'000'000);
  benchmark->UseManualTime()->Unit(benchmark::kMillisecond);
}

BENCHMARK(BM_Deflate_CompressVsLibdeflate)->Apply(sizes);
BENCHMARK(BM_Deflate_CompressVsZlib)->Apply(sizes);
BENCHMARK(BM_Deflate_DecompressVsLibdeflate)->Apply(sizes);
BENCHMARK(BM_LZ4_CompressVsLiblz4)->Apply(sizes);
BENCHMARK(BM_LZ4Raw_CompressVsLiblz4)->Apply(sizes);
BENCHMARK(BM_LZ4Raw_DecompressVsLiblz4)->Apply(sizes);
BENCHMARK(BM_LZFSE_CompressVsZlib)->Apply(sizes);
BENCHMARK(BM_LZFSE_DecompressVsZlib)->Apply(sizes);

}  // namespace
}  // namespace tq
