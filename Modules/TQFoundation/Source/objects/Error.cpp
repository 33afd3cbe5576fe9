#include <TQFoundation/objects/Error.h>

#include <cstring>
#include <utility>

#include <TQFoundation/objects/Hash.h>
#include <TQFoundation/objects/String.h>
#include <TQFoundation/objects/detail/Equality.h>

namespace tq {
namespace {

constexpr std::int64_t kCorruptData = 3840;

/// Returns the domain's text for its code; empty for an unknown code.
std::string_view textOf(std::string_view domain, std::int64_t code) {
  if (domain == CocoaErrorDomain && code == kCorruptData) {
    return "The data couldn’t be read because it isn’t in the correct format.";
  }
  const int number = static_cast<int>(code);
  if (domain != POSIXErrorDomain || number != code || number <= 0) return {};
  const char* const text = strerrordesc_np(number);  // independent of the locale
  return text != nullptr ? text : "";
}

}  // namespace

Error::Error(std::string_view domain, std::int64_t code, Ref<Dictionary> userInfo)
    : domain_(domain),
      code_(code),
      userInfo_(userInfo ? refCast<Dictionary>(userInfo->copy()) : Dictionary::dictionary()) {}

Ref<Error> Error::errorWithDomain(std::string_view domain, std::int64_t code,
                                  Ref<Dictionary> userInfo) {
  return Ref<Error>::adopt(new Error(domain, code, std::move(userInfo)));
}

Ref<Error> Error::errorWithDomain(std::string_view domain, std::int64_t code,
                                  std::string_view description) {
  // The description may come from anywhere, for example from a host's exception. Malformed bytes
  // are repaired so that the text is not lost.
  Ref<String> text = String::stringWithUTF8Repaired(description);
  return errorWithDomain(domain, code,
                         Dictionary::dictionaryWithEntries({{LocalizedDescriptionKey, text}}));
}

std::string Error::localizedDescription() const {
  const Object* const given = userInfo_->objectForKey(LocalizedDescriptionKey);
  if (const auto* text = objectCast<String>(given)) return text->description();
  if (const std::string_view text = textOf(domain_, code_); !text.empty()) return std::string(text);
  return "The operation couldn’t be completed. (" + domain_ + " error " + std::to_string(code_) +
         ".)";
}

bool Error::isEqual(const Object& other) const {
  if (this == &other) return true;
  return objectCast<Error>(&other) != nullptr && detail::haveEqualContents(*this, other);
}

std::size_t Error::hash() const {
  return detail::hashJoined(detail::hashOfBytes(domain_),
                            detail::hashOfWord(static_cast<std::uint64_t>(code_)));
}

std::string Error::description() const {
  return "Error Domain=" + domain_ + " Code=" + std::to_string(code_) + " \"" +
         localizedDescription() + "\" UserInfo=" + userInfo_->description();
}

}  // namespace tq
