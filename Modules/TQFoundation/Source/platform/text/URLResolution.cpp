#include <TQFoundation/platform/text/URLResolution.h>

#include <glib.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace tq {
namespace {

using GURI = std::unique_ptr<GUri, void (*)(GUri*)>;

/// Returns the URL if its parts can be joined again: "s:/.//p" without its dot would have a host.
GURI joinable(GUri* url) {
  GURI owned(url, g_uri_unref);
  if (url == nullptr) return owned;
  const bool isJoinable =
      g_uri_get_host(url) != nullptr || !std::string_view(g_uri_get_path(url)).starts_with("//");
  return isJoinable ? std::move(owned) : GURI(nullptr, g_uri_unref);
}

/// Returns true if a name means the same with and without escapes.
bool isPlain(std::string_view name) {
  return std::ranges::all_of(name, [](char c) {
    return g_ascii_isalnum(c) || std::string_view("-._~").find(c) != std::string_view::npos;
  });
}

/// Returns what follows "//" up to the path, as GLib sees it; empty if there is none.
std::string authorityOf(std::string text) {
  // GLib ignores white space, but escapes spaces within the text.
  std::erase_if(text, [](char c) { return c != ' ' && g_ascii_isspace(c) != 0; });
  text.erase(0, text.find_first_not_of(' '));
  std::string_view rest = text;
  // g_uri_peek_scheme() would keep each scheme for ever.
  const std::unique_ptr<char, void (*)(void*)> scheme(g_uri_parse_scheme(text.c_str()), g_free);
  if (scheme) rest.remove_prefix(std::strlen(scheme.get()) + 1);
  if (!rest.starts_with("//")) return "";
  return std::string(rest.substr(2, rest.find_first_of("/?#", 2) - 2));
}

/// Returns true if the host has a semicolon, which GLib takes for the start of the path, or is an
/// IPv6 address that GLib would not write as it was read: with a space, which it takes for a zone
/// after it has escaped it, or with any other zone than names.
bool hasUnusableHost(std::string_view authority) {
  const std::size_t semicolon = authority.rfind(';');
  if (semicolon != std::string_view::npos &&
      authority.find('@', semicolon) == std::string_view::npos) {
    return true;
  }
  const std::string_view host = authority.substr(authority.rfind('@') + 1);
  if (!host.starts_with('[')) return false;
  const std::size_t percent = host.find('%'), end = host.rfind(']');
  if (host.substr(0, percent).find(' ') != host.npos) return true;
  if (percent == host.npos || percent > end) return false;
  const std::string_view zone = host.substr(percent, end - percent);
  return !zone.starts_with("%25") || zone.size() == 3 || !isPlain(zone.substr(3));
}

/// Escapes each "%" that begins no escape. With what is decoded after it, it could begin one.
std::string withValidEscapes(std::string_view text) {
  std::string valid;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const std::string_view digits = text.substr(i + 1, 2);
    const bool isEscape =
        digits.size() == 2 && g_ascii_isxdigit(digits[0]) != 0 && g_ascii_isxdigit(digits[1]) != 0;
    valid += text[i];
    if (text[i] == '%' && !isEscape) valid += "25";
  }
  return valid;
}

GURI resolved(const std::string& base, const std::string& reference, int flags) {
  const auto kinds = static_cast<GUriFlags>(flags);
  const GURI parsed = joinable(g_uri_parse(base.c_str(), kinds, nullptr));
  return joinable(parsed ? g_uri_parse_relative(parsed.get(), reference.c_str(), kinds, nullptr)
                         : nullptr);
}

/// GLib decodes hosts as names of computers: "a%2Fb" would become the host "a" and the path "/b".
/// Any other name keeps its escapes.
GURI resolved(const std::string& base, const std::string& reference) {
  constexpr int kFlags = G_URI_FLAGS_ENCODED | G_URI_FLAGS_PARSE_RELAXED;
  GURI url = resolved(base, reference, kFlags);
  const char* const host = url ? g_uri_get_host(url.get()) : nullptr;
  if (host == nullptr || isPlain(host)) return url;
  return resolved(base, reference, kFlags | G_URI_FLAGS_NON_DNS);
}

/// Returns the text of a URL. GLib decodes the "%25" before the zone of an IPv6 address, and leaves
/// it so. No value for "::" with a zone, which GLib writes without its brackets.
std::optional<std::string> textOf(GUri* url) {
  const std::unique_ptr<char, void (*)(void*)> joined(g_uri_to_string(url), g_free);
  std::string text = joined.get();
  const std::string_view host = g_uri_get_host(url) != nullptr ? g_uri_get_host(url) : "";
  const std::size_t zone = host.find('%');
  if (zone == host.npos || host.find(':') == host.npos) return text;
  const std::size_t place = text.find('[' + std::string(host) + ']');
  if (place == text.npos) return std::nullopt;
  return text.insert(place + 1 + zone + 1, "25");
}

}  // namespace

Ref<URL> URLWithString(std::string_view text, const URL* relativeToURL) {
  if (relativeToURL == nullptr) return URL::URLWithString(text);
  const std::string base = withValidEscapes(relativeToURL->absoluteString());
  const std::string reference = withValidEscapes(text);
  // GLib's strings end at the first NUL.
  if ((base + reference).find('\0') != std::string::npos) return nullptr;
  if (hasUnusableHost(authorityOf(base)) || hasUnusableHost(authorityOf(reference))) {
    return nullptr;
  }
  const GURI url = resolved(base, reference);
  const std::optional<std::string> result = url ? textOf(url.get()) : std::nullopt;
  return result ? URL::URLWithString(*result) : nullptr;
}

}  // namespace tq
