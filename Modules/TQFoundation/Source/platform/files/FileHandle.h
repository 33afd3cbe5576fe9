#pragma once

/// @file FileHandle.h
/// Open files, and the write call that all writers use.

#include <cstddef>
#include <span>
#include <string_view>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/URL.h>

namespace tq {

/// An open file.
///
/// Threads: one at a time.
class TQ_EXPORT FileHandle final : public Subclass<FileHandle> {
 public:
  static constexpr std::string_view className = "FileHandle";

  /// Opens an existing file for writing at its start. The file is neither created nor truncated.
  /// Blocks on a named pipe until it has a reader. The handle closes the file. Standard streams
  /// that are closed are opened on /dev/null, so that the file does not get their numbers.
  ///
  /// @return null on failure, with an error of CocoaErrorDomain: 4 no such file, 513 no permission,
  ///         514 name too long, 516 file exists, 640 no space, 642 read-only volume, 512 anything
  ///         else, such as a directory. Its UnderlyingErrorKey is the system's error.
  [[nodiscard]] static Ref<FileHandle> fileHandleForWritingToURL(const URL& url,
                                                                 Ref<Error>* error = nullptr);

  /// Wraps a descriptor. With `closeOnDealloc`, the handle owns it and closes it, also if the
  /// handle cannot be allocated; otherwise the caller owns it.
  [[nodiscard]] static Ref<FileHandle> fileHandleWithFileDescriptor(int descriptor,
                                                                    bool closeOnDealloc = false);

  ~FileHandle() override;

  /// Returns the descriptor; -1 after the file was closed.
  [[nodiscard]] int fileDescriptor() const noexcept { return descriptor_; }

  /// Closes the file now, even if the caller owns the descriptor. A second call has no effect.
  void closeFile() noexcept;

 private:
  FileHandle(int descriptor, bool closeOnDealloc) noexcept
      : descriptor_(descriptor), closeOnDealloc_(closeOnDealloc) {}

  int descriptor_;
  bool closeOnDealloc_;
};

/// The result of one write call.
struct WriteResult {
  std::ptrdiff_t count = 0;  ///< bytes written, or -1
  int errorNumber = 0;       ///< the system's error number; 0 for a short write
};

/// Makes one write call of the system, without repeating it. Any thread. A pipe without a reader
/// raises SIGPIPE, which ends the process unless the host ignores or blocks it.
[[nodiscard]] TQ_EXPORT WriteResult writeOnce(int descriptor,
                                              std::span<const std::byte> bytes) noexcept;

}  // namespace tq
