#include <TQFoundation/platform/json/JSONDocument.h>

#include <string>

#include <TQFoundation/objects/Dictionary.h>
#include <TQFoundation/objects/String.h>
#include <TQFoundation/objects/UTF.h>
#include <TQFoundation/platform/json/JSONParser.h>
#include <TQFoundation/platform/json/JSONText.h>

namespace tq {

namespace {

Ref<Error> errorFor(std::string_view text, std::optional<detail::JSONFault> found,
                    std::size_t textOffset) {
  detail::JSONFault fault = found.value_or(detail::JSONFault{"Invalid value", 0});
  if (const auto malformed = detail::firstMalformedByte(text)) {
    if (fault.index >= *malformed || fault.message == "Invalid value") {
      fault = {"Malformed UTF-8", *malformed};
    }
  }
  const std::size_t index = fault.index + textOffset;
  const std::string debugText =
      std::string(fault.message) + " around character " + std::to_string(index) + ".";
  return Error::errorWithDomain(
      CocoaErrorDomain, 3840,
      Dictionary::dictionaryWithEntries(
          {{DebugDescriptionKey, String::of(debugText)},
           {JSONDocument::kErrorIndexKey, Number::numberWith(static_cast<std::int64_t>(index))}}));
}

void appendEscaped(std::string& pointer, std::string_view key) {
  for (const char c : key) {
    if (c == '~' || c == '/') {
      pointer.append(c == '~' ? "~0" : "~1");
    } else {
      pointer.push_back(c);
    }
  }
}

}  // namespace

std::string JSONNode::pointer() const {
  std::string pointer;
  JSONNode container = at(tape_->words.get());
  while (!(container == *this)) {
    const bool isObject = container.kind() == Kind::object;
    JSONNode key = container.first();
    JSONNode value = isObject ? key.next() : key;
    std::size_t index = 0;
    for (; value.next().word() <= word_; ++index) {  // the words of a value are adjacent
      key = value.next();
      value = isObject ? key.next() : key;
    }
    pointer.push_back('/');
    if (isObject) {
      appendEscaped(pointer, key.text());
    } else {
      pointer.append(std::to_string(index));
    }
    container = value;
  }
  return pointer;
}

void JSONDocument::Keep::operator()(JSONTape* tape) const noexcept {
  detail::keepTape(std::unique_ptr<JSONTape>(tape));
}

std::optional<JSONDocument> JSONDocument::parse(Ref<const Data> data, Ref<Error>* error,
                                                std::size_t depth) {
  std::string_view text = data->view();
  const std::size_t mark = text.starts_with("\xEF\xBB\xBF") ? 3 : 0;
  text.remove_prefix(mark);
  Tape tape(detail::tapeToWrite().release());
  if (detail::writeTape(text, depth, *tape)) {
    tape->data = std::move(data);
    return JSONDocument(std::move(tape));
  }
  if (error != nullptr) *error = errorFor(text, detail::scanJSON(text, depth), mark);
  return std::nullopt;
}

}  // namespace tq
