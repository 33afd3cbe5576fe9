#include "Fetch.h"

#include <filesystem>
#include <string>
#include <system_error>

#include "Files/Drawing.h"

namespace sketch {
namespace {

/// Returns the last component of an address's path, with an extension that drawings have.
[[nodiscard]] Path fileNameOf(std::string_view address) {
  address = address.substr(0, address.find_first_of("?#"));
  Path name(address.substr(address.rfind('/') + 1));
  const Path extension = name.extension();
  if (extension != ".svg" && extension != ".svgz" && extension != ".tqdoc") name += ".svg";
  return name;
}

}  // namespace

tq::Ref<tq::FileDownload> fetch(std::string_view address, const Path& folder,
                                const FetchHandler& handler, tq::Ref<tq::Error>* error) {
  const auto url = tq::URL::URLWithString(address);
  if (!url || url->isFileURL()) {
    tq::setOutError(error, tqdoc::errorWith("not an address: " + std::string(address)));
    return nullptr;
  }
  const Path file = folder / fileNameOf(address);
  std::error_code ignored;  // the download reports it
  if (std::filesystem::exists(file, ignored)) {
    tq::setOutError(error, tqdoc::errorWith(file.filename().native() + " exists already"));
    return nullptr;
  }
  tq::FileDownloadHandler onSessionThread;
  onSessionThread.didWriteData = [didReceive = handler.didReceive](auto...) { didReceive(); };
  onSessionThread.didComplete = [didEnd = handler.didEnd, file](const tq::URLResponse&,
                                                                tq::Ref<tq::Error> failure) {
    tq::mainQueueAsync([=] { didEnd(file, failure); });
  };
  const auto session = tq::URLSession::sessionWithConfiguration({});
  auto download = tq::FileDownload::downloadWithRequest(
      *session, {.url = url}, *tq::URL::fileURLWithPath(file.native()), onSessionThread, error);
  if (download) download->resume();
  return download;
}

}  // namespace sketch
