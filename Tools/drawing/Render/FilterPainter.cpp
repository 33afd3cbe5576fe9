#include "Render/FilterPainter.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "Render/PixelSteps.h"

namespace tqdoc {
namespace {

using Kind = FilterStep::Kind;

// In the order of the modes of their kinds; arithmetic has none.
constexpr cairo_operator_t kBlends[] = {
    CAIRO_OPERATOR_OVER,          CAIRO_OPERATOR_MULTIPLY,       CAIRO_OPERATOR_SCREEN,
    CAIRO_OPERATOR_OVERLAY,       CAIRO_OPERATOR_DARKEN,         CAIRO_OPERATOR_LIGHTEN,
    CAIRO_OPERATOR_COLOR_DODGE,   CAIRO_OPERATOR_COLOR_BURN,     CAIRO_OPERATOR_HARD_LIGHT,
    CAIRO_OPERATOR_SOFT_LIGHT,    CAIRO_OPERATOR_DIFFERENCE,     CAIRO_OPERATOR_EXCLUSION,
    CAIRO_OPERATOR_HSL_HUE,       CAIRO_OPERATOR_HSL_SATURATION, CAIRO_OPERATOR_HSL_COLOR,
    CAIRO_OPERATOR_HSL_LUMINOSITY};
constexpr cairo_operator_t kComposites[] = {CAIRO_OPERATOR_OVER, CAIRO_OPERATOR_IN,
                                            CAIRO_OPERATOR_OUT,  CAIRO_OPERATOR_ATOP,
                                            CAIRO_OPERATOR_XOR,  CAIRO_OPERATOR_ADD};

[[nodiscard]] cairo_operator_t operatorOf(const FilterStep& step) {
  const auto modes = modesOf(step.kind);
  const auto index = static_cast<std::size_t>(std::ranges::find(modes, step.mode) - modes.begin());
  return step.kind == Kind::blend ? kBlends[index] : kComposites[index];
}

/// Puts `image` on `onto`, moved by (dx, dy) pixels.
void combine(cairo_surface_t* onto, cairo_surface_t* image, cairo_operator_t how, double dx = 0,
             double dy = 0) {
  const CairoContext cr(cairo_create(onto));
  cairo_set_source_surface(cr.get(), image, dx, dy);
  cairo_set_operator(cr.get(), how);
  cairo_paint(cr.get());
}

/// A filter at work. Images are copied only while a later step needs the original.
class Run {
 public:
  Run(CairoSurface source, const PixelArea& area, const Filter& filter,
      const tq::AffineTransform& transform)
      : area_(area), filter_(filter), transform_(transform), results_(filter.steps().size() + 1) {
    results_[0].surface = std::move(source);
  }

  [[nodiscard]] CairoSurface result() {
    const auto steps = filter_.steps();
    countUses();
    if (!isAffordable()) return nullptr;
    for (std::size_t i = 0; i < steps.size(); ++i) {
      Image& image = results_[i + 1];
      if (image.uses == 0) continue;
      image.surface = resultOf(steps[i]);
      image.linear = steps[i].linear;
      if (steps[i].region) clip(image.surface.get(), *steps[i].region);
    }
    Image& last = results_.back();
    if (last.linear) setLinear(last.surface.get(), false);
    return std::move(last.surface);
  }

 private:
  struct Image {
    CairoSurface surface;
    bool linear = false;
    std::size_t uses = 0;  // by later steps
  };

  /// The image of an input; null for nothing.
  [[nodiscard]] Image* imageOf(int input) {
    if (input == FilterStep::kNothing) return nullptr;
    return &results_[input < 0 ? 0 : static_cast<std::size_t>(input) + 1];
  }

  void countUses() {
    for (const FilterStep& step : filter_.steps()) {
      for (const int input : step.inputs) {
        if (Image* image = imageOf(input)) ++image->uses;
      }
    }
    ++results_.back().uses;
  }

  /// Counts the images that exist at once, with one for copies.
  [[nodiscard]] bool isAffordable() {
    constexpr std::size_t kPixelLimit = std::size_t{1} << 29;
    std::vector<std::size_t> uses;
    for (const Image& image : results_) uses.push_back(image.uses);
    std::size_t alive = 2, most = 2;
    for (const FilterStep& step : filter_.steps()) {
      most = std::max(most, ++alive);
      for (const int input : step.inputs) {
        const Image* const image = imageOf(input);
        if (image != nullptr && --uses[static_cast<std::size_t>(image - results_.data())] == 0) {
          --alive;
        }
      }
    }
    return most * area_.count() <= kPixelLimit;
  }

