#pragma once

/// @file Fetch.h
/// Downloads drawings.

#include <functional>
#include <string_view>

#include "Options.h"

namespace sketch {

struct FetchHandler {
  /// Called on another thread, many times a second, when bytes have arrived.
  std::function<void()> didReceive;
  /// Called once, on the main thread. `error` is null if the file is complete.
  std::function<void(const Path& file, tq::Ref<tq::Error> error)> didEnd;
};

/// Begins to download the drawing at an address to a file of its name in `folder`. If an earlier
/// download of it was interrupted, only the rest is requested.
/// @return the download, which may be cancelled; null, with an error, if there can be no such file
/// or it exists already
[[nodiscard]] tq::Ref<tq::FileDownload> fetch(std::string_view address, const Path& folder,
                                              const FetchHandler& handler,
                                              tq::Ref<tq::Error>* error);

}  // namespace sketch
