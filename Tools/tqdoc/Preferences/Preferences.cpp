#include "Preferences/Preferences.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <utility>

namespace {

using tqdoc::Colours;

constexpr std::pair<Colours, std::string_view> kWords[] = {
    {Colours::automatic, "auto"}, {Colours::always, "always"}, {Colours::never, "never"}};
constexpr std::string_view kRecent = "recent";

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

// File names are bytes, not always UTF-8, and are stored as data.

std::vector<std::string> recentDrawings() {
  std::vector<std::string> paths;
  const auto stored = tq::UserDefaults::standardUserDefaults()->objectForKey(kRecent);
  const auto* const list = tq::objectCast<tq::Array>(stored.get());
  if (list == nullptr) return paths;
  for (const tq::Object& each : *list) {
    if (const auto* path = tq::objectCast<tq::Data>(&each)) paths.emplace_back(path->view());
  }
  return paths;
}

void rememberDrawing(const std::string& path) {
  const auto count = std::clamp<std::int64_t>(preferences::recentCount.value(), 0, kMostRecent);
  const std::vector<std::string> before = recentDrawings();
  tq::RecentsList<std::string> recent(before, count);
  recent.insert(std::filesystem::absolute(path).lexically_normal());
  if (std::ranges::equal(recent, before)) return;
  std::vector<tq::Ref<tq::Object>> paths;
  for (const std::string& each : recent) paths.push_back(tq::Data::dataWithBytes(each));
  tq::UserDefaults::standardUserDefaults()->setObject(tq::Array::arrayWithObjects(std::move(paths)),
                                                      kRecent);
}

void forgetDrawings() { tq::UserDefaults::standardUserDefaults()->removeObjectForKey(kRecent); }

}  // namespace tqdoc
