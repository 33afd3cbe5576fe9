#include <TQFoundation/platform/network/URLSession.h>

#include <future>

#include "support/Bytes.h"
#include "support/Errors.h"
#include "support/HandMovedClock.h"
#include "support/LoopbackServer.h"
#include "support/OnDestruction.h"
#include "support/SelfSigned.h"
#include "support/TemporaryDirectory.h"
#include "support/Threads.h"

namespace {

using namespace std::chrono_literals;
using Request = LoopbackServer::Request;

struct Outcome {
  Ref<Data> data;
  URLResponse response;
  Ref<Error> error;

  [[nodiscard]] std::int64_t code() const { return codeOf(error); }
  [[nodiscard]] std::string body() const {
    return data == nullptr ? "(null)" : std::string(data->view());
  }
};

URLRequest requestFor(const std::string& url, std::string method = "GET",
                      const char* body = nullptr) {
  URLRequest request;
  request.url = URL::URLWithString(url);
  request.HTTPMethod = std::move(method);
  if (body != nullptr) request.HTTPBody = Data::dataWithBytes(body);
  return request;
}

// Large enough to arrive in many pieces.
constexpr std::size_t kPiece = 1'000'000;
constexpr std::size_t kPieces = 40;

const std::string kChunked = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
std::string headOf(std::size_t length) {
  return "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(length) + "\r\n\r\n";
}

LoopbackServer::Page says(std::string answer) {
  return [answer = std::move(answer)](const Socket& s, const Request&) { s.send(answer); };
}

// The connection stays open until the client closes it.
LoopbackServer::Page waitsAfter(std::string answer) {
  return [answer = std::move(answer)](const Socket& s, const Request&) {
    s.send(answer);
    while (!s.receive().empty()) {
    }
  };
}

class URLSessionTest : public testing::Test {
 protected:
  Outcome fetch(URLRequest request) {
    std::promise<Outcome> promise;
    const auto task = session->dataTaskWithRequest(
        std::move(request), [&](Ref<Data> data, const URLResponse& response, Ref<Error> error) {
          promise.set_value({std::move(data), response, std::move(error)});
        });
    EXPECT_EQ(task->state(), URLSessionDataTask::State::suspended);
    task->resume();
    task->resume();
    return promise.get_future().get();
  }
  Outcome fetch(const std::string& path, const char* method = "GET", const char* body = nullptr) {
    return fetch(requestFor(server.url(path), method, body));
  }
  /// Returns a task that sets `ended` to its error's code, or 0.
  Ref<URLSessionDataTask> taskFor(const std::string& path, std::promise<std::int64_t>& ended,
                                  URLSessionTaskHandler handler) {
    handler.didComplete = [&](URLSessionDataTask& task, auto&, const Ref<Error>& error) {
      EXPECT_EQ(task.state(), URLSessionDataTask::State::completed);
      ended.set_value(codeOf(error));
    };
    return session->dataTaskWithRequest(requestFor(server.url(path)), std::move(handler));
  }
  void configureAgain() { session = URLSession::sessionWithConfiguration(configuration); }

