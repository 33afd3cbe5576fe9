#include "Model/Filter.h"

#include <algorithm>
#include <array>
#include <utility>

#include "Model/Numbers.h"

namespace tqdoc {
namespace {

using Kind = FilterStep::Kind;

constexpr std::string_view kBlendModes[] = {
    "normal",      "multiply",   "screen",     "overlay",    "darken",     "lighten",
    "color-dodge", "color-burn", "hard-light", "soft-light", "difference", "exclusion",
    "hue",         "saturation", "color",      "luminosity"};
constexpr std::string_view kOperators[] = {"over", "in",      "out",       "atop",
                                           "xor",  "lighter", "arithmetic"};
constexpr std::string_view kMorphologies[] = {"erode", "dilate"};

struct KindTraits {
  std::string_view name;
  int inputs;  // -1 for any number
  std::size_t numbers;
  std::span<const std::string_view> modes;
};

// In the order of FilterStep::Kind.
constexpr KindTraits kKinds[] = {
    {"blur", 1, 2, {}},           {"offset", 1, 2, {}},
    {"flood", 0, 4, {}},          {"merge", -1, 0, {}},
    {"blend", 2, 0, kBlendModes}, {"composite", 2, 0, kOperators},
    {"colorMatrix", 1, 20, {}},   {"morphology", 1, 2, kMorphologies},
};

[[nodiscard]] const KindTraits& traitsOf(Kind kind) noexcept {
  return kKinds[static_cast<std::size_t>(kind)];
}

[[nodiscard]] bool isValid(const FilterStep& step, int number) {
  const KindTraits& kind = traitsOf(step.kind);
  const std::size_t numbers = step.mode == "arithmetic" ? 4 : kind.numbers;
  return (kind.inputs < 0 || step.inputs.size() == static_cast<std::size_t>(kind.inputs)) &&
         step.inputs.size() <= Filter::kStepLimit && step.numbers.size() == numbers &&
         (kind.modes.empty() ? step.mode.empty()
                             : std::ranges::find(kind.modes, step.mode) != kind.modes.end()) &&
         std::ranges::all_of(step.inputs, [number](int input) {
           return input >= FilterStep::kNothing && input < number;
         });
}

[[nodiscard]] std::optional<FilterStep> stepOf(const tq::Dictionary& archive) {
  const auto* name = tq::objectCast<tq::String>(archive.objectForKey("kind"));
  const auto kind = name != nullptr ? std::ranges::find(kKinds, name->view(), &KindTraits::name)
                                    : std::end(kKinds);
  if (kind == std::end(kKinds)) return std::nullopt;
  const auto numbers = [&](std::string_view key) {
    const auto* array = tq::objectCast<tq::Array>(archive.objectForKey(key));
    return array != nullptr ? numbersOf(*array).value_or(std::vector<double>())
                            : std::vector<double>();
  };
  FilterStep step;
  step.kind = static_cast<Kind>(kind - std::begin(kKinds));
  for (const double input : numbers("inputs")) {
    const bool fits = input >= FilterStep::kNothing && input < double{Filter::kStepLimit};
    step.inputs.push_back(fits ? static_cast<int>(input) : FilterStep::kNothing - 1);
  }
  step.numbers = numbers("numbers");
  if (const auto* mode = tq::objectCast<tq::String>(archive.objectForKey("mode"))) {
    step.mode = mode->view();
  }
  if (const auto rect = numbers("region"); rect.size() == 4) {
    step.region = {rect[0], rect[1], rect[2], rect[3]};
  }
  step.linear = numberIn(archive, "linear", 1) != 0;
  return step;
}

[[nodiscard]] tq::Ref<tq::Dictionary> archiveOf(const FilterStep& step) {
  const auto archive = tq::MutableDictionary::dictionary();
  const auto set = [&](std::string_view key, std::span<const double> numbers) {
    if (!numbers.empty()) archive->setObject(tq::Array::arrayWithNumbers(numbers), key);
  };
  archive->setObject(tq::String::of(traitsOf(step.kind).name), "kind");
  set("inputs", std::vector<double>(step.inputs.begin(), step.inputs.end()));
  set("numbers", step.numbers);
  if (!step.mode.empty()) archive->setObject(tq::String::of(step.mode), "mode");
  if (const auto& r = step.region) {
    set("region", std::array{r->origin.x, r->origin.y, r->size.width, r->size.height});
  }
  if (!step.linear) archive->setObject(tq::Number::numberWith(tq::NumberValue(false)), "linear");
  return tq::refCast<tq::Dictionary>(archive->copy());
}

[[nodiscard]] bool areSame(const tq::Rect& a, const tq::Rect& b) {
  return a.origin == b.origin && a.size == b.size;
}

void append(std::string& text, std::span<const double> numbers) {
  for (const double number : numbers) text += ' ' + tq::Number::numberWith(number)->description();
}

}  // namespace

bool operator==(const FilterStep& a, const FilterStep& b) {
  return a.kind == b.kind && a.inputs == b.inputs && a.numbers == b.numbers && a.mode == b.mode &&
         !a.region == !b.region && (!a.region || areSame(*a.region, *b.region)) &&
         a.linear == b.linear;
}

Filter::Filter(const tq::Rect& region, std::vector<FilterStep> steps)
    : region_(archivable(region)), steps_(std::move(steps)) {
  for (FilterStep& step : steps_) {
    for (double& number : step.numbers) number = archivable(number);
    if (step.region) step.region = archivable(*step.region);
  }
}

Filter::Filter(tq::TQJSONDecoder& decoder) : region_(decoder.decodeRectForKey("region")) {
  const auto archives = decoder.decodeObjectForKey<tq::Array>("steps");
  for (std::size_t i = 0; archives && i < archives->count() && i <= kStepLimit; ++i) {
    const auto* archive = archives->isPacked()
                              ? nullptr
                              : tq::objectCast<tq::Dictionary>(&archives->objectAtIndex(i));
    auto step = archive != nullptr ? stepOf(*archive) : std::nullopt;
    if (!step) break;
    steps_.push_back(*std::move(step));
  }
  if (!archives || steps_.size() != archives->count() || !areValid(steps_)) {
    refuse(decoder, "a filter has invalid steps");
    steps_.clear();
  }
}

void Filter::encodeAsJSON(tq::TQJSONEncoder& encoder) const {
  encoder.encodeRect(region_, "region");
  std::vector<tq::Ref<tq::Object>> archives;
  for (const FilterStep& step : steps_) archives.push_back(archiveOf(step));
  encoder.encodeObject(tq::Array::arrayWithObjects(std::move(archives)), "steps");
}

bool Filter::areValid(std::span<const FilterStep> steps) {
  bool valid = !steps.empty() && steps.size() <= kStepLimit;
  for (std::size_t i = 0; i < steps.size(); ++i) valid &= isValid(steps[i], static_cast<int>(i));
  return valid;
}

std::string Filter::description() const {
  const auto& [origin, size] = region_;
  std::string text = "within";
  append(text, std::array{origin.x, origin.y, size.width, size.height});
  for (const FilterStep& step : steps_) {
    text += &step == steps_.data() ? ": " : ", ";
    text += traitsOf(step.kind).name;
    if (!step.mode.empty()) text += ' ' + step.mode;
    append(text, step.numbers);
  }
  return text;
}

bool Filter::isEqual(const tq::Object& other) const {
  const auto* filter = tq::objectCast<Filter>(&other);
  return filter != nullptr && areSame(filter->region_, region_) && filter->steps_ == steps_;
}

std::size_t Filter::hash() const { return std::hash<std::string>()(description()); }

std::span<const std::string_view> modesOf(Kind kind) noexcept { return traitsOf(kind).modes; }

}  // namespace tqdoc
