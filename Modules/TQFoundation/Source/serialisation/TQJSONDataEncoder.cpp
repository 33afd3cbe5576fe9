#include <TQFoundation/serialisation/TQJSONDataEncoder.h>

#include <algorithm>
#include <new>
#include <string>
#include <utility>

#include <TQFoundation/objects/Exception.h>

namespace tq {
namespace {

constexpr std::string_view kChanged = "The buffer was changed while an archive was written to it.";

}  // namespace

Ref<TQJSONDataEncoder> TQJSONDataEncoder::initWithData(Ref<MutableData> data) {
  return makeRef<TQJSONDataEncoder>(std::move(data));
}

TQJSONDataEncoder::TQJSONDataEncoder(Ref<MutableData> data) : data_(std::move(data)) {
  if (!data_) setError(TQJSONDataEncoderError, 0, "Invalid output");
}

void TQJSONDataEncoder::setData(Ref<MutableData> data) {
  if (isOpen_) return setError(TQJSONEncoderError, 0, kChanged);
  data_ = std::move(data);
}

// The host can change or reallocate the buffer at any time, so the window is memory of the sink's
// own. Without memory for it, text is only slower.
void TQJSONDataEncoder::openWindow() noexcept {
  const std::uint64_t allowed = longestArchive() - std::min(longestArchive(), written_);
  const std::size_t size = piece_ ? kPieceSize : 0;
  lendWindow(piece_.get(), piece_.get() + std::min<std::uint64_t>(size, allowed));
}

void TQJSONDataEncoder::append(std::span<const std::byte> text) {
  if (isOpen_ && data_->length() != end_) {
    throw Exception(InvalidArgumentException, std::string(kChanged));
  }
  data_->append(text);
  end_ = data_->length();
  written_ += text.size();
}

void TQJSONDataEncoder::flush() {
  if (!isOpen_) return;
  append(std::as_bytes(std::span<const char>(piece_.get(), windowCursor())));
  openWindow();
}

bool TQJSONDataEncoder::encodeRootObject(LentObject object, Ref<Error>* error) {
  if (!data_) setError(TQJSONDataEncoderError, 0, "Invalid output");
  if (isUsed() || this->error()) return TQJSONEncoder::encodeRootObject(object, error);
  const auto self = share(*this);  // objects that are encoded may release it
  piece_.reset(new (std::nothrow) char[kPieceSize]);
  end_ = data_->length();
  isOpen_ = true;
  openWindow();
  const bool encoded = TQJSONEncoder::encodeRootObject(object, error);
  try {
    flush();
  } catch (...) {
    recordException(TQJSONEncoderError, 0);
  }
  isOpen_ = false;
  lendWindow(nullptr, nullptr);
  piece_.reset();
  if (!this->error()) return encoded;
  setOutError(error, this->error());
  return false;
}

void TQJSONDataEncoder::writeData(const void* bytes, std::size_t length) {
  if (!data_) return;
  try {
    flush();
    requireLength(written_ + length);
    append({static_cast<const std::byte*>(bytes), length});
    if (isOpen_) openWindow();
  } catch (...) {
    if (!error()) recordException(TQJSONEncoderError, 0);
    throw;
  }
}

}  // namespace tq