  /// Returns an image that the caller may change. The last use of an image takes it.
  [[nodiscard]] CairoSurface take(int input, bool linear) {
    Image* const image = imageOf(input);
    if (image == nullptr) return layerFor(area_);
    CairoSurface own;
    if (--image->uses == 0) {
      own = std::move(image->surface);
    } else {
      own = layerFor(area_);
      combine(own.get(), image->surface.get(), CAIRO_OPERATOR_SOURCE);
    }
    if (input == FilterStep::kSourceAlpha) {
      blacken(own.get());
    } else if (image->linear != linear) {
      setLinear(own.get(), linear);
    }
    return own;
  }

  /// Returns lengths along both axes of the node in pixels.
  [[nodiscard]] tq::Size extentOf(std::span<const double> lengths) const {
    const double x = lengths[0], y = lengths[1];
    return {std::hypot(transform_.a * x, transform_.c * y),
            std::hypot(transform_.b * x, transform_.d * y)};
  }

  [[nodiscard]] CairoSurface resultOf(const FilterStep& step) {
    const std::vector<double>& n = step.numbers;
    const auto input = [&](std::size_t i) { return take(step.inputs[i], step.linear); };
    CairoSurface result;
    switch (step.kind) {
      case Kind::flood:
        return flooded(step);
      case Kind::merge:
        result = layerFor(area_);
        for (std::size_t i = 0; i < step.inputs.size(); ++i) {
          combine(result.get(), input(i).get(), CAIRO_OPERATOR_OVER);
        }
        return result;
      case Kind::offset:
        return shifted(input(0).get(), {transform_.a * n[0] + transform_.c * n[1],
                                        transform_.b * n[0] + transform_.d * n[1]});
      case Kind::blend:
      case Kind::composite: {
        const CairoSurface front = input(0);
        result = input(1);
        if (step.mode == "arithmetic") {
          combineArithmetically(result.get(), front.get(), n);
        } else {
          combine(result.get(), front.get(), operatorOf(step));
        }
        return result;
      }
      case Kind::blur:
        result = input(0);
        blur(result.get(), extentOf(n));
        return result;
      case Kind::morphology:
        result = input(0);
        morph(result.get(), extentOf(n), step.mode == "dilate");
        return result;
      case Kind::colorMatrix:
        result = input(0);
        multiplyColors(result.get(), n);
        return result;
    }
    return result;
  }

  /// An offset beyond the area could exceed cairo's coordinates.
  [[nodiscard]] CairoSurface shifted(cairo_surface_t* image, tq::Vector by) const {
    CairoSurface result = layerFor(area_);
    if (std::abs(by.dx) < area_.width && std::abs(by.dy) < area_.height) {
      combine(result.get(), image, CAIRO_OPERATOR_OVER, by.dx, by.dy);
    }
    return result;
  }

  /// The colour is one of sRGB.
  [[nodiscard]] CairoSurface flooded(const FilterStep& step) const {
    CairoSurface result = layerFor(area_);
    const CairoContext cr(cairo_create(result.get()));
    const std::vector<double>& color = step.numbers;
    cairo_set_source_rgba(cr.get(), color[0], color[1], color[2], color[3]);
    cairo_paint(cr.get());
    if (step.linear) setLinear(result.get(), true);
    return result;
  }

  /// Clears the pixels that `region` does not touch.
  void clip(cairo_surface_t* image, const tq::Rect& region) const {
    const CairoContext cr(cairo_create(image));
    const auto kept = visiblePixels(cr.get(), tq::RectApplyAffineTransform(region, transform_));
    cairo_set_operator(cr.get(), CAIRO_OPERATOR_CLEAR);
    cairo_rectangle(cr.get(), area_.x, area_.y, area_.width, area_.height);
    if (kept) cairo_rectangle(cr.get(), kept->x, kept->y, kept->width, kept->height);
    cairo_set_fill_rule(cr.get(), CAIRO_FILL_RULE_EVEN_ODD);
    cairo_fill(cr.get());
  }

  PixelArea area_;
  const Filter& filter_;
  const tq::AffineTransform transform_;
  std::vector<Image> results_;  // the source, then one for each step
};

}  // namespace

CairoSurface filtered(CairoSurface source, const PixelArea& area, const Filter& filter,
                      const tq::AffineTransform& transform) {
  return Run(std::move(source), area, filter, transform).result();
}

}  // namespace tqdoc
