#include "Changes.h"

#include <algorithm>
#include <cstddef>

#include "Model/Differences.h"

namespace sketch {
namespace {

using tqdoc::Difference;

[[nodiscard]] std::string lineFor(const Difference& difference) {
  const std::string place = difference.path + "  " + difference.what;
  switch (difference.kind) {
    case Difference::Kind::removed:
      return "− " + place;
    case Difference::Kind::inserted:
      return "+ " + place;
    case Difference::Kind::moved:
      return "> " + place + "\n    from " + difference.oldPath;
    default:
      return "~ " + place + "\n    " + difference.oldValue + "\n    " + difference.newValue;
  }
}

}  // namespace

std::string describeChanges(const tqdoc::Document& before, const tqdoc::Document& after) {
  constexpr std::size_t kMostLines = 20;
  const auto differences = tqdoc::differencesOf(before, after);
  std::string text;
  for (std::size_t i = 0; i < differences.size() && i < kMostLines; ++i) {
    text += lineFor(differences[i]) + "\n";
  }
  const std::size_t rest = differences.size() - std::min(differences.size(), kMostLines);
  if (rest > 0) text += "and " + std::to_string(rest) + " more\n";
  return text;
}

}  // namespace sketch
