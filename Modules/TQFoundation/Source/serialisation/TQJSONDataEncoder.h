#pragma once

/// @file TQJSONDataEncoder.h
/// The sink that writes into memory.

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Data.h>
#include <TQFoundation/serialisation/TQJSONEncoder.h>

namespace tq {

/// Appends the archive to a growable buffer, which grows by its own rule. While encodeRootObject()
/// runs the buffer belongs to the sink: what was written may not show in it yet.
class TQ_EXPORT TQJSONDataEncoder : public Subclass<TQJSONDataEncoder, TQJSONEncoder> {
 public:
  static constexpr std::string_view className = "TQJSONDataEncoder";

  /// Without a buffer the encoder has the error "Invalid output" from the start, and encodes
  /// nothing.
  [[nodiscard]] static Ref<TQJSONDataEncoder> initWithData(Ref<MutableData> data);
  explicit TQJSONDataEncoder(Ref<MutableData> data);

  /// What it writes to, held; filled as it encodes.
  [[nodiscard]] const Ref<MutableData>& data() const noexcept { return data_; }
  /// Between archives only. None is the same error as above.
  void setData(Ref<MutableData> data) noexcept { data_ = std::move(data); }

  bool encodeRootObject(LentObject object, Ref<Error>* error = nullptr) override;
  void writeData(const void* bytes, std::size_t length) final;

 private:
  class Window;
  void openWindow(std::size_t room);
  void closeWindow() noexcept;

  Ref<MutableData> data_;
  bool isOpen_ = false;  // the window is the buffer's spare room
};

}  // namespace tq
