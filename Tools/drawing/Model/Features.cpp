#include "Model/Features.h"

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

#include <TQFoundation/TQFoundation.h>

namespace tqdoc {

void addTo(Features& all, const Features& more) {
  for (const auto& [name, count] : more) all[name] += count;
}

std::string summary(const Features& features) {
  std::vector<std::pair<std::string, std::size_t>> counts(features.begin(), features.end());
  std::ranges::stable_sort(counts, std::ranges::greater(), [](const auto& c) { return c.second; });
  std::string text;
  for (const auto& [name, count] : counts) {
    if (!text.empty()) text += ", ";
    text += tq::printableText(name) + " " + std::to_string(count);
  }
  return text.empty() ? "none" : text;
}

}  // namespace tqdoc
