#include <TQFoundation/platform/text/URLResolution.h>

#include <glib.h>

#include <memory>
#include <string>

namespace tq {

Ref<URL> URLWithString(std::string_view text, const URL* relativeToURL) {
  if (relativeToURL == nullptr) return URL::URLWithString(text);
  const std::string base = relativeToURL->absoluteString();
  const std::string reference(text);
  // GLib's strings end at the first NUL.
  if ((base + reference).find('\0') != std::string::npos) return nullptr;
  constexpr auto kFlags = static_cast<GUriFlags>(G_URI_FLAGS_ENCODED | G_URI_FLAGS_PARSE_RELAXED);
  const std::unique_ptr<char, void (*)(void*)> resolved(
      g_uri_resolve_relative(base.c_str(), reference.c_str(), kFlags, nullptr), g_free);
  return resolved != nullptr ? URL::URLWithString(resolved.get()) : nullptr;
}

}  // namespace tq
