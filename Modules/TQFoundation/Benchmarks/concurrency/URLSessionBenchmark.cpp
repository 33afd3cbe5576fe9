// A download of 1 GiB from a server on the loopback interface (a thread of the same process), in
// wall-clock time: a session task with a sink that counts bytes, compared with libcurl and a
// callback that counts bytes. "peak" is the peak memory use of the process so far.

#include <benchmark/benchmark.h>
#include <curl/curl.h>
#include <sys/resource.h>

#include <future>

#include <TQFoundation/platform/network/URLSession.h>
#include "../../Tests/support/LoopbackServer.h"

namespace {

using namespace tq;

constexpr std::size_t kBody = std::size_t{1} << 30;

test::LoopbackServer& server() {
  static auto& one = *new test::LoopbackServer(
      {{"/", [](const test::Socket& socket, const test::LoopbackServer::Request&) {
          const std::string piece(1 << 20, 'x');
          socket.send("HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(kBody) + "\r\n\r\n");
          for (std::size_t sent = 0; sent < kBody; sent += piece.size()) socket.send(piece);
        }}});
  return one;
}

void report(benchmark::State& state, std::size_t received) {
  if (received != kBody) state.SkipWithError("the body is not whole");
  rusage usage = {};
  getrusage(RUSAGE_SELF, &usage);
  state.counters["peak_MiB"] = static_cast<double>(usage.ru_maxrss) / 1024;
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(kBody));
}

void BM_HttpBody_TQ(benchmark::State& state) {
  const auto session = URLSession::sessionWithConfiguration({});
  std::size_t received = 0;
  for (auto _ : state) {
    received = 0;
    std::promise<void> done;
    URLRequest request;
    request.url = URL::URLWithString(server().url("/"));
    URLSessionTaskHandler handler;
    handler.didReceiveData = [&](URLSessionDataTask&, std::span<const std::byte> bytes) {
      received += bytes.size();
      return true;
    };
    handler.didComplete = [&](URLSessionDataTask&, const URLResponse&, const Ref<Error>&) {
      done.set_value();
    };
    session->dataTaskWithRequest(std::move(request), std::move(handler))->resume();
    done.get_future().wait();
  }
  report(state, received);
}

std::size_t count(char*, std::size_t size, std::size_t number, void* received) {
  *static_cast<std::size_t*>(received) += size * number;
  return size * number;
}

void BM_HttpBody_Curl(benchmark::State& state) {
  std::size_t received = 0;
  CURL* const easy = curl_easy_init();
  curl_easy_setopt(easy, CURLOPT_URL, server().url("/").c_str());
  curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, count);
  curl_easy_setopt(easy, CURLOPT_WRITEDATA, &received);
  for (auto _ : state) {
    received = 0;
    if (curl_easy_perform(easy) != CURLE_OK) state.SkipWithError("curl_easy_perform");
  }
  curl_easy_cleanup(easy);
  report(state, received);
}
BENCHMARK(BM_HttpBody_Curl)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_HttpBody_TQ)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
