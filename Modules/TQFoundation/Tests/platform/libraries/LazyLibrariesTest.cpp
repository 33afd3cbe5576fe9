#include <TQFoundation/platform/bytes/Digest.h>
#include <TQFoundation/platform/libraries/LazyLibrary.h>
#include <TQFoundation/platform/network/Keychain.h>
#include <TQFoundation/platform/network/URLSession.h>

#include <dlfcn.h>
#include <errno.h>
#include <link.h>

#include <future>

#include "support/CapturedLog.h"
#include "support/Child.h"
#include "support/Errors.h"
#include "support/Threads.h"

namespace {

std::atomic<bool> areMissing = false;

}  // namespace

// Replaces the C library's function for every library in the process.
extern "C" __attribute__((visibility("default"))) void* dlopen(const char* file, int flags) {
  static const auto real = reinterpret_cast<decltype(&dlopen)>(dlsym(RTLD_NEXT, "dlopen"));
  return real(areMissing ? (std::string("/nowhere/") + file).c_str() : file, flags);
}
extern "C" void tqNoSuchFunction();

namespace {

std::vector<std::string> loadedFiles() {
  std::vector<std::string> paths;
  ::dl_iterate_phdr(
      [](dl_phdr_info* info, std::size_t, void* all) {
        return static_cast<std::vector<std::string>*>(all)->emplace_back(info->dlpi_name), 0;
      },
      &paths);
  return paths;
}

// The libraries of a program that is linked with ours and does nothing yet.
TEST(LazyLibraries, AreNotLoadedAtTheStart) {
  const std::set<std::string_view> expected{
      "ld-linux-aarch64", "ld-linux-x86-64", "libTQFoundation", "libc",
      "libc++",           "libc++abi",       "libdeflate",      "libfmt",
      "libgcc_s",         "libglib-2",       "libicudata",      "libicui18n",
      "libicuuc",         "liblz4",          "liblzma",         "libm",
      "libmimalloc",      "libpcre2-8",      "libsimdjson",     "libsqlite3",
      "libstdc++",        "libtbb",          "libunwind",       "libz",
      "linux-vdso"};
  const std::vector<std::string> paths = loadedFiles();
  EXPECT_GT(paths.size(), 5u);
  for (const std::string_view path : paths) {
    const std::string_view file = path.substr(path.rfind('/') + 1);
    const std::string_view name = file.substr(0, file.find('.'));
    const bool isSanitizer = name.ends_with("san") || name == "libresolv";  // AddressSanitizer's
    if (path.empty() || isSanitizer) continue;  // the program itself has no name
    EXPECT_TRUE(expected.contains(name)) << path;
  }
}

std::int64_t codeOfTask(const char* url, std::string* description = nullptr) {
  std::promise<Ref<Error>> end;
  const auto keep = [&](const Ref<Data>&, const URLResponse&, Ref<Error> error) {
    end.set_value(std::move(error));
  };
  URLSession::sessionWithConfiguration({})
      ->dataTaskWithURL(URL::URLWithString(url), keep)
      ->resume();
  const Ref<Error> error = end.get_future().get();
  if (description != nullptr) *description = error->localizedDescription();
  return codeOf(error);
}

TEST(LazyLibraries, AreNamedInErrorsWhileTheyAreMissing) {
  const auto names = [](const char* library) {
    return testing::MatchesRegex(std::string(".*A library could not be loaded: /nowhere/") +
                                 library + R"(\.so\.[0-9]+: cannot open .*: No such file.*\.)");
  };
  Child child([&] {
    areMissing = true;
    const CapturedLog log;
    EXPECT_FALSE(sha1Digest({}));
    EXPECT_THAT(log.messages(), ElementsAre(names("libcrypto")));
    Ref<Error> error;
    const Ref<URL> program = URL::fileURLWithPath("/proc/self/exe");
    EXPECT_FALSE(sha1DigestOfFile(*program, &error));
    expectFileError(error, 256, ELIBACC, error->localizedDescription());
    EXPECT_THAT(error->localizedDescription(), names("libcrypto"));
    const KeychainItem item{"com.korvan.test", "nobody"};
    EXPECT_FALSE(item.remove(&error));
    expectError(error, KeychainErrorDomain, KeychainErrorCode::noService);
    EXPECT_THAT(error->localizedDescription(), names("libsecret-1"));
    std::string description;
    EXPECT_EQ(codeOfTask("http://127.0.0.1/", &description), URLErrorUnknown);
    EXPECT_THAT(description, names("libcurl"));

    areMissing = false;  // the next use tries again
    EXPECT_TRUE(sha1DigestOfFile(*program));
    EXPECT_EQ(codeOfTask("file:///"), URLErrorUnsupportedURL);
  });
  EXPECT_EQ(child.end(), 0);
}

TEST(LazyLibraries, MayBeLoadedByManyThreadsAtOnce) {
  onThreads(4, [] { EXPECT_TRUE(sha1Digest({})); });
}

// Threads may outlive main(). The handler that is registered first runs last, after libcrypto's.
TEST(LazyLibraries, StayUsableUntilTheProcessEnds) {
  Child child([] {
    static int (*begin)(std::uint64_t, const void*) = nullptr;
    ASSERT_EQ(std::atexit([] { ::_exit(begin(0, nullptr) == 1 ? 0 : 1); }), 0);
    ASSERT_TRUE(sha1Digest({}));
    for (const std::string& path : loadedFiles()) {
      if (path.find("libcrypto") == path.npos) continue;
      void* const library = ::dlopen(path.c_str(), RTLD_LAZY | RTLD_NOLOAD);
      begin = reinterpret_cast<decltype(begin)>(::dlsym(library, "OPENSSL_init_crypto"));
    }
    ASSERT_TRUE(begin);
    std::exit(1);
  });
  EXPECT_EQ(child.end(), 0);
}

TEST(LazyLibraries, NeedAllTheirFunctions) {
  struct LibC : tq::detail::LazyLibrary {
    LibC() : LazyLibrary("libc.so.6") {}
    TQ_LAZY_FUNCTION(labs);
    TQ_LAZY_FUNCTION(tqNoSuchFunction);
    TQ_LAZY_FUNCTION(llabs);
  };
  std::string reason;
  EXPECT_EQ(tq::detail::lazyLibrary<LibC>(reason), nullptr);
  EXPECT_THAT(reason, HasSubstr("undefined symbol: tqNoSuchFunction."));
}

}  // namespace
