#include <TQFoundation/platform/network/FileDownload.h>

#include <sys/stat.h>
#include <unistd.h>

#include <future>

#include "support/Errors.h"
#include "support/LoopbackServer.h"
#include "support/OnDestruction.h"
#include "support/TemporaryDirectory.h"

namespace {

std::string bodyOf(std::size_t length, char version) {
  std::string body(length, version);
  for (std::size_t i = 0; i < body.size(); i += 7) body[i] = static_cast<char>(i >> 5);
  return body;
}

/// A body on a server, and how the server sends it.
struct Served {
  enum class Ranges { known, ignored, refused, others, unconditional };
  /// How the server names versions.
  enum class Names { tag, weakTag, longTag, change, changeJustNow, none };

  std::size_t length = 3'000'000;
  char version = 'a';
  Names names = Names::tag;
  Ranges ranges = Ranges::known;
  bool hidesLength = false;                 // and does not send all of it
  std::size_t cutsAfter = ~std::size_t{0};  // bytes of each response's body
  std::string lie = {};                     // sent for a part instead of the true content

  void answer(const Socket& socket, const LoopbackServer::Request& request) const;
};

void Served::answer(const Socket& socket, const LoopbackServer::Request& request) const {
  const std::string range = request.header("Range");
  if (!lie.empty() && !range.empty()) return static_cast<void>(socket.send(lie));
  const std::string now = "Mon, 02 Nov 2026 10:00:00 GMT";
  std::string name = '"' + std::string(1, version) + '"';
  if (names == Names::weakTag) name = "W/" + name;
  if (names == Names::longTag) name = '"' + std::string(1'001, version) + '"';
  if (names == Names::change) name = std::string("Mon, 02 Nov 2026 0") + version + ":00:00 GMT";
  if (names == Names::changeJustNow) name = now;
  std::string headers = "Connection: close\r\nDate: " + now + "\r\n";
  if (names != Names::none) {
    headers += (names <= Names::longTag ? "ETag: " : "Last-Modified: ") + name + "\r\n";
  }
  std::size_t from = 0;
  if (!range.empty() && ranges == Ranges::refused) {
    socket.send(LoopbackServer::page("416 Range Not Satisfiable", "too far"));
    return;
  }
  const bool isSame = request.header("If-Range") == name || ranges == Ranges::unconditional;
  if (!range.empty() && isSame && ranges != Ranges::ignored) {
    from = std::stoul(range.substr(range.find('=') + 1));
    if (from == length) {
      socket.send(LoopbackServer::page(
          "416 Range Not Satisfiable", "",
          headers + "Content-Range: bytes */" + std::to_string(from) + "\r\n"));
      return;
    }
    const std::size_t told = ranges == Ranges::others ? from / 2 : from;
    headers += "Content-Range: bytes " + std::to_string(told) + "-" + std::to_string(length - 1) +
               "/" + std::to_string(length) + "\r\n";
  }
  socket.send("HTTP/1.1 " + std::string(from > 0 ? "206 Partial Content" : "200 OK") + "\r\n" +
              headers +
              (hidesLength ? "Transfer-Encoding: chunked\r\n\r\nf000000\r\n"  // too short a body
                           : "Content-Length: " + std::to_string(length - from) + "\r\n\r\n"));
  socket.send(bodyOf(length, version).substr(from, cutsAfter));
}

/// A server with one body, as the fields say when a download starts.
struct FileDownloadTest : testing::Test, Served {
  std::mutex mutex;
  Served served;                   // guarded by the mutex
  std::vector<std::string> asked;  // guarded by the mutex: the requested ranges

  LoopbackServer server{
      {{"/", [this](const Socket& socket, const LoopbackServer::Request& request) {
          std::unique_lock guard(mutex);
          asked.push_back(request.header("Range"));
          const Served now = served;
          guard.unlock();
          EXPECT_EQ(request.header("Accept-Encoding"), "identity");
          now.answer(socket, request);
        }}}};
  TemporaryDirectory directory;
  const Ref<URLSession> session = URLSession::sessionWithConfiguration({});
  const Ref<URL> file = URL::fileURLWithPath(directory.path("plan.svg"));

  const char* method = "GET";
  std::function<void(std::int64_t)> watch;  // called for each piece, on the session's thread

  struct Outcome {
    std::int64_t code = 0;
    std::string text = {};
    std::int64_t first = -1;  ///< reported progress
    std::int64_t last = -1;
    std::int64_t expected = -1;
  };

  /// Downloads, and cancels after `cancelsAt` bytes.
  Outcome download(std::string_view path = "/", std::int64_t cancelsAt = INT64_MAX) {
    return download(server, path, cancelsAt);
  }
  Outcome download(const LoopbackServer& from, std::string_view path,
                   std::int64_t cancelsAt = INT64_MAX) {
    {
      const std::scoped_lock guard(mutex);
      served = *this;
    }
    std::promise<void> done;
    Outcome outcome;
    URLRequest request{.url = URL::URLWithString(from.url(path)), .HTTPMethod = method};
    request.HTTPHeaderFields = {{"range", "bytes=0-0"}};  // ignored
    FileDownloadHandler handler;
    Ref<FileDownload> download;
    handler.didWriteData = [&](std::int64_t received, std::int64_t expected) {
      if (outcome.first < 0) outcome.first = received;
      EXPECT_GE(received, outcome.last);
      outcome.last = received;
      outcome.expected = expected;
      EXPECT_EQ(download->countOfBytesReceived(), received);
      EXPECT_EQ(download->countOfBytesExpectedToReceive(), expected);
      if (watch) watch(received);
      if (received >= cancelsAt) download->cancel();
    };
    handler.didComplete = [&](const URLResponse&, const Ref<Error>& error) {
      outcome.code = error != nullptr ? error->code() : 0;
      if (error != nullptr) outcome.text = error->localizedDescription();
      done.set_value();
    };
    Ref<Error> error;
    download = FileDownload::downloadWithRequest(*session, request, *file, handler, &error);
    if (download == nullptr) return {error->code(), std::string(error->localizedDescription())};
    download->resume();
    download->resume();
    done.get_future().wait();
    return outcome;
  }

  /// Downloads a third of the body; later responses are complete.
  void downloadAThird() {
    cutsAfter = 1'000'000;
    EXPECT_EQ(download().code, URLErrorNetworkConnectionLost);
    cutsAfter = length;
  }

  std::vector<std::string> takeAsked() {
    const std::scoped_lock guard(mutex);
    return std::exchange(asked, {});
  }
  [[nodiscard]] bool holds(char expected) const {
    return directory.read("plan.svg") == bodyOf(length, expected);
  }
  [[nodiscard]] fs::perms permissionsOf(std::string_view name) const {
    return fs::status(directory.path(name)).permissions();
  }
};

TEST_F(FileDownloadTest, CompleteBodiesReplaceTheFile) {
  directory.write("plan.svg", "old");
  directory.write("plan.svg.download", "planted");  // readable by all
  fs::permissions(directory.path("plan.svg"), fs::perms(0440));
  watch = [&](std::int64_t) {
    EXPECT_EQ(permissionsOf("plan.svg.download"), fs::perms(0600));
    EXPECT_EQ(permissionsOf("plan.svg.download-note"), fs::perms(0600));
  };
  const Outcome outcome = download();
  EXPECT_EQ(std::tuple(outcome.code, outcome.first, outcome.last, outcome.expected),
            std::tuple(0, 0, 3'000'000, 3'000'000));
  EXPECT_TRUE(holds('a'));
  EXPECT_EQ(permissionsOf("plan.svg"), fs::perms(0440));
  EXPECT_EQ(directory.entries(), 1);  // nothing else remains
  EXPECT_EQ(takeAsked(), std::vector<std::string>{""});
}

TEST_F(FileDownloadTest, ReleasesItsFunctionsAtItsEnd) {
  served = *this;
  std::promise<void> released;
  auto own = std::make_shared<Ref<FileDownload>>();
  FileDownloadHandler handler;
  const auto notify = [&] { released.set_value(); };
  handler.didComplete = [own, last = makeRef<OnDestruction>(notify)](auto...) {};
  *own = FileDownload::downloadWithRequest(*session, {.url = URL::URLWithString(server.url("/"))},
                                           *file, std::exchange(handler, {}));
  (*own)->resume();
  own = nullptr;
  released.get_future().get();
}

TEST_F(FileDownloadTest, RequestsOnlyTheRest) {
  directory.write("plan.svg", "old");
  downloadAThird();
  EXPECT_EQ(directory.read("plan.svg"), "old");
  const Outcome second = download("/", 1'500'000);
  EXPECT_EQ(second.code, URLErrorCancelled);
  EXPECT_EQ(second.first, 1'000'000);
  const Outcome third = download();
  EXPECT_EQ(std::tuple(third.code, third.first, third.expected),
            std::tuple(0, second.last, 3'000'000));
  EXPECT_EQ(takeAsked(), (std::vector<std::string>{"", "bytes=1000000-",
                                                   "bytes=" + std::to_string(second.last) + "-"}));
  EXPECT_TRUE(holds('a'));
  EXPECT_EQ(directory.entries(), 1);
  directory.write("plan.svg", "old");
  EXPECT_EQ(download("/", 3'000'000).code, URLErrorCancelled);  // with its last byte
  EXPECT_EQ(directory.read("plan.svg"), "old");
  EXPECT_EQ(download().code, 0) << "nothing is missing";
  EXPECT_EQ(takeAsked(), (std::vector<std::string>{"", "bytes=3000000-"}));
  EXPECT_TRUE(holds('a'));
}

TEST_F(FileDownloadTest, StartsAgainForAnotherVersion) {
  for (const Ranges each :
       {Ranges::known, Ranges::ignored, Ranges::refused, Ranges::unconditional}) {
    for (const std::size_t lengthThen : {1'000'000u, 3'000'000u}) {
      names = lengthThen == 1'000'000 ? Names::change : Names::tag;
      length = 3'000'000;
      version = 'a';
      downloadAThird();
      length = cutsAfter = lengthThen;
      version = 'b';
      ranges = each;
      EXPECT_EQ(download().code, 0);
      EXPECT_TRUE(holds('b'));
      EXPECT_EQ(directory.entries(), 1);
    }
  }
  // Without a valid note there is nothing to resume.
  ranges = Ranges::known;
  for (const std::string_view loss : {"no note", "longer than the bytes", "a link"}) {
    takeAsked();
    downloadAThird();
    if (loss == "no note") fs::remove(directory.path("plan.svg.download-note"));
    if (loss == "longer than the bytes") fs::resize_file(directory.path("plan.svg.download"), 10);
    if (loss == "a link") {
      fs::rename(directory.path("plan.svg.download-note"), directory.path("precious"));
      fs::create_symlink("precious", directory.path("plan.svg.download-note"));
    }
    const std::string precious = directory.read("precious");
    EXPECT_EQ(download().code, 0) << loss;
    EXPECT_EQ(directory.read("precious"), precious) << "not our file";
    EXPECT_EQ(takeAsked(), (std::vector<std::string>{"", ""})) << loss;
    EXPECT_TRUE(holds('b'));
  }
}

TEST_F(FileDownloadTest, ResumesOnlyWithAStrongValidator) {
  for (const Names each : {Names::tag, Names::weakTag, Names::longTag, Names::change,
                           Names::changeJustNow, Names::none}) {
    names = each;
    downloadAThird();
    const bool goesOn = each == Names::tag || each == Names::change;
    EXPECT_EQ(directory.entries() > 1, goesOn) << "besides the file";
    EXPECT_EQ(download().code, 0);
    EXPECT_EQ(takeAsked(), (std::vector<std::string>{"", goesOn ? "bytes=1000000-" : ""}));
    EXPECT_TRUE(holds('a'));
  }
  names = Names::tag;
  method = "POST";  // its response belongs to this request alone
  downloadAThird();
  EXPECT_EQ(download().code, 0);
  EXPECT_EQ(takeAsked(), (std::vector<std::string>{"", ""}));
}

TEST_F(FileDownloadTest, KeepsAllButTheLastBytesOfAKilledProcess) {
  length = 24'000'000;
  const std::string parts[] = {"plan.svg.download", "plan.svg.download-note"};
  watch = [&](std::int64_t received) {  // what a killed process would leave
    if (received < 20'000'000 || fs::exists(directory.path(parts[0] + ".kept"))) return;
    for (const std::string& part : parts) {
      fs::copy_file(directory.path(part), directory.path(part + ".kept"));
    }
  };
  EXPECT_EQ(download().code, 0);
  for (const std::string& part : parts) {
    fs::rename(directory.path(part + ".kept"), directory.path(part));
  }
  const Outcome second = download();
  EXPECT_EQ(second.code, 0);
  EXPECT_GE(second.first, 16 << 20);
  EXPECT_LT(second.first, 20'000'000);
  EXPECT_TRUE(holds('a'));
}

TEST_F(FileDownloadTest, RefusedResponsesKeepTheFileAndThePart) {
  directory.write("plan.svg", "old");
  EXPECT_EQ(download("/missing").code, URLErrorBadServerResponse);
  EXPECT_EQ(directory.entries(), 1);
  downloadAThird();
  ranges = Ranges::others;  // another part than the requested one
  EXPECT_EQ(download().code, URLErrorBadServerResponse);
  ranges = Ranges::known;
  EXPECT_EQ(download().first, 1'000'000);
  EXPECT_TRUE(holds('a'));
}

// After a third of version "a", the server has version "b". Its response to the request for the
// rest must not complete the file with bytes of "b".
TEST_F(FileDownloadTest, LyingServersNeverMixVersions) {
  const std::string part = "206 Partial Content";
  const auto range = [](const std::string& bytes) {
    return "Content-Range: bytes " + bytes + "\r\n";
  };
  const std::string rest = range("1000000-2999999/3000000");
  const std::string tag = "ETag: \"a\"\r\n";
  const std::string refusal = "416 Range Not Satisfiable";
  const char* const otherPart =
      "The server returned another part of the file than the requested one.";
  const char* const coded = "The server returned an encoded body, which was not requested.";
  const char* const tooMuch = "The server returned more bytes than announced.";
  // The bytes of the body, and the text of the error: "" if the download starts again and succeeds.
  const Rows<const char*, std::string, std::string, std::size_t, std::string> cases{
      {"no validator", part, rest, 2'000'000, ""},
      {"another validator", part, rest + "ETag: \"b\"\r\n", 2'000'000, ""},
      {"a weak validator", part, rest + "ETag: W/\"a\"\r\n", 2'000'000, ""},
      {"another kind of validator", part, rest + "Last-Modified: \"a\"\r\n", 2'000'000, ""},
      {"another total", part, range("1000000-2999999/3000001") + tag, 2'000'000, ""},
      {"a smaller total", part, range("1000000-1999999/2000000") + tag, 1'000'000, ""},
      {"no total", part, range("1000000-2999999/*") + tag, 2'000'000, ""},
      {"no range", part, tag, 2'000'000, otherPart},
      {"a damaged range", part, range("1000000+2999999/3000000") + tag, 2'000'000, otherPart},
      {"no start", part, range("-2999999/3000000") + tag, 2'000'000, otherPart},
      {"no end", part, range("1000000-/3000000") + tag, 2'000'000, otherPart},
      {"an earlier end", part, range("1000000-999999/3000000") + tag, 2'000'000, otherPart},
      {"an end after the total", part, range("1000000-3000000/3000000") + tag, 2'000'000,
       otherPart},
      {"a damaged total", part, range("1000000-2999999/3000000x") + tag, 2'000'000, otherPart},
      {"another range", part, range("500000-2999999/3000000") + tag, 2'500'000, otherPart},
      {"a coded part", part, rest + tag + "Content-Encoding: gzip\r\n", 2'000'000, coded},
      {"a part coded twice", part, rest + tag + "Content-Encoding:\r\nContent-Encoding: gzip\r\n",
       2'000'000, coded},
      {"a coded whole", "200 OK", "Content-Encoding: gzip\r\n", 3'000'000, coded},
      {"more than the range", part, range("1000000-1999999/3000000") + tag, 2'000'000, tooMuch},
      {"more than the total", part, rest + tag, 2'000'001, tooMuch},
      {"less than the total", part, rest + tag, 1'000'000,
       "The server returned fewer bytes than announced."},
      {"our length as the total", refusal, range("*/1000000") + tag, 0, ""},
      {"another length", refusal, range("*/3000000") + tag, 0, ""},
      {"no length", refusal, "", 0, ""},
      {"a damaged length", refusal, range("*/1000000x") + tag, 0, ""},
      {"no such file", "404 Not Found", "", 10,
       "The server returned status 404 instead of the file."},
  };
  for (const auto& [name, status, headers, bytes, text] : cases) {
    SCOPED_TRACE(name);
    directory.write("plan.svg", "old");
    version = 'a';
    downloadAThird();
    version = 'b';
    lie = LoopbackServer::page(status, bodyOf(bytes, 'b'), headers);
    const Outcome second = download();
    EXPECT_EQ(second.text, text);
    EXPECT_EQ(second.code, text.empty() ? 0 : std::int64_t{URLErrorBadServerResponse});
    EXPECT_TRUE(text.empty() ? holds('b') : directory.read("plan.svg") == "old");
    lie.clear();
    EXPECT_TRUE(text.empty() || download().code == 0);
    EXPECT_TRUE(holds('b'));
    EXPECT_EQ(directory.entries(), 1);
  }
  version = 'a';
  hidesLength = true;  // so our length may not be the total
  downloadAThird();
  hidesLength = false;
  version = 'b';
  lie = LoopbackServer::page(refusal, "", range("*/1000000"));
  EXPECT_EQ(download().code, 0);
  EXPECT_TRUE(holds('b'));
}

// The connection closes somewhere in the head of the response. A redirect leads to each of them.
TEST_F(FileDownloadTest, ResponsesCutInTheirHeadsAreErrors) {
  const std::string plain = LoopbackServer::page("200 OK", "");
  const std::string heads[] = {plain, "HTTP/1.0 200 OK\n\n", "HTTP/1.1 302 Found\r\n\r\n",
                               "HTTP/1.1 103 Early Hints\r\n\r\n" + plain};
  for (const std::string& head : heads) {
    for (std::size_t cut = 0; cut <= head.size(); ++cut) {
      SCOPED_TRACE(head.substr(0, cut));
      const auto sends = [](const std::string& answer) {
        return [=](const Socket& socket, auto&) { socket.send(answer); };
      };
      const LoopbackServer cutting(
          {{"/", sends(head.substr(0, cut))},
           {"/to", sends(LoopbackServer::page("302 Found", "moved", "Location: /\r\n"))}});
      std::promise<std::int64_t> ended;
      const auto task = session->dataTaskWithURL(
          URL::URLWithString(cutting.url("/to")),
          [&](auto&&, auto&, const Ref<Error>& error) { ended.set_value(codeOf(error)); });
      task->resume();
      const bool isCut = cut < head.size();
      EXPECT_EQ(ended.get_future().get(), isCut ? std::int64_t{URLErrorNetworkConnectionLost} : 0);
      directory.write("plan.svg", "old");
      const bool isFile = !isCut && head.find("200 OK") != std::string::npos;
      EXPECT_EQ(download(cutting, "/").code == 0, isFile);
      EXPECT_EQ(directory.read("plan.svg"), isFile ? "" : "old");
    }
  }
}

// Each file is planted after a third of the body has been received. No planted file is written to
// or read from.
TEST_F(FileDownloadTest, PlantedFilesAreNotAdopted) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs root, to give files to another user";
  constexpr uid_t kStranger = 1009;
  const std::string body = directory.path("plan.svg.download");
  const std::string note = body + "-note";
  const std::string precious = directory.path("precious");
  const Rows<const char*, std::function<void()>, std::int64_t> cases{
      {"another user's body", [&] { ASSERT_EQ(::chown(body.c_str(), kStranger, 0), 0); }, 0},
      {"another user's note", [&] { ASSERT_EQ(::chown(note.c_str(), kStranger, 0), 0); }, 0},
      {"a body with two names", [&] { fs::create_hard_link(body, precious); }, 0},
      {"a note with two names", [&] { fs::create_hard_link(note, precious); }, 0},
      {"a link", [&] { fs::rename(body, precious), fs::create_symlink(precious, body); }, 512},
      {"a pipe", [&] { fs::remove(body), ::mkfifo(body.c_str(), 0666); }, 512},
      {"a folder", [&] { fs::remove(body), fs::create_directory(body); }, 512},
  };
  for (const auto& [name, plant, code] : cases) {
    SCOPED_TRACE(name);
    downloadAThird();
    plant();
    const std::string before = directory.read("precious");
    takeAsked();
    EXPECT_EQ(download().code, code);
    EXPECT_EQ(directory.read("precious"), before);
    if (code == 0) {
      EXPECT_TRUE(holds('a'));
      EXPECT_EQ(takeAsked(), std::vector<std::string>{""});
    }
    for (const auto& each : fs::directory_iterator(directory.path(""))) fs::remove(each);
  }
}

TEST_F(FileDownloadTest, AllowsOneDownloadForEachWritableFile) {
  const URLRequest request{.url = URL::URLWithString(server.url("/"))};
  std::promise<std::int64_t> told;
  FileDownloadHandler handler;
  handler.didComplete = [&](const URLResponse&, const Ref<Error>& error) {
    told.set_value(error->code());
  };
  const auto first = FileDownload::downloadWithRequest(*session, request, *file, handler);
  EXPECT_EQ(download().code, 512);
  first->cancel();
  first->cancel();
  EXPECT_EQ(told.get_future().get(), URLErrorCancelled);
  const mode_t mask = ::umask(027);
  EXPECT_EQ(download().code, 0);
  ::umask(mask);
  EXPECT_EQ(permissionsOf("plan.svg"), fs::perms(0640));
  EXPECT_EQ(takeAsked().size(), 1u);  // the cancelled download sent no request
  const auto refusal = [&](const std::string& path) {
    Ref<Error> error;
    EXPECT_EQ(FileDownload::downloadWithRequest(*session, request, *URL::fileURLWithPath(path), {},
                                                &error),
              nullptr);
    return error->code();
  };
  EXPECT_EQ(refusal(directory.path("none/plan.svg")), 4);  // the folder
  EXPECT_EQ(refusal(directory.path("")), 512);
  EXPECT_EQ(refusal(""), 512);
  EXPECT_EQ(refusal(directory.path(std::string(250, 'x'))), 514);
  ASSERT_EQ(::mkfifo(directory.path("pipe.svg.download").c_str(), 0600), 0);
  EXPECT_EQ(refusal(directory.path("pipe.svg")), 512);
}

}  // namespace
