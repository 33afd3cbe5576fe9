#pragma once

/// @file Filter.h
/// Filters: steps that turn the pixels of a node into others, such as a shadow.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <TQFoundation/TQFoundation.h>

namespace tqdoc {

/// One step of a filter. It makes an image from other images.
///
/// - blur: 1 input; numbers: the standard deviations to the right and down
/// - offset: 1 input; numbers: the distances to the right and down
/// - flood: no input; numbers: red, green, blue and alpha within 0...1
/// - merge: any number of inputs
/// - blend: 2 inputs; mode: a CSS blend mode
/// - composite: 2 inputs; mode: an operator, such as "over"; numbers of "arithmetic": k1 to k4
/// - colorMatrix: 1 input; numbers: 4 rows of 5
/// - morphology: 1 input; mode: "erode" or "dilate"; numbers: the radii to the right and down
///
/// The first input of blend and composite is in front of the second one. The first input of merge
/// is at the bottom. Lengths are in the coordinates of the filtered node.
struct FilterStep {
  enum class Kind : std::uint8_t {
    blur,
    offset,
    flood,
    merge,
    blend,
    composite,
    colorMatrix,
    morphology
  };
  /// Inputs that are not the number of an earlier step.
  static constexpr int kSource = -1;       ///< what the node draws
  static constexpr int kSourceAlpha = -2;  ///< the same in black
  static constexpr int kNothing = -3;      ///< a transparent image

  Kind kind = Kind::merge;
  std::vector<int> inputs;
  std::vector<double> numbers;
  std::string mode;
  std::optional<tq::Rect> region;  ///< clips the result; the filter's region by default
  bool linear = true;              ///< computes with linear light instead of sRGB values

  friend bool operator==(const FilterStep& a, const FilterStep& b);
};

/// A filter for one node. The result is that of the last step. Immutable; any thread.
class Filter final : public tq::Subclass<Filter> {
 public:
  static constexpr std::string_view className = "TQDocFilter";
  /// The maximum number of steps.
  static constexpr std::size_t kStepLimit = 100;

  /// `steps` must be valid; see areValid().
  /// @param region  clips all images, in the coordinates of the filtered node
  Filter(const tq::Rect& region, std::vector<FilterStep> steps);
  explicit Filter(tq::TQJSONDecoder& decoder);
  void encodeAsJSON(tq::TQJSONEncoder& encoder) const;

  [[nodiscard]] const tq::Rect& region() const noexcept { return region_; }
  [[nodiscard]] std::span<const FilterStep> steps() const noexcept { return steps_; }

  /// Returns true for 1 to kStepLimit steps with the inputs, numbers and modes of their kind.
  [[nodiscard]] static bool areValid(std::span<const FilterStep> steps);

  /// Returns the region and the steps, such as "within 0 0 9 9: blur 2 2, merge".
  [[nodiscard]] std::string description() const override;
  [[nodiscard]] bool isEqual(const tq::Object& other) const override;
  [[nodiscard]] std::size_t hash() const override;

 private:
  tq::Rect region_;
  std::vector<FilterStep> steps_;
};

/// The modes of a kind of step; empty if it has none.
[[nodiscard]] std::span<const std::string_view> modesOf(FilterStep::Kind kind) noexcept;

}  // namespace tqdoc
