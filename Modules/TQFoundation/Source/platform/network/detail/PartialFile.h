#pragma once

/// @file PartialFile.h
/// A file that is on its way, in a shape that another process can go on from.

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/URL.h>

namespace tq::detail {

/// The first bytes of a body lie in "<file>.download". A note beside it, "<file>.download-note",
/// tells whose they are (a digest of the location, which may hold secrets, and the validator: what
/// the server called this version of the body) and how many have been brought to the disk; only
/// those are gone on from. The note is written before the first byte, so that bytes are never taken
/// for another body's.
///
/// Locked while it is open: one at a time, among all processes. Threads: one at a time.
class PartialFile {
 public:
  /// Opens what is there of the body of `source`, or begins.
  /// @return none, with an error of CocoaErrorDomain, on failure; also while another one is open
  [[nodiscard]] static std::unique_ptr<PartialFile> open(const URL& file, std::string_view source,
                                                         Ref<Error>* error);
  /// Leaves the bytes to be gone on from, or nothing when they cannot be.
  ~PartialFile();
  PartialFile(const PartialFile&) = delete;
  PartialFile& operator=(const PartialFile&) = delete;

  [[nodiscard]] std::int64_t length() const noexcept { return length_; }
  /// What the server called the version that the bytes are of; empty: they cannot be gone on from.
  [[nodiscard]] const std::string& validator() const noexcept { return validator_; }

  /// Each answers none, or what went wrong.
  [[nodiscard]] Ref<Error> beginAnew(std::string_view validator);
  [[nodiscard]] Ref<Error> append(std::span<const std::byte> bytes);
  /// Makes it the file: permissions are kept, and a symbolic link stays one. The last call.
  [[nodiscard]] Ref<Error> finish();

 private:
  PartialFile(const URL& file, std::string_view source);

  [[nodiscard]] int openLocked(struct stat before);
  [[nodiscard]] int readNote();
  [[nodiscard]] int cut(std::int64_t length);
  [[nodiscard]] int writeNote();
  [[nodiscard]] int removeNote();
  [[nodiscard]] Ref<Error> failure(int errorNumber) const;

  const Ref<URL> file_;
  const std::string place_;  // what the file's links lead to
  const std::string path_;
  const std::string note_;
  const std::string source_;  // its digest; empty where the system forbids that: never recognised
  std::string validator_;
  std::int64_t length_ = 0;
  std::int64_t noted_ = 0;  // of them, known to be on the disk
  int descriptor_ = -1;
};

}  // namespace tq::detail