  LoopbackServer server{{
      {"/", says(LoopbackServer::page("200 OK", "hello", "X-One: 1\r\n"))},
      {"/echo",
       [](const Socket& s, const Request& r) {
         s.send(LoopbackServer::page("200 OK", r.method + " " + r.body + " " + r.header("Cookie"),
                                     "Set-Cookie: taste=sweet\r\n"));
       }},
      {"/head", [](const Socket& s,
                   const Request& r) { s.send(LoopbackServer::page("200 OK", r.head + "\r\n")); }},
      {"/chunked", says(kChunked + "3\r\nabc\r\n2\r\nde\r\n0\r\nX-Trailer: 1\r\n\r\n")},
      {"/there", says(LoopbackServer::page("302 Found", "moved", "Location: /echo\r\n"))},
      {"/other", says(LoopbackServer::page("303 See Other", "", "Location: /echo\r\n"))},
      {"/choices",
       says(LoopbackServer::page("300 Multiple Choices", "two", "Location: /echo\r\n"))},
      {"/round", says(LoopbackServer::page("302 Found", "moved", "Location: /round\r\n"))},
      {"/file", says(LoopbackServer::page("302 Found", "", "Location: file:///etc/passwd\r\n"))},
      {"/large",
       [](const Socket& s, const Request&) {
         s.send(headOf(kPiece * kPieces));
         for (std::size_t i = 0; i < kPieces; ++i)
           s.send(std::string(kPiece, static_cast<char>(i)));
       }},
      {"/cut", says(headOf(100) + "half")},
      {"/cutchunk", says(kChunked + "9\r\nhalf")},
      {"/trailers",
       says(kChunked + "0\r\n" + repeated("X-" + repeated("x", 98) + ": 1\r\n", 50'000) + "\r\n")},
      {"/manyheaders", says(LoopbackServer::page("200 OK", "", repeated("a:\r\n", 60'000)))},
      {"/longheader", says(LoopbackServer::page("200 OK", "", repeated("x", 120'000) + ": 1\r\n"))},
      {"/longtrailer", says(kChunked + "0\r\n" + repeated("x", 5'000) + ": 1\r\n\r\n")},
      {"/return", says("HTTP/1.1 200 OK\r\n\rX-One: 1\r\n\r\n")},
      {"/space", says("HTTP/1.1 200 OK\r\n X-One: 1\r\n\r\n")},
      {"/twoheads", says("HTTP/1.1 100 Continue\r\n\r\n" +
                         LoopbackServer::page("404 Not Found", "", "HTTP/1.1 200: no\r\n"))},
      {"/gone", says("")},
      {"/garbage", says("what is this?\r\n\r\n")},
      {"/silent", waitsAfter("")},
      {"/stall", waitsAfter(headOf(100) + "half")},
      {"/begun", waitsAfter(headOf(100))},
      {"/drip",
       [](const Socket& s, const Request&) {
         s.send(headOf(8));
         for (int i = 0; i < 8 && s.send("x"); ++i) std::this_thread::sleep_for(250ms);
       }},
  }};
  URLSessionConfiguration configuration;
  Ref<URLSession> session = URLSession::sessionWithConfiguration(configuration);
};
using URLSessionStress = URLSessionTest;

TEST_F(URLSessionTest, ReturnsStatusHeadersAndBody) {
  const Rows<const char*, int, std::int64_t, const char*, const char*> cases{
      {"/", 200, 5, "hello", "1"},
      {"/missing", 404, 12, "nothing here", ""},  // not a failure of the network
      {"/twoheads", 404, 0, "", ""},              // a header that looks like a status line
      {"/chunked", 200, -1, "abcde", ""},
  };
  for (const auto& [path, status, length, body, header] : cases) {
    SCOPED_TRACE(path);
    const Outcome page = fetch(path);
    EXPECT_EQ(page.code(), 0);
    EXPECT_EQ(page.body(), body);
    EXPECT_EQ(page.response.statusCode, status);
    EXPECT_EQ(page.response.expectedContentLength, length);
    EXPECT_EQ(page.response.valueForHTTPHeaderField("x-oNE"), header);
  }
}

TEST_F(URLSessionTest, SendsMethodsBodiesHeadersAndCookies) {
  EXPECT_EQ(fetch("/echo", "POST", "body").body(), "POST body ");
  EXPECT_EQ(fetch("/echo", "PUT", "body").body(), "PUT body taste=sweet");
  EXPECT_EQ(fetch("/echo", "HEAD", "body").body(), "");
  EXPECT_EQ(fetch("/echo", "DELETE").body(), "DELETE  taste=sweet");
  configuration.HTTPShouldSetCookies = false;
  configuration.HTTPAdditionalHeaders = {{"X-Both", "session"}, {"X-Session", "yes"}};
  configureAgain();
  fetch("/echo");
  EXPECT_EQ(fetch("/echo").body(), "GET  ");
  URLRequest request = requestFor(server.url("/head"));
  request.HTTPHeaderFields = {{"x-both", "request"}, {"X-Empty", ""}, {"X-Blank", " \t"}};
  const std::string head = fetch(request).body();
  for (const char* line : {"x-both: request\r\n", "X-Session: yes\r\n", "X-Empty:", "X-Blank:"}) {
    EXPECT_THAT(head, HasSubstr(std::string("\r\n") + line));
  }
  EXPECT_THAT(head, testing::Not(HasSubstr("X-Both")));
}

TEST_F(URLSessionTest, FollowsRedirectsWithinLimits) {
  const Outcome there = fetch("/there");
  EXPECT_EQ(there.body(), "GET  ");
  EXPECT_EQ(there.response.url, server.url("/echo"));
  const Rows<const char*, const char*, const char*, const char*> cases{
      {"/there", "POST", "body", "GET  taste=sweet"},
      {"/there", "PUT", "body", "PUT body taste=sweet"},
      {"/other", "PUT", "body", "GET  taste=sweet"},
      {"/other", "DELETE", nullptr, "GET  taste=sweet"},
      {"/other", "HEAD", nullptr, ""},
      {"/choices", "GET", nullptr, "GET  taste=sweet"},
  };
  for (const auto& [path, method, body, answer] : cases) {
    EXPECT_EQ(fetch(path, method, body).body(), answer) << path << method;
  }
  const Outcome round = fetch("/round");
  EXPECT_EQ(round.code(), URLErrorHTTPTooManyRedirects);
  EXPECT_EQ(round.response.statusCode, 302);
}

TEST_F(URLSessionTest, ReportsFailuresByCode) {
  std::uint16_t closedPort = 0;
  { closedPort = LoopbackServer({}).port(); }
  ::setenv("no_proxy", "*", 1);
  const Rows<std::string, std::int64_t, std::string_view> cases{
      {server.url("/cut"), URLErrorNetworkConnectionLost, ""},
      {server.url("/cutchunk"), URLErrorNetworkConnectionLost, ""},
      {server.url("/gone"), URLErrorNetworkConnectionLost, ""},
      {server.url("/trailers"), URLErrorBadServerResponse, ""},
      {server.url("/manyheaders"), URLErrorBadServerResponse, ""},
      {server.url("/longheader"), URLErrorBadServerResponse, ""},
      {server.url("/longtrailer"), URLErrorNetworkConnectionLost, ""},
      {server.url("/return"), URLErrorBadServerResponse, "The server’s response is invalid."},
      {server.url("/space"), URLErrorBadServerResponse, ""},
      {"http://127.0.0.1:" + std::to_string(closedPort) + "/", URLErrorCannotConnectToHost, ""},
      {"http://two..dots/", URLErrorCannotFindHost,
       "A server with the specified hostname could not be found."},
      {server.url("/garbage"), URLErrorBadServerResponse, "The server’s response is invalid."},
      {"ftp://127.0.0.1/", URLErrorUnsupportedURL, "The scheme “ftp” is not supported."},
      {server.url("/file"), URLErrorUnsupportedURL,
       "The server redirects to a URL whose scheme is not supported."},
      {"file:///etc/passwd", URLErrorUnsupportedURL, ""},
      {"http://", URLErrorBadURL, ""},
      {server.url(std::string_view("/\0x", 3)), URLErrorBadURL, ""},
  };
  for (const auto& [url, code, text] : cases) {
    SCOPED_TRACE(url);
    const Outcome outcome = fetch(requestFor(url));
    ASSERT_NE(outcome.error, nullptr);
    EXPECT_EQ(outcome.code(), code) << outcome.error->description();
    EXPECT_EQ(outcome.body(), "(null)");
    EXPECT_EQ(outcome.error->domain(), URLErrorDomain);
    const std::string found = outcome.error->localizedDescription();
    EXPECT_FALSE(found.starts_with("The operation couldn"));
    const bool isOfConnection =
        code == URLErrorNetworkConnectionLost || code == URLErrorCannotConnectToHost;
    EXPECT_TRUE(!isOfConnection || outcome.error->userInfo().objectForKey(DebugDescriptionKey));
    EXPECT_TRUE(text.empty() || found == text) << found;
  }
  EXPECT_EQ(fetch(URLRequest()).code(), URLErrorBadURL);
  for (const auto& header : HTTPHeaders{{"X-A", "1\r\nX-B: 2"}, {"X A", "1"}, {"", "1"}}) {
    URLRequest request = requestFor(server.url("/"));
    request.HTTPHeaderFields = {header};
    EXPECT_EQ(fetch(request).code(), URLErrorBadURL) << "a value that adds a header";
  }
  EXPECT_EQ(fetch("/", "GET / HTTP/1.1\r\nX-B: 2\r\n").code(), URLErrorBadURL);
  for (const std::uint64_t mostBytes : {4U, 5U}) {
    configuration.readingLimits.decompressedBytes = mostBytes;
    configureAgain();
    EXPECT_EQ(fetch("/").code(), mostBytes == 5 ? 0 : int{URLErrorDataLengthExceedsMaximum});
  }
}

TEST_F(URLSessionTest, WithoutAnErrorAllOfTheBodyHasCome) {
  // "hello", encoded by python3.
  const std::string gzip = fromHex("1f8b0800000000000203cb48cdc9c9070086a6103605000000");
  const std::string zlib = fromHex("789ccb48cdc9c90700062c0215");
  const std::string large(100'000, 'x');
  const std::string largeGzip = fromHex("1f8b0800000000000203edc13101000000c2a0da8b6f0d0fa0") +
                                std::string(96, '\x00') + fromHex("805703711107fea0860100");
  const auto coded = [](const std::string& body, const char* coding) {
    return LoopbackServer::page("200 OK", body,
                                "Content-Encoding: " + std::string(coding) + "\r\n");
  };
  const auto framed = [](const std::string& framing) {
    return "HTTP/1.1 200 OK\r\nTransfer-Encoding: " + framing + "\r\n\r\n2\r\nab\r\n0\r\n\r\n";
  };
  const auto announced = [](const std::string& lengths) {
    return "HTTP/1.1 200 OK\r\nConnection: close\r\n" + lengths + "\r\n\r\nhello";
  };
  const char* const undecodable = "The encoded body could not be decoded.";
  const char* const truncated = "The encoded body is truncated.";
  const char* const badLength = "The server announced an invalid length of the body.";
  std::string damaged = gzip;
  damaged[damaged.size() - 6] ^= 1;  // its checksum
  const test::Rows<const char*, std::string, const char*, const char*> cases{
      {"gzip", coded(gzip, "gzip"), "hello", ""},
      {"long", coded(largeGzip, "gzip"), large.c_str(), ""},
      {"two members", coded(gzip + gzip, "x-gzip"), "hellohello", ""},
      {"zlib", coded(zlib, "deflate"), "hello", ""},
      {"raw deflate", coded(zlib.substr(2, zlib.size() - 6), "deflate"), "hello", ""},
      {"no coding", coded("hello", "identity"), "hello", ""},
      {"empty", coded("", "gzip"), "", ""},
      {"truncated", coded(gzip.substr(0, gzip.size() - 1), "gzip"), nullptr, truncated},
      {"truncated member", coded(gzip + gzip.substr(0, 12), "gzip"), nullptr, truncated},
      {"truncated header", coded(gzip.substr(0, 3), "gzip"), nullptr, truncated},
      {"truncated raw", coded(zlib.substr(2, 3), "deflate"), nullptr, truncated},
      {"truncated chunks",
       "HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nTransfer-Encoding: chunked\r\n\r\nc\r\n" +
           gzip.substr(0, 12) + "\r\n0\r\n\r\n",
       nullptr, truncated},
      {"nothing, without a length", "HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\n\r\n", nullptr,
       truncated},
      {"damaged", coded(damaged, "gzip"), nullptr, undecodable},
      {"more after the end", coded(zlib + "x", "deflate"), nullptr, undecodable},
      {"unknown", coded("hello", "br"), nullptr,
       "The server returned a body in the unknown coding “br”."},
      {"coded twice", coded(gzip, "gzip\r\nContent-Encoding: gzip"), nullptr,
       "The server returned a body in the unknown coding “gzip, gzip”."},
      {"coded once", coded(gzip, "identity\r\ncontent-encoding: gzip"), nullptr,
       "The server returned a body in the unknown coding “identity, gzip”."},
      {"chunks", framed("Chunked"), "ab", ""},
      {"coded chunks", framed("gzip, chunked"), nullptr,
       "The server returned a body in the unknown transfer coding “gzip, chunked”."},
      {"an unknown frame", framed("foo"), nullptr,
       "The server returned a body in the unknown transfer coding “foo”."},
      {"equal lengths", announced("Content-Length: 5, 5\r\nContent-Length: 5"), "hello", ""},
      {"two lengths", announced("Content-Length: 5\r\nContent-Length: 3"), nullptr, badLength},
      {"two in one", announced("Content-Length: 3, 5"), nullptr, badLength},
      {"absurd", announced("Content-Length: 99999999999999999999"), nullptr, badLength},
      {"no number", announced("Content-Length: 5five"), nullptr, badLength},
      {"longer", announced("Content-Length: 6"), nullptr, "The network connection was lost."},
  };
  std::map<std::string, LoopbackServer::Page> pages;
  for (const auto& [name, answer, body, text] : cases)
    pages.emplace("/" + std::to_string(pages.size()), says(answer));
  const LoopbackServer liar(std::move(pages));
  for (int i = 0; const auto& [name, answer, body, text] : cases) {
    SCOPED_TRACE(name);
    const Outcome outcome = fetch(requestFor(liar.url("/" + std::to_string(i++))));
    EXPECT_EQ(outcome.body(), body != nullptr ? body : "(null)");
    EXPECT_EQ(outcome.error != nullptr ? outcome.error->localizedDescription() : "", text);
  }
  EXPECT_EQ(fetch(requestFor(liar.url("/0"), "HEAD")).code(), 0) << "it has no body";
  for (const char* header : {"Accept-Encoding", "Range"}) {  // the body as it is
    URLRequest request = requestFor(liar.url("/0"));
    request.HTTPHeaderFields = {{header, "gzip"}};
    EXPECT_EQ(fetch(request).body(), gzip) << header;
    configuration.HTTPAdditionalHeaders = request.HTTPHeaderFields;
    configureAgain();
    const bool isRange = header == std::string_view("Range");  // not for a session
    EXPECT_EQ(fetch(requestFor(liar.url("/0"))).body(), isRange ? "hello" : gzip) << header;
  }
}

TEST_F(URLSessionTest, RefusesInvalidCertificates) {
  const test::SelfSigned identity;
  LoopbackServer secure({}, [&](const Socket& socket) {
    identity.answer(socket, LoopbackServer::page("200 OK", "secret"));
  });
  const auto fetchFrom = [&](const std::string& host, const LoopbackServer& from) {
    return fetch(requestFor("https://" + host + ":" + std::to_string(from.port())));
  };
  EXPECT_EQ(fetchFrom("127.0.0.1", secure).code(), URLErrorServerCertificateUntrusted);
  const TemporaryDirectory directory;
  configuration.certificateAuthorities = directory.path("own.pem");
  identity.writeTo(configuration.certificateAuthorities);
  configureAgain();
  EXPECT_EQ(fetchFrom("127.0.0.1", secure).body(), "secret") << "once it is trusted";
  ::setenv("no_proxy", "127.0.0.1,localhost", 1);
  EXPECT_EQ(fetchFrom("localhost", secure).code(), URLErrorServerCertificateUntrusted)
      << "for another name";
  LoopbackServer plain({}, [](const Socket& socket) {
    static_cast<void>(socket.receive());
    socket.send("HTTP/1.1 400 Bad Request\r\n\r\n");
  });
  EXPECT_EQ(fetchFrom("127.0.0.1", plain).code(), URLErrorSecureConnectionFailed);
}

TEST_F(URLSessionTest, TimesOutWithoutDataAndAfterTheWholeTime) {
  for (const char* path : {"/silent", "/stall"}) {
    URLRequest request = requestFor(server.url(path));
    request.timeoutInterval = 0.1;
    EXPECT_EQ(fetch(request).code(), URLErrorTimedOut) << path;
  }
  configuration.timeoutIntervalForResource = 0.1;
  configureAgain();
  EXPECT_EQ(fetch("/stall").code(), URLErrorTimedOut);
  configuration.timeoutIntervalForRequest = std::nan("");
  configuration.timeoutIntervalForResource = 0;
  configureAgain();
  EXPECT_EQ(fetch("/").body(), "hello") << "no limits";
}

// The server does not reply to the handshake. The session's clock jumps by an hour meanwhile.
TEST_F(URLSessionTest, WithoutALimitConnectingDoesNotTimeOut) {
  configuration.timeoutIntervalForRequest = 0;
  configureAgain();
  std::promise<std::int64_t> connecting;
  const auto task = session->dataTaskWithURL(
      URL::URLWithString("https" + server.url("/").substr(4)),
      [&](auto&&, auto&, const Ref<Error>& error) { connecting.set_value(codeOf(error)); });
  task->resume();
  const auto later = std::chrono::steady_clock::now().time_since_epoch() + 1h;
  std::optional<HandMovedClock> clock;
  for (const bool moves : {true, false}) {
    std::promise<std::int64_t> ended;
    URLSessionTaskHandler handler;
    handler.didReceiveResponse = [&](auto&, auto&) {
      if (moves) clock.emplace().jump(std::chrono::floor<std::chrono::milliseconds>(later));
      if (!moves) clock.reset();
      return true;
    };
    taskFor("/", ended, handler)->resume();
    EXPECT_EQ(ended.get_future().get(), 0);
  }
  task->cancel();
  EXPECT_EQ(connecting.get_future().get(), URLErrorCancelled);
}

// The first of three tasks gets its pieces in time while the callback of the second blocks the
// thread, and the third waits for a connection. Each takes longer than the limit in total.
TEST_F(URLSessionStress, PiecesCallbacksAndQueuesRestartTheTimeout) {
  configuration.HTTPMaximumConnectionsPerHost = 2;
  configuration.timeoutIntervalForRequest = 1.5;
  configureAgain();
  std::promise<std::int64_t> ended[3];
  for (auto& each : ended) {
    const bool isSlow = &each == &ended[1];
    URLSessionTaskHandler handler;
    handler.didReceiveData = [=](auto&, auto) {
      if (isSlow) std::this_thread::sleep_for(2s);
      return true;
    };
    taskFor(isSlow ? "/" : "/drip", each, handler)->resume();
  }
  for (auto& each : ended) EXPECT_EQ(each.get_future().get(), 0);
}

// The first of ten tasks has the only connection when one of the others is cancelled. Before them,
// other tasks wait for a host that is busy all the time.
TEST_F(URLSessionStress, EachWaitingTaskGetsAConnection) {
  configuration.HTTPMaximumConnectionsPerHost = 1;
  for (std::size_t victim = 1; victim < 10; ++victim) {
    std::promise<void> released;
    const auto answer = [end = released.get_future().share()](const Socket& socket) {
      while (!socket.receive().empty()) end.wait(), socket.send(headOf(0));
    };
    const LoopbackServer holding({}, answer);
    const LoopbackServer third({{"/", says(headOf(0))}});
    configureAgain();
    std::vector<Ref<URLSessionDataTask>> others;
    for (int i = 0; i < 20; ++i) {
      others.push_back(
          session->dataTaskWithURL(URL::URLWithString(server.url("/silent")), nullptr));
      others.back()->resume();
    }
    std::promise<void> promises[10];
    std::vector<std::future<void>> ends;
    std::vector<Ref<URLSessionDataTask>> tasks;
    for (auto& each : promises) {
      ends.push_back(each.get_future());
      tasks.push_back(session->dataTaskWithURL(URL::URLWithString(holding.url("/")),
                                               [&](auto&&, auto&, auto&&) { each.set_value(); }));
      tasks.back()->resume();
    }
    fetch(requestFor(third.url("/")));  // begins last
    tasks[victim]->cancel();
    ends[victim].wait();
    released.set_value();
    for (auto& each : ends) EXPECT_EQ(each.wait_for(20s), std::future_status::ready) << victim;
    for (const auto& each : others) each->cancel();
    for (auto& each : ends) each.wait();
    session = nullptr;  // closes the connection
  }
}

TEST_F(URLSessionTest, PassesPiecesInOrderAndReportsProgress) {
  std::promise<std::int64_t> ended;
  std::size_t count = 0;
  std::size_t wrong = 0;
  bool wasToldFirst = false;
  URLSessionTaskHandler handler;
  handler.didReceiveResponse = [&](URLSessionDataTask& task, const URLResponse& response) {
    wasToldFirst = count == 0 && response.statusCode == 200 &&
                   task.countOfBytesExpectedToReceive() == kPiece * kPieces;
    return true;
  };
  handler.didReceiveData = [&](URLSessionDataTask& task, std::span<const std::byte> bytes) {
    for (const std::byte each : bytes) wrong += each != static_cast<std::byte>(count++ / kPiece);
    EXPECT_EQ(task.countOfBytesReceived(), static_cast<std::int64_t>(count));
    EXPECT_LE(bytes.size(), 512u * 1024);
    return true;
  };
  const auto task = taskFor("/large", ended, handler);
  session = nullptr;  // the task keeps it alive
  task->resume();
  EXPECT_EQ(ended.get_future().get(), 0);
  EXPECT_TRUE(wasToldFirst);
  EXPECT_EQ(count, kPiece * kPieces);
  EXPECT_EQ(wrong, 0u);
}

TEST_F(URLSessionTest, EndsWhereItIsCancelledOrRefused) {
  enum class At { start, response, data, refusedResponse, refusedData, elsewhere };
  for (const At at :
       {At::start, At::response, At::data, At::refusedResponse, At::refusedData, At::elsewhere}) {
    std::promise<std::int64_t> ended;
    std::promise<void> begun;
    URLSessionTaskHandler handler;
    handler.didReceiveResponse = [&](URLSessionDataTask& task, const URLResponse&) {
      if (at == At::response) task.cancel();
      return at != At::refusedResponse;
    };
    handler.didReceiveData = [&](URLSessionDataTask& task, std::span<const std::byte>) {
      if (at == At::data) task.cancel();
      if (at == At::elsewhere) begun.set_value();
      return at != At::refusedData;
    };
    const bool isToldAtOnce = at == At::response || at == At::refusedResponse;
    const auto task = taskFor(isToldAtOnce ? "/begun" : "/stall", ended, handler);
    if (at == At::start) task->cancel();
    task->resume();
    if (at == At::elsewhere) {
      begun.get_future().wait();
      task->cancel();
    }
    EXPECT_EQ(ended.get_future().get(),
              at == At::refusedData ? URLErrorCannotWriteToFile : URLErrorCancelled)
        << static_cast<int>(at);
    task->cancel();
    EXPECT_EQ(task->state(), URLSessionDataTask::State::completed);
  }
}

TEST_F(URLSessionTest, ReleasesItsFunctionsAtItsEnd) {
  for (const char* path : {"/", "/gone"}) {
    std::promise<void> released;
    auto task = std::make_shared<Ref<URLSessionDataTask>>();
    const auto watch = [&] { released.set_value(); };
    *task = session->dataTaskWithURL(
        URL::URLWithString(server.url(path)),
        [task, last = makeRef<test::OnDestruction>(watch)](auto...) {});  // owns the task
    (*task)->resume();
    task = nullptr;
    released.get_future().get();
  }
}

TEST_F(URLSessionTest, ClosesItsConnectionsWhenItIsReleased) {
  std::promise<void> closed;
  const LoopbackServer keeping{{{"/", [&](const Socket& s, const Request&) {
                                   s.send(headOf(1) + "x");
                                   while (!s.receive().empty()) {
                                   }
                                   closed.set_value();
                                 }}}};
  EXPECT_EQ(fetch(requestFor(keeping.url("/"))).body(), "x");
  std::future<void> end = closed.get_future();
  EXPECT_EQ(end.wait_for(0s), std::future_status::timeout);
  session = nullptr;
  EXPECT_EQ(end.wait_for(60s), std::future_status::ready);
}

TEST_F(URLSessionTest, RunsTasksOfManyThreads) {
  constexpr int kTasks = 60;
  std::latch completed(kTasks);
  test::onThreads(3, [&](int t) {
    for (int i = t; i < kTasks; i += 3) {
      const auto task = session->dataTaskWithURL(
          URL::URLWithString(server.url(i % 4 == 0 ? "/stall" : "/echo")),
          [&, i](const Ref<Data>&, const URLResponse&, const Ref<Error>& error) {
            EXPECT_EQ(codeOf(error), i % 4 == 0 ? std::int64_t{URLErrorCancelled} : 0);
            completed.count_down();
          });
      task->resume();
      if (i % 4 == 0) task->cancel();
    }
  });
  completed.wait();
}

}  // namespace
