#pragma once

/// @file TQJSONFileEncoder.h
/// Writes JSON archives to open files.

#include <cstddef>
#include <cstdint>
#include <memory>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/platform/files/FileHandle.h>
#include <TQFoundation/serialisation/TQJSONEncoder.h>

namespace tq {

/// Collects the archive in a buffer of 4096 bytes. The buffer is written with one system call when
/// the next byte does not fit, and once more at the end. A write of fewer bytes than the buffer
/// holds is not retried: it is the error "Archive write failed" with the system's error number (0
/// after a short write), and writing continues. A failed encoding leaves a partly written file. The
/// file stays open.
class TQ_EXPORT TQJSONFileEncoder : public Subclass<TQJSONFileEncoder, TQJSONEncoder> {
 public:
  static constexpr std::string_view className = "TQJSONFileEncoder";
  /// The size of the buffer in bytes.
  static constexpr std::size_t kBufferSize = 4096;

  /// Returns an encoder that writes at the file's current position.
  [[nodiscard]] static Ref<TQJSONFileEncoder> initWithFile(Ref<FileHandle> file);
  explicit TQJSONFileEncoder(Ref<FileHandle> file);

  /// The file. Must be set before anything is encoded.
  [[nodiscard]] const Ref<FileHandle>& output() const noexcept { return output_; }
  void setOutput(Ref<FileHandle> output) noexcept { output_ = std::move(output); }

  /// Writes the content of the buffer with one system call. The buffer is not emptied: a second
  /// call writes the same bytes again.
  virtual void finishWriting();

  /// Writes an archive and calls finishWriting(), whether or not the encoding succeeded. An
  /// exception from finishWriting() of a derived class is error 1.
  bool encodeRootObject(LentObject object, Ref<Error>* error = nullptr) override;
  /// Appends to the buffer.
  void writeData(const void* bytes, std::size_t length) final;

 private:
  void writeOut(std::size_t count);

  Ref<FileHandle> output_;
  std::uint64_t written_ = 0;  // bytes of the archive that have left the buffer
  std::unique_ptr<char[]>
      buffer_;  // also the encoder's window; the cursor is the end of its content
};

}  // namespace tq
