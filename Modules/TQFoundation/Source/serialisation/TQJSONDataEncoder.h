#pragma once

/// @file TQJSONDataEncoder.h
/// Writes JSON archives to memory.

#include <cstddef>
#include <cstdint>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Data.h>
#include <TQFoundation/serialisation/TQJSONEncoder.h>

namespace tq {

/// Appends the archive to a growable buffer. While encodeRootObject() runs, the buffer belongs to
/// the sink: text that was written may not be visible in it yet.
class TQ_EXPORT TQJSONDataEncoder : public Subclass<TQJSONDataEncoder, TQJSONEncoder> {
 public:
  static constexpr std::string_view className = "TQJSONDataEncoder";

  /// Returns an encoder. If `data` is null, it has the error "Invalid output" from the start and
  /// encodes nothing.
  [[nodiscard]] static Ref<TQJSONDataEncoder> initWithData(Ref<MutableData> data);
  explicit TQJSONDataEncoder(Ref<MutableData> data);

  /// The buffer, or null.
  [[nodiscard]] const Ref<MutableData>& data() const noexcept { return data_; }
  /// Must not be called while encoding. Null is the same error as above.
  void setData(Ref<MutableData> data) noexcept { data_ = std::move(data); }

  bool encodeRootObject(LentObject object, Ref<Error>* error = nullptr) override;
  void writeData(const void* bytes, std::size_t length) final;

 private:
  class Window;
  void openWindow(std::size_t room);
  void closeWindow() noexcept;
  [[nodiscard]] std::uint64_t archiveLength() const noexcept;

  Ref<MutableData> data_;
  std::size_t first_ = 0;  // where the archive starts in the buffer
  bool isOpen_ = false;    // the window is the buffer's spare capacity
};

}  // namespace tq
