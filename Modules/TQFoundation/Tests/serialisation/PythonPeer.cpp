#include <iostream>

#include <TQFoundation/TQFoundation.h>

// The library's side of python.py. Reads documents from standard input, each a line with its kind
// and its length in bytes, then the bytes. Answers each with a line that has the length of the
// document written again, then its bytes; the length is -1 if the document was refused.

namespace {

using namespace tq;

Ref<Data> writtenAgain(const std::string& kind, const Data& document) {
  const Ref<Object> root = kind == "json" ? TQJSONDecoder::decodeDataError(document, nullptr)
                                          : KeyedUnarchiver::unarchiveRootObject(document.bytes());
  if (!root) return nullptr;
  if (kind == "keyed") return KeyedArchiver::archivedDataWithRootObject(*root);
  const Ref<String> text = TQJSONEncoder::encodeObjectAsString(root);
  return text ? Data::dataWithBytes(text->view()) : nullptr;
}

}  // namespace

int main() {
  setPlainLogSink([](std::string_view) {});  // refused documents are expected
  std::string kind;
  for (std::size_t length; std::cin >> kind >> length;) {
    std::string document(length, '\0');
    std::cin.ignore().read(document.data(), static_cast<std::streamsize>(length));
    const Ref<Data> answer = writtenAgain(kind, *Data::dataWithBytes(document));
    if (answer) {
      std::cout << answer->length() << '\n' << answer->view() << std::flush;
    } else {
      std::cout << -1 << std::endl;
    }
  }
}
