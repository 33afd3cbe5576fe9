#include <TQFoundation/objects/URL.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

#include <TQFoundation/objects/Hash.h>

namespace tq {
namespace {

constexpr bool isLetter(char c) noexcept {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
constexpr bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }

/// Returns "scheme" for "scheme:rest"; empty for a plain path.
std::string_view schemeOf(std::string_view text) noexcept {
  if (text.empty() || !isLetter(text[0])) return {};
  for (std::size_t i = 1; i < text.size(); ++i) {
    const char c = text[i];
    if (c == ':') return text.substr(0, i);
    if (!isLetter(c) && !isDigit(c) && c != '+' && c != '-' && c != '.') break;
  }
  return {};
}

bool isFileScheme(std::string_view scheme) noexcept {
  if (scheme.size() != 4) return false;
  for (std::size_t i = 0; i < 4; ++i) {
    if ((scheme[i] | 0x20) != "file"[i]) return false;
  }
  return true;
}

int hexDigit(char c) noexcept {
  if (isDigit(c)) return c - '0';
  const char lower = static_cast<char>(c | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

std::optional<std::string> unescaped(std::string_view text) {
  std::string path;
  path.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      path += text[i];
      continue;
    }
    if (text.size() - i < 3) return std::nullopt;
    const int high = hexDigit(text[i + 1]);
    const int low = hexDigit(text[i + 2]);
    if (high < 0 || low < 0 || high + low == 0) return std::nullopt;
    path += static_cast<char>(high * 16 + low);
    i += 2;
  }
  return path;
}

std::string escaped(std::string_view path) {
  constexpr std::string_view kPlain = "/-._~!$&'()*+,=:@";
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  text.reserve(path.size());
  for (const char c : path) {
    if (isLetter(c) || isDigit(c) || kPlain.find(c) != std::string_view::npos) {
      text += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      text += '%';
      text += kDigits[byte >> 4];
      text += kDigits[byte & 15];
    }
  }
  return text;
}

/// Returns the path in `rest`, the text after "file:".
std::optional<std::string> pathOfFileURL(std::string_view rest) {
  if (rest.starts_with("//")) {
    rest.remove_prefix(2);
    const std::size_t slash = rest.find('/');
    const std::string_view host = rest.substr(0, slash);
    if (!host.empty() && host != "localhost") return std::nullopt;
    rest = slash == std::string_view::npos ? std::string_view() : rest.substr(slash);
  }
  return unescaped(rest.substr(0, rest.find_first_of("?#")));
}

}  // namespace

Ref<URL> URL::fileURLWithPath(std::string_view path) {
  std::string whole;
  if (!path.empty() && path.front() != '/') {
    std::error_code failure;  // the working directory was removed: the path stays relative
    whole = std::filesystem::current_path(failure).string();
    if (!whole.empty() && whole.back() != '/') whole += '/';
  }
  whole += path;
  return Ref<URL>::adopt(new URL(std::move(whole), {}));
}

Ref<URL> URL::URLWithString(std::string_view text) {
  const std::string_view scheme = schemeOf(text);
  if (scheme.empty()) return fileURLWithPath(text);
  if (!isFileScheme(scheme)) return Ref<URL>::adopt(new URL({}, std::string(text)));
  const auto path = pathOfFileURL(text.substr(scheme.size() + 1));
  return path ? fileURLWithPath(*path) : nullptr;
}

std::string_view URL::lastPathComponent() const noexcept {
  std::string_view rest = isFileURL() ? path_ : foreign_;
  while (rest.size() > 1 && rest.ends_with('/')) rest.remove_suffix(1);
  const std::size_t slash = rest.rfind('/');
  return slash == std::string_view::npos || rest.size() == 1 ? rest : rest.substr(slash + 1);
}

std::string URL::absoluteString() const {
  return isFileURL() ? "file://" + escaped(path_) : foreign_;
}

bool URL::isEqual(const Object& other) const {
  const auto* url = objectCast<URL>(&other);
  return url != nullptr && path_ == url->path_ && foreign_ == url->foreign_;
}

std::size_t URL::hash() const { return detail::hashOfBytes(isFileURL() ? path_ : foreign_); }

}  // namespace tq
