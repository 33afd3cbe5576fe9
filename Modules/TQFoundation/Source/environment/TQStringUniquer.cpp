#include <TQFoundation/environment/TQStringUniquer.h>

#include <iterator>

#include <TQFoundation/objects/String.h>

namespace tq {
namespace {

constexpr std::string_view kCopy = " copy";
constexpr std::size_t kMostDigits = 18;  // longer numbers are part of the stem

struct Numbered {
  std::string_view stem;
  std::uint64_t number;  ///< 1 if the name has no number
};

/// Splits a name: "Oval 7" has the stem "Oval" and the number 7. "Oval 07" and "Oval 1" have no
/// number and are stems as a whole.
Numbered numbered(std::string_view name) {
  const std::size_t space = name.rfind(' ');
  if (space == std::string_view::npos || space == 0) return {name, 1};
  const std::string_view digits = name.substr(space + 1);
  if (digits.empty() || digits.size() > kMostDigits || digits.front() == '0' || digits == "1" ||
      digits.find_first_not_of("0123456789") != std::string_view::npos) {
    return {name, 1};
  }
  return {name.substr(0, space), static_cast<std::uint64_t>(lenientInteger(digits))};
}

}  // namespace

TQStringUniquer::TQStringUniquer(std::span<const std::string> taken) {
  for (const std::string& name : taken) take(name);
}

void TQStringUniquer::take(std::string_view name) { taken_.emplace(name); }

std::string TQStringUniquer::uniqueString(std::string_view wanted) {
  if (!isTaken(wanted)) {
    take(wanted);
    return std::string(wanted);
  }
  const Numbered start = numbered(wanted);
  return firstFree(start.stem, start.number + 1);
}

std::string TQStringUniquer::uniqueCopyName(std::string_view original) {
  const Numbered start = numbered(original);
  if (start.stem.ends_with(kCopy)) return firstFree(start.stem, start.number + 1);
  return firstFree(std::string(original) + std::string(kCopy), 1);
}

// Each run grows by the taken numbers that are found, and merges with the next run when it reaches
// it. So each number is looked up once, even if many calls start below it.
std::string TQStringUniquer::firstFree(std::string_view stem, std::uint64_t number) {
  Runs& runs = runs_[std::string(stem)];
  auto run = runs.upper_bound(number);
  if (run != runs.begin() && std::prev(run)->second >= number) {
    --run;
  } else {
    run = runs.emplace_hint(run, number, number);
  }
  for (;;) {
    std::uint64_t& end = run->second;
    for (auto next = std::next(run); next != runs.end() && next->first == end;) {
      end = next->second;
      next = runs.erase(next);
    }
    std::string name(stem);
    if (end > 1) name.append(" ").append(std::to_string(end));
    const bool isFree = taken_.insert(name).second;
    ++end;
    if (isFree) return name;
  }
}

}  // namespace tq
