#pragma once

/// @file FileHandle.h
/// Open files, and the one door through which they are written.

#include <cstddef>
#include <span>
#include <string_view>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/URL.h>

namespace tq {

/// An open file. Threads: one at a time.
class TQ_EXPORT FileHandle final : public Subclass<FileHandle> {
 public:
  static constexpr std::string_view className = "FileHandle";

  /// Opens an existing file for writing from its start. It is neither created nor cut; a named pipe
  /// is waited for until somebody reads it. The handle closes it.
  ///
  /// @return none on failure, with an error of CocoaErrorDomain (4 no such file, 513 not permitted,
  ///         514 name too long, 516, 640 no space, 642 read only, 512 anything else, such as a
  ///         directory) that carries the system's own as UnderlyingErrorKey
  [[nodiscard]] static Ref<FileHandle> fileHandleForWritingToURL(const URL& url,
                                                                 Ref<Error>* error = nullptr);

  /// Wraps a descriptor. With `closeOnDealloc` the handle takes it over and closes it (also when
  /// there is no memory for the handle), else it stays the caller's.
  [[nodiscard]] static Ref<FileHandle> fileHandleWithFileDescriptor(int descriptor,
                                                                    bool closeOnDealloc = false);

  ~FileHandle() override;

  /// -1 once the file is closed.
  [[nodiscard]] int fileDescriptor() const noexcept { return descriptor_; }

  /// Closes the file now, whoever owns it; a second call does nothing.
  void closeFile() noexcept;

 private:
  FileHandle(int descriptor, bool closeOnDealloc) noexcept
      : descriptor_(descriptor), closeOnDealloc_(closeOnDealloc) {}

  int descriptor_;
  bool closeOnDealloc_;
};

/// What one write came to.
struct WriteResult {
  std::ptrdiff_t count = 0;  ///< bytes written, or -1
  int errorNumber = 0;       ///< the system's error number; 0 for a short write
};

/// One write call of the system, never repeated. Any thread.
[[nodiscard]] TQ_EXPORT WriteResult writeOnce(int descriptor,
                                              std::span<const std::byte> bytes) noexcept;

}  // namespace tq
