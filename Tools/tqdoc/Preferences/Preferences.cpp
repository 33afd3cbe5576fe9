#include "Preferences/Preferences.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

namespace {

using tqdoc::Colours;

constexpr std::pair<Colours, std::string_view> kWords[] = {
    {Colours::automatic, "auto"}, {Colours::always, "always"}, {Colours::never, "never"}};

}  // namespace

std::optional<Colours> tq::RawRepresentable<Colours>::fromRawValue(const std::string& word) {
  for (const auto& [colours, known] : kWords) {
    if (word == known) return colours;
  }
  return std::nullopt;
}

std::string tq::RawRepresentable<Colours>::rawValue(Colours colours) {
  return std::string(
      std::ranges::find(kWords, colours, [](const auto& w) { return w.first; })->second);
}

namespace tqdoc {

namespace preferences {
const tq::Preference<Colours> colours("colours", Colours::automatic);
const tq::Preference<bool> gzip("gzip", false);
const tq::Preference<std::int64_t> width("width", 0);
const tq::Preference<std::int64_t> recentCount("recentCount", 10);
}  // namespace preferences

namespace {
const tq::Preference<std::vector<std::filesystem::path>> recent("recent", {});
}  // namespace

std::vector<std::string> recentDrawings() {
  const auto paths = recent.value();
  return {paths.begin(), paths.end()};
}

void rememberDrawing(const std::string& path) {
  std::error_code fault;  // the working directory may be gone
  const auto absolute = std::filesystem::absolute(path, fault);
  if (fault) return;
  const auto count = std::clamp<std::int64_t>(preferences::recentCount.value(), 0, kMostRecent);
  const auto before = recent.value();
  tq::RecentsList<std::filesystem::path> list(before, count);
  list.insert(absolute.lexically_normal());
  if (!std::ranges::equal(list, before)) recent.setValue({list.begin(), list.end()});
}

void forgetDrawings() { recent.removeValue(); }

bool savePreferences(tq::Ref<tq::Error>* error) {
  return tq::UserDefaults::standardUserDefaults()->synchronize(error);
}

}  // namespace tqdoc
