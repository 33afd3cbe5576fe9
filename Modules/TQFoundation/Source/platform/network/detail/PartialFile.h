#pragma once

/// @file PartialFile.h
/// A partially downloaded file that another process can resume.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/URL.h>

namespace tq::detail {

/// The first bytes of a body are in "<file>.download". A note, "<file>.download-note", has a digest
/// of the URL (which may contain secrets), the validator (the server's name for this version of the
/// body), its total length, and the number of bytes that are known to be on the disk; only these
/// are resumed. The note is written before the first byte, so bytes are never mistaken for those of
/// another body. Only the owner can read the note, and the file if it is to replace another one. A
/// file or note of another user, or with a second hard link, is not resumed.
///
/// The file is locked while it is open: only one process has it at a time. Threads: one at a time.
class PartialFile {
 public:
  /// Opens the partial file for the body of `source`, or creates an empty one.
  /// @return null, with an error of CocoaErrorDomain, on failure, and while another one is open
  [[nodiscard]] static std::unique_ptr<PartialFile> open(const URL& file, std::string_view source,
                                                         Ref<Error>* error);
  /// Keeps the bytes if they can be resumed, otherwise removes the file.
  ~PartialFile();
  PartialFile(const PartialFile&) = delete;
  PartialFile& operator=(const PartialFile&) = delete;

  [[nodiscard]] std::int64_t length() const noexcept { return length_; }
  /// The server's name for the version of the bytes; empty if they cannot be resumed.
  [[nodiscard]] const std::string& validator() const noexcept { return validator_; }

  /// The length of the whole body as first announced; -1 if it is unknown.
  [[nodiscard]] std::int64_t total() const noexcept { return total_; }
  void setTotal(std::int64_t total) noexcept { total_ = total; }

  /// Each returns null or the error.
  [[nodiscard]] Ref<Error> beginAnew(std::string_view validator, std::int64_t total);
  [[nodiscard]] Ref<Error> append(std::span<const std::byte> bytes);
  /// Replaces the target with this file. The target keeps its attributes as with replaceFile(), and
  /// a symbolic link is kept. Must be the last call.
  [[nodiscard]] Ref<Error> finish();

 private:
  PartialFile(const URL& file, std::string_view source);

  [[nodiscard]] int openLocked(bool isReplacement);
  [[nodiscard]] int readNote();
  [[nodiscard]] int cut(std::int64_t length);
  [[nodiscard]] int writeNote();
  [[nodiscard]] int removeNote();
  [[nodiscard]] Ref<Error> failure(int errorNumber) const;

  const Ref<URL> file_;
  const std::string place_;  // the target, with links resolved
  const std::string path_;
  const std::string note_;
  const std::string source_;  // its digest; empty if the system forbids SHA-1: never matches
  std::string validator_;
  std::int64_t total_ = -1;
  std::int64_t length_ = 0;
  std::int64_t noted_ = 0;  // of these, known to be on the disk
  int descriptor_ = -1;
};

}  // namespace tq::detail
