#pragma once

/// @file TQJSONFileEncoder.h
/// The sink that writes to an open file.

#include <cstddef>
#include <memory>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/platform/files/FileHandle.h>
#include <TQFoundation/serialisation/TQJSONEncoder.h>

namespace tq {

/// Gathers the archive in a fixed buffer of 4096 bytes and writes the buffer when the next byte
/// would not fit, with one system call each time and one more at the end. A write that takes fewer
/// bytes than it was given is not tried again: it is the error "Archive write failed" with the
/// system's error number (0 after a short write), and writing goes on. A failed encoding leaves a
/// partly written file. The file stays open.
class TQ_EXPORT TQJSONFileEncoder : public Subclass<TQJSONFileEncoder, TQJSONEncoder> {
 public:
  static constexpr std::string_view className = "TQJSONFileEncoder";
  /// Bytes that are collected before they are written.
  static constexpr std::size_t kBufferSize = 4096;

  /// Writes from the file's current place on.
  [[nodiscard]] static Ref<TQJSONFileEncoder> initWithFile(Ref<FileHandle> file);
  explicit TQJSONFileEncoder(Ref<FileHandle> file);

  /// The file; to be set before anything is encoded.
  [[nodiscard]] const Ref<FileHandle>& output() const noexcept { return output_; }
  void setOutput(Ref<FileHandle> output) noexcept { output_ = std::move(output); }

  /// Writes what the buffer holds, with one system call. The buffer is left as it is: called again,
  /// it writes the same bytes again.
  void finishWriting();

  /// As every encoder does, then finishWriting(), whether or not it succeeded.
  bool encodeRootObject(LentObject object, Ref<Error>* error = nullptr) override;
  /// Adds to the buffer, which is written whenever it is full.
  void writeData(const void* bytes, std::size_t length) final;

 private:
  void writeOut(std::size_t count);

  Ref<FileHandle> output_;
  std::unique_ptr<char[]> buffer_;  // also the encoder's window; its cursor is how far it is full
};

}  // namespace tq
