#pragma once

/// @file FileDownload.h
/// Resumable HTTP downloads to files.

#include <cstdint>
#include <functional>
#include <memory>
#include <utility>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/URL.h>
#include <TQFoundation/platform/network/URLSession.h>

namespace tq {

/// Callbacks of a download, called on the session's thread. Each may be empty. They must not throw:
/// an exception stops the process. The download releases them at its end, so they may own it.
struct FileDownloadHandler {
  /// Progress: the bytes on disk, including those of earlier attempts, and the expected total, -1
  /// if it is unknown. Called at the start and for each piece, many times a second.
  std::function<void(std::int64_t received, std::int64_t expected)> didWriteData = nullptr;
  /// Called once, last. Without an error the file is complete and in its place.
  std::function<void(const URLResponse&, Ref<Error>)> didComplete = nullptr;
};

/// The download of one file. Suspended until resume() is called.
///
/// Bytes are written to "<file>.download". When this file is complete and on the disk, it replaces
/// the target in one step, so a reader finds the old content or the new one.
///
/// If the download ends early (no connection, no space, cancelled), the bytes stay. If the process
/// is killed, all but the last 16 MiB stay. The next download of the same URL to the same file
/// requests only the rest. The server decides whether the file is still the same version; if it is
/// not, or if the server does not name versions (in at most 1000 bytes), the download starts again.
/// It also starts again if the rest comes without the validator (ETag or Last-Modified) and the
/// total length of the first response. Requests other than GET always start again.
///
/// A response other than "200 OK" or the requested part, or an encoded body, ends the download with
/// URLErrorBadServerResponse; the bytes received before stay. More bytes than announced end it too,
/// and none stay. Memory use is constant.
///
/// A "<file>.download" that another user owns, or that has a second hard link, is not written to:
/// its name is removed. If that fails, or if it is a symbolic link, the download is an error.
///
/// Threads:  any.
/// Lifetime: its session keeps it alive while it runs.
class TQ_EXPORT FileDownload final : public Subclass<FileDownload> {
 public:
  static constexpr std::string_view className = "FileDownload";

  /// Creates a download to `file`.
  /// @param request  its headers Range, If-Range and Accept-Encoding are ignored
  /// @return null, with an error of CocoaErrorDomain (as from FileHandle), if the file cannot be
  ///         created, or if this or another process has a download to the same file
  [[nodiscard]] static Ref<FileDownload> downloadWithRequest(URLSession& session,
                                                             URLRequest request, const URL& file,
                                                             FileDownloadHandler handler,
                                                             Ref<Error>* error = nullptr);
  ~FileDownload() override;

  /// Starts the download. Later calls have no effect.
  void resume();
  /// Ends it with URLErrorCancelled unless it has ended, even if it was never resumed.
  void cancel();

  /// The values that didWriteData reports. Any thread, at any time.
  [[nodiscard]] std::int64_t countOfBytesReceived() const noexcept;
  [[nodiscard]] std::int64_t countOfBytesExpectedToReceive() const noexcept;

 private:
  class Transfer;

  explicit FileDownload(std::shared_ptr<Transfer> transfer) : transfer_(std::move(transfer)) {}

  const std::shared_ptr<Transfer> transfer_;
};

}  // namespace tq
