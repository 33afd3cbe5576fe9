#pragma once

/// @file FileDownload.h
/// Bodies brought to files, gone on with where they broke off.

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

/// What a download tells, on the session's own thread. Neither may throw: that stops the process.
/// Each may be empty.
struct FileDownloadHandler {
  /// Bytes on disk so far, those of earlier tries among them, and in all: -1 while that is not
  /// known. Called at the beginning and for each piece, many times a second.
  std::function<void(std::int64_t received, std::int64_t expected)> didWriteData;
  /// Once, last. Without an error the file is in its place, whole.
  std::function<void(const URLResponse&, Ref<Error>)> didComplete;
};

/// One body on its way to a file. Made suspended, until resume().
///
/// Bytes come to "<file>.download", beside the file, which takes the file's place in one step when
/// it is whole and on the disk: whoever opens the file finds the old content or the new one. When
/// it ends before (no connection, no space, cancelled) the bytes stay, all but the last 16 MiB when
/// the process is killed, and the next download of the same location to the same file asks for the
/// rest alone. The server says
/// whether they are still of the same version; if not, or if it names no versions, the body is
/// begun anew. So it is for every request but a GET.
///
/// Answers other than "200 OK" and the rest that was asked for end it with
/// URLErrorBadServerResponse; what had come before stays. A body takes constant memory.
///
/// Threads: any. Lifetime: lives while it runs, held by its session.
class TQ_EXPORT FileDownload final : public Subclass<FileDownload> {
 public:
  static constexpr std::string_view className = "FileDownload";

  /// @param request  its own Range, If-Range and Accept-Encoding are left out
  /// @return none, with an error of CocoaErrorDomain (as FileHandle's), where no file can be made,
  ///         and while another download to the same file exists, in this process or another
  [[nodiscard]] static Ref<FileDownload> downloadWithRequest(URLSession& session,
                                                             URLRequest request, const URL& file,
                                                             FileDownloadHandler handler,
                                                             Ref<Error>* error = nullptr);
  ~FileDownload() override;

  /// Begins; called again it does nothing.
  void resume();
  /// Ends it with URLErrorCancelled, unless it has ended; also one that was never resumed.
  void cancel();

  /// As didWriteData tells them. Any thread, at any time.
  [[nodiscard]] std::int64_t countOfBytesReceived() const noexcept;
  [[nodiscard]] std::int64_t countOfBytesExpectedToReceive() const noexcept;

 private:
  class Transfer;

  explicit FileDownload(std::shared_ptr<Transfer> transfer) : transfer_(std::move(transfer)) {}

  const std::shared_ptr<Transfer> transfer_;
};

}  // namespace tq
