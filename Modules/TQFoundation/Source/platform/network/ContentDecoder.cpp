#include <TQFoundation/platform/network/detail/ContentDecoder.h>

#include <zlib.h>

#include <array>

#include <TQFoundation/platform/network/detail/URLSessionEngine.h>

namespace tq {

struct ContentDecoder::Stream : z_stream {
  Stream() : z_stream{} {}
  ~Stream() { inflateEnd(this); }  // no effect if inflateInit2() was not called
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
};

ContentDecoder::ContentDecoder(bool isGzip)
    : stream_(std::make_unique<Stream>()), isGzip_(isGzip) {}

ContentDecoder::~ContentDecoder() = default;

std::unique_ptr<ContentDecoder> ContentDecoder::decoderForCoding(std::string_view coding) {
  const bool isGzip =
      detail::isSameHeader(coding, "gzip") || detail::isSameHeader(coding, "x-gzip");
  if (!isGzip && !detail::isSameHeader(coding, "deflate")) return nullptr;
  return std::unique_ptr<ContentDecoder>(new ContentDecoder(isGzip));
}

// "deflate" means the zlib format, but some servers send it without its header. Such a stream
// cannot begin with the byte of a header: that would be a stored block with padding other than 0.
bool ContentDecoder::begin(std::byte first) {
  constexpr int kGzip = 16;  // added to the size of the window
  constexpr unsigned kMethod = 0x0f;
  const bool isRaw = !isGzip_ && (std::to_integer<unsigned>(first) & kMethod) != Z_DEFLATED;
  const int result =
      inflateInit2(stream_.get(), isRaw ? -MAX_WBITS : MAX_WBITS + (isGzip_ ? kGzip : 0));
  hasBegun_ = true;
  return result == Z_OK;
}

bool ContentDecoder::decode(std::span<const std::byte> bytes,
                            const std::function<bool(std::span<const std::byte>)>& take) {
  constexpr std::size_t kPiece = std::size_t{1} << 15;
  std::array<std::byte, kPiece> piece;
  if (bytes.empty()) return true;
  if (!hasBegun_ && !begin(bytes[0])) return false;
  Stream& stream = *stream_;
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<std::byte*>(bytes.data()));
  stream.avail_in = static_cast<uInt>(bytes.size());
  do {
    // A gzip file may have several members. Nothing may follow the other formats.
    if (isComplete_ && (!isGzip_ || inflateReset(&stream) != Z_OK)) return false;
    stream.next_out = reinterpret_cast<Bytef*>(piece.data());
    stream.avail_out = kPiece;
    const int result = inflate(&stream, Z_NO_FLUSH);
    if (result == Z_BUF_ERROR) return true;  // needs more bytes
    if (result != Z_OK && result != Z_STREAM_END) return false;
    isComplete_ = result == Z_STREAM_END;
    const std::size_t length = kPiece - stream.avail_out;
    if (length != 0 && !take(std::span(piece).first(length))) return false;
  } while (stream.avail_in != 0 || (stream.avail_out == 0 && !isComplete_));
  return true;
}

}  // namespace tq
