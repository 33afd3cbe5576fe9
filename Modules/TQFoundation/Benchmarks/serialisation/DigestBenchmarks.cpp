#include <benchmark/benchmark.h>
#include <openssl/evp.h>

#include <string>

#include <TQFoundation/serialisation/TQDigests.h>
#include <TQFoundation/serialisation/TQFNV1aBuilder.h>

#include "serialisation/Versus.h"

namespace tq {
namespace {

using bench::versus;

/// Short inputs are digested many times for one measurement.
std::size_t repeatsFor(std::size_t size) { return std::max<std::size_t>(1, (1 << 16) / size); }

void BM_SHA1_DataVsOpenSSL(benchmark::State& state) {
  const std::string text(static_cast<std::size_t>(state.range(0)), 'x');
  const std::size_t repeats = repeatsFor(text.size());
  versus(
      state, text.size() * repeats,
      [&] {
        for (std::size_t i = 0; i < repeats; ++i) {
          benchmark::DoNotOptimize(sha1Data_tq(std::as_bytes(std::span(text))));
        }
      },
      [&] {
        unsigned char digest[20];
        for (std::size_t i = 0; i < repeats; ++i) {
          EVP_Digest(text.data(), text.size(), digest, nullptr, EVP_sha1(), nullptr);
          benchmark::DoNotOptimize(digest);
        }
      });
}

/// The literal definition: exclusive or, then one 128-bit product.
__extension__ using Wide = unsigned __int128;

Wide plainFNV1a(std::string_view text) {
  constexpr Wide kPrime = (Wide{1} << 88) + 315;
  Wide state = Wide{0x6c62272e07bb0142} << 64 | 0x62b821756295c58d;
  for (const char byte : text) {
    state ^= static_cast<unsigned char>(byte);
    state *= kPrime;
  }
  return state;
}

void BM_FNV1a_AddDataVsPlainLoop(benchmark::State& state) {
  const std::string text(static_cast<std::size_t>(state.range(0)), 'x');
  const std::size_t repeats = repeatsFor(text.size());
  TQFNV1aBuilder builder;
  versus(
      state, text.size() * repeats,
      [&] {
        for (std::size_t i = 0; i < repeats; ++i) {
          builder.addData(std::as_bytes(std::span(text)));
          benchmark::DoNotOptimize(builder);
        }
      },
      [&] {
        for (std::size_t i = 0; i < repeats; ++i) {
          benchmark::DoNotOptimize(plainFNV1a(text));
        }
      });
}

void sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->ArgName("bytes")->Arg(64)->Arg(1 << 16)->Arg(50'000'000)->UseManualTime();
}

BENCHMARK(BM_SHA1_DataVsOpenSSL)->Apply(sizes);
BENCHMARK(BM_FNV1a_AddDataVsPlainLoop)->Apply(sizes);

}  // namespace
}  // namespace tq
