#pragma once

/// @file TQRect.h
/// A rect as a mutable, reference-counted object.

#include <cstddef>
#include <string>
#include <string_view>

#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>
#include <TQFoundation/objects/Ref.h>

namespace tq {

/// A mutable object that holds one rect.
///
/// x, y, width, height, origin and size are the raw fields. min, mid and max are those of the
/// standardised rect. Threads: one at a time.
class TQ_EXPORT TQRect final : public Subclass<TQRect> {
 public:
  static constexpr std::string_view className = "TQRect";

  /// Both create an object that holds the rect unchanged (not standardised).
  [[nodiscard]] static Ref<TQRect> initWithRect(const Rect& rect);
  [[nodiscard]] static Ref<TQRect> rectWithRect(const Rect& rect);

  /// The rect, unchanged.
  [[nodiscard]] const Rect& rect() const noexcept { return rect_; }
  void setRect(const Rect& rect) noexcept { rect_ = rect; }

  /// The raw fields. Extents may be negative. Setting one field leaves the others unchanged.
  [[nodiscard]] double x() const noexcept { return rect_.origin.x; }
  [[nodiscard]] double y() const noexcept { return rect_.origin.y; }
  [[nodiscard]] double width() const noexcept { return rect_.size.width; }
  [[nodiscard]] double height() const noexcept { return rect_.size.height; }
  [[nodiscard]] Point origin() const noexcept { return rect_.origin; }
  [[nodiscard]] Size size() const noexcept { return rect_.size; }
  void setX(double x) noexcept { rect_.origin.x = x; }
  void setY(double y) noexcept { rect_.origin.y = y; }
  void setWidth(double width) noexcept { rect_.size.width = width; }
  void setHeight(double height) noexcept { rect_.size.height = height; }
  void setOrigin(Point origin) noexcept { rect_.origin = origin; }
  void setSize(Size size) noexcept { rect_.size = size; }

  /// The values of the standardised rect. For a null rect they are the results of RectGetMinX() and
  /// the similar functions.
  [[nodiscard]] double minX() const noexcept { return RectGetMinX(rect_); }
  [[nodiscard]] double midX() const noexcept { return RectGetMidX(rect_); }
  [[nodiscard]] double maxX() const noexcept { return RectGetMaxX(rect_); }
  [[nodiscard]] double minY() const noexcept { return RectGetMinY(rect_); }
  [[nodiscard]] double midY() const noexcept { return RectGetMidY(rect_); }
  [[nodiscard]] double maxY() const noexcept { return RectGetMaxY(rect_); }
  [[nodiscard]] Point mid() const noexcept { return {midX(), midY()}; }

  /// These move the rect and keep its size: the raw origin becomes value, value - extent / 2 or
  /// value - extent. With a negative extent, setting the minimum therefore sets the maximum and
  /// vice versa.
  void setMinX(double value) noexcept { rect_.origin.x = value; }
  void setMidX(double value) noexcept { rect_.origin.x = value - rect_.size.width / 2; }
  void setMaxX(double value) noexcept { rect_.origin.x = value - rect_.size.width; }
  void setMinY(double value) noexcept { rect_.origin.y = value; }
  void setMidY(double value) noexcept { rect_.origin.y = value - rect_.size.height / 2; }
  void setMaxY(double value) noexcept { rect_.origin.y = value - rect_.size.height; }
  void setMid(Point mid) noexcept {
    setMidX(mid.x);
    setMidY(mid.y);
  }

  /// Returns a new TQRect with the same rect.
  [[nodiscard]] Ref<Object> copy() const override;

  /// Returns whether `other` is this object, or a TQRect whose rect is equal according to
  /// RectEqualToRect(): (5, 5, -5, -5) equals (0, 0, 5, 5).
  [[nodiscard]] bool isEqual(const Object& other) const override;

  /// Changes with the rect. Do not change a TQRect while it is a key of a dictionary.
  [[nodiscard]] std::size_t hash() const override;

  /// "x:%f y:%f w:%f h:%f"
  [[nodiscard]] std::string description() const override;

 private:
  explicit TQRect(const Rect& rect) noexcept : rect_(rect) {}

  Rect rect_;
};

}  // namespace tq
