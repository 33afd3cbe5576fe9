#pragma once

/// @file Preferences.h
/// Settings and recent drawings, stored in the user's preferences.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <TQFoundation/TQFoundation.h>

namespace tqdoc {

enum class Colours { automatic, always, never };

/// Defaults for options that the command line does not give.
namespace preferences {
extern const tq::Preference<Colours> colours;
extern const tq::Preference<bool> gzip;           ///< archives are compressed
extern const tq::Preference<std::int64_t> width;  ///< of pictures, in pixels; 0: the drawing's own
extern const tq::Preference<std::int64_t> recentCount;
}  // namespace preferences

inline constexpr std::int64_t kMostRecent = 1'000;

/// Returns the absolute paths of recently opened drawings, latest first.
[[nodiscard]] std::vector<std::string> recentDrawings();
/// Puts the drawing first, and drops those beyond preferences::recentCount.
void rememberDrawing(const std::string& path);
void forgetDrawings();

/// Writes changed preferences to their file. What is not written by the end of the program is lost.
bool savePreferences(tq::Ref<tq::Error>* error);

}  // namespace tqdoc

/// Stored as readable words.
template <>
struct tq::RawRepresentable<tqdoc::Colours> {
  using RawValue = std::string;
  static std::optional<tqdoc::Colours> fromRawValue(const std::string& word);
  static std::string rawValue(tqdoc::Colours colours);
};
