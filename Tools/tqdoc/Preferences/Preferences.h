#pragma once

/// @file Preferences.h
/// What the program keeps from run to run, in the user's preferences.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <TQFoundation/TQFoundation.h>

namespace tqdoc {

enum class Colours { automatic, always, never };

/// Taken where the command line says nothing.
namespace preferences {
extern const tq::Preference<Colours> colours;
extern const tq::Preference<bool> gzip;           ///< archives are packed
extern const tq::Preference<std::int64_t> width;  ///< pixels across a picture; 0: the drawing's own
extern const tq::Preference<std::int64_t> recentCount;
}  // namespace preferences

inline constexpr std::int64_t kMostRecent = 1'000;

/// The drawings opened last by name, the most recent first: absolute paths.
[[nodiscard]] std::vector<std::string> recentDrawings();
/// Puts the drawing first, and leaves out those beyond preferences::recentCount.
void rememberDrawing(const std::string& path);
void forgetDrawings();

}  // namespace tqdoc

/// Stored as words, which people can read.
template <>
struct tq::RawRepresentable<tqdoc::Colours> {
  using RawValue = std::string;
  static std::optional<tqdoc::Colours> fromRawValue(const std::string& word);
  static std::string rawValue(tqdoc::Colours colours);
};
