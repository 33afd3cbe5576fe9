#include <TQFoundation/serialisation/TQJSONDataEncoder.h>

#include <algorithm>
#include <utility>

namespace tq {

Ref<TQJSONDataEncoder> TQJSONDataEncoder::initWithData(Ref<MutableData> data) {
  return makeRef<TQJSONDataEncoder>(std::move(data));
}

TQJSONDataEncoder::TQJSONDataEncoder(Ref<MutableData> data) : data_(std::move(data)) {
  if (!data_) setError(TQJSONDataEncoderError, 0, "Invalid output");
}

/// Commits the written text to the buffer, also when an exception ends the encoding.
class TQJSONDataEncoder::Window {
 public:
  explicit Window(TQJSONDataEncoder& encoder) : encoder_(encoder) { encoder_.openWindow(0); }
  ~Window() { encoder_.closeWindow(); }
  Window(const Window&) = delete;
  Window& operator=(const Window&) = delete;

 private:
  TQJSONDataEncoder& encoder_;
};

/// The host may have shortened the buffer.
std::uint64_t TQJSONDataEncoder::archiveLength() const noexcept {
  return data_->length() - std::min(first_, data_->length());
}

// An open window belongs to an enclosing encoding. Its text is committed first.
void TQJSONDataEncoder::openWindow(std::size_t room) {
  closeWindow();
  const std::span<std::byte> spare = data_->spareRoom(room);
  auto* begin = reinterpret_cast<char*>(spare.data());
  const std::uint64_t allowed = longestArchive() - std::min(longestArchive(), archiveLength());
  lendWindow(begin, begin + std::min<std::uint64_t>(spare.size(), allowed));
  isOpen_ = true;
}

void TQJSONDataEncoder::closeWindow() noexcept {
  if (!isOpen_) return;
  const auto* begin = reinterpret_cast<const char*>(data_->bytes().data() + data_->length());
  data_->commit(static_cast<std::size_t>(windowCursor() - begin));
  lendWindow(nullptr, nullptr);
  isOpen_ = false;
}

bool TQJSONDataEncoder::encodeRootObject(LentObject object, Ref<Error>* error) {
  if (!data_) setError(TQJSONDataEncoderError, 0, "Invalid output");
  if (this->error()) return TQJSONEncoder::encodeRootObject(object, error);
  const auto self = share(*this);  // objects that are encoded may release it
  if (!isOpen_) first_ = data_->length();
  const Window window(*this);
  return TQJSONEncoder::encodeRootObject(object, error);
}

void TQJSONDataEncoder::writeData(const void* bytes, std::size_t length) {
  if (!data_) return;
  const std::span added(static_cast<const std::byte*>(bytes), length);
  const bool wasOpen = isOpen_;
  closeWindow();
  requireLength(archiveLength() + length);
  data_->append(added);
  if (wasOpen) openWindow(0);
}

}  // namespace tq
