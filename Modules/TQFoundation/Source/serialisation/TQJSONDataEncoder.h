#pragma once

/// @file TQJSONDataEncoder.h
/// Writes JSON archives to memory.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Data.h>
#include <TQFoundation/serialisation/TQJSONEncoder.h>

namespace tq {

/// Appends the archive to a growable buffer, in pieces of some kilobytes. While encodeRootObject()
/// runs, the buffer belongs to the sink: text that was written may not be visible in it yet, and
/// what the host appends or removes, or another buffer that it sets, is error 0.
class TQ_EXPORT TQJSONDataEncoder : public Subclass<TQJSONDataEncoder, TQJSONEncoder> {
 public:
  static constexpr std::string_view className = "TQJSONDataEncoder";

  /// Returns an encoder. If `data` is null, it has the error "Invalid output" from the start and
  /// encodes nothing.
  [[nodiscard]] static Ref<TQJSONDataEncoder> initWithData(Ref<MutableData> data);
  explicit TQJSONDataEncoder(Ref<MutableData> data);

  /// The buffer, or null.
  [[nodiscard]] const Ref<MutableData>& data() const noexcept { return data_; }
  /// Error 0, without effect, while encoding. Null is the same error as above.
  void setData(Ref<MutableData> data);

  bool encodeRootObject(LentObject object, Ref<Error>* error = nullptr) override;
  void writeData(const void* bytes, std::size_t length) final;

 private:
  static constexpr std::size_t kPieceSize = 16384;

  void openWindow() noexcept;
  void append(std::span<const std::byte> text);
  void flush();

  Ref<MutableData> data_;
  std::unique_ptr<char[]> piece_;  // the window while encodeRootObject() runs; null: no window
  std::size_t end_ = 0;            // the length of the buffer after the last append()
  std::uint64_t written_ = 0;      // bytes of the archive in the buffer
  bool isOpen_ = false;            // encodeRootObject() is running
};

}  // namespace tq
