#include <TQFoundation/serialisation/TQJSONFileEncoder.h>

#include <algorithm>
#include <new>
#include <string>
#include <utility>

namespace tq {

Ref<TQJSONFileEncoder> TQJSONFileEncoder::initWithFile(Ref<FileHandle> file) {
  return makeRef<TQJSONFileEncoder>(std::move(file));
}

TQJSONFileEncoder::TQJSONFileEncoder(Ref<FileHandle> file)
    : output_(std::move(file)), buffer_(new (std::nothrow) char[kBufferSize]) {
  if (!buffer_) {
    setError(TQJSONFileEncoderError, 0, "Memory allocation error");
    return;
  }
  lendWindow(buffer_.get(), buffer_.get() + kBufferSize);
}

// Called for text that does not fit the rest of the buffer, and by users for their own bytes.
void TQJSONFileEncoder::writeData(const void* bytes, std::size_t length) {
  if (!buffer_) return;
  const char* from = static_cast<const char*>(bytes);
  for (;;) {
    const auto room = static_cast<std::size_t>(windowEnd() - windowCursor());
    const std::size_t fitting = std::min(length, room);
    std::char_traits<char>::copy(windowCursor(), from, fitting);  // null is allowed if empty
    lendWindow(windowCursor() + fitting, windowEnd());
    if (fitting == length) return;  // a full buffer is written when the next byte arrives
    requireLength(written_ + kBufferSize + 1);
    writeOut(kBufferSize);
    written_ += kBufferSize;
    lendWindow(buffer_.get(), windowEnd());
    from += fitting;
    length -= fitting;
  }
}

void TQJSONFileEncoder::finishWriting() {
  if (buffer_) writeOut(static_cast<std::size_t>(windowCursor() - buffer_.get()));
}

void TQJSONFileEncoder::writeOut(std::size_t count) {
  const int descriptor = output_ ? output_->fileDescriptor() : -1;
  const WriteResult result = writeOnce(descriptor, std::as_bytes(std::span(buffer_.get(), count)));
  if (result.count != static_cast<std::ptrdiff_t>(count)) {
    setError(TQJSONFileEncoderError, result.errorNumber, "Archive write failed");
  }
}

bool TQJSONFileEncoder::encodeRootObject(LentObject object, Ref<Error>* error) {
  const auto self = share(*this);  // objects that are encoded may release it
  const bool wasUsed = isUsed();
  const bool encoded = TQJSONEncoder::encodeRootObject(object, error);
  if (wasUsed) return encoded;  // the buffer still has the end of the first archive
  try {
    finishWriting();
  } catch (...) {
    recordException(TQJSONFileEncoderError, 1);
  }
  if (!this->error()) return encoded;
  setOutError(error, this->error());
  return false;
}

}  // namespace tq
