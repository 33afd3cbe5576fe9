#include <TQFoundation/environment/TQVersion.h>

#include <cstdint>

#include <TQFoundation/objects/String.h>

namespace tq {
namespace {

/// Removes the component up to the next "." from `rest` and returns its number. Returns 0 if `rest`
/// is empty.
std::int64_t nextComponent(std::string_view& rest) noexcept {
  const std::size_t dot = rest.find('.');
  const std::int64_t value = lenientInteger(rest.substr(0, dot));
  rest = dot == std::string_view::npos ? std::string_view() : rest.substr(dot + 1);
  return value;
}

template <class Text>
std::optional<std::string_view> highest(std::span<const Text> versions) noexcept {
  std::string_view candidate = "0";
  for (const std::string_view version : versions) {
    if (TQCompareVersions(candidate, version) == -1) candidate = version;
  }
  if (candidate == "0") return std::nullopt;
  return candidate;
}

}  // namespace

int TQCompareVersions(std::string_view first, std::string_view second) noexcept {
  for (int component = 0; component < 3; ++component) {
    const std::int64_t a = nextComponent(first);
    const std::int64_t b = nextComponent(second);
    if (a != b) return a < b ? -1 : 1;
  }
  return 0;
}

std::optional<std::string_view> TQHighestVersionNumber(
    std::span<const std::string_view> versions) noexcept {
  return highest(versions);
}

std::optional<std::string_view> TQHighestVersionNumber(
    std::span<const std::string> versions) noexcept {
  return highest(versions);
}

}  // namespace tq
