#include <TQFoundation/serialisation/TQJSONURLEncoder.h>

#include <utility>

namespace tq {

Ref<TQJSONURLEncoder> TQJSONURLEncoder::initWithURL(const URL& url) {
  return makeRef<TQJSONURLEncoder>(url);
}

TQJSONURLEncoder::TQJSONURLEncoder(const URL& url) : Subclass(Ref<FileHandle>()) {
  Ref<Error> error;
  setOutput(FileHandle::fileHandleForWritingToURL(url, &error));
  if (!output()) setError(std::move(error));
}

TQJSONURLEncoder::~TQJSONURLEncoder() {
  if (output()) output()->closeFile();
}

}  // namespace tq
