#pragma once

/// @file Value.h
/// Boxed plain structures: points, sizes, rects, ranges.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include <TQFoundation/base/Point.h>
#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>

namespace tq {

/// A range of indexes: the first one and their number.
struct Range {
  std::uint64_t location = 0;  ///< the first index
  std::uint64_t length = 0;    ///< the number of indexes

  friend constexpr bool operator==(Range, Range) noexcept = default;
};

/// A boxed plain structure: its bytes and its type signature. Threads: any; immutable.
class TQ_EXPORT Value final : public Subclass<Value> {
 public:
  static constexpr std::string_view className = "Value";
  static constexpr std::string_view codingName = "NSValue";

  /// The type signatures of the structures below.
  static constexpr std::string_view kPointType = "{CGPoint=dd}";
  static constexpr std::string_view kSizeType = "{CGSize=dd}";
  static constexpr std::string_view kRectType = "{CGRect={CGPoint=dd}{CGSize=dd}}";
  static constexpr std::string_view kRangeType = "{_NSRange=QQ}";

  /// Boxes the structure unchanged.
  [[nodiscard]] static Ref<Value> valueWithPoint(Point point);
  [[nodiscard]] static Ref<Value> valueWithSize(Size size);
  [[nodiscard]] static Ref<Value> valueWithRect(const Rect& rect);
  [[nodiscard]] static Ref<Value> valueWithRange(Range range);

  /// Boxes the bytes of any plain structure. An empty signature without bytes makes a value without
  /// content.
  [[nodiscard]] static Ref<Value> valueWithBytes(std::string_view typeSignature,
                                                 std::span<const std::byte> bytes);

  /// Boxes a trivially copyable structure.
  template <class T>
  requires std::is_trivially_copyable_v<T>
  [[nodiscard]] static Ref<Value> valueWith(std::string_view typeSignature, const T& structure) {
    return valueWithBytes(typeSignature, std::as_bytes(std::span(&structure, 1)));
  }

  /// Returns the type signature; empty for a value without content.
  [[nodiscard]] const std::string& typeSignature() const noexcept { return type_; }
  /// Returns the bytes of the structure. The value owns them.
  [[nodiscard]] std::span<const std::byte> bytes() const noexcept { return bytes_; }

  /// Returns the structure if signature and size match, else nullopt.
  template <class T>
  requires std::is_trivially_copyable_v<T>
  [[nodiscard]] std::optional<T> as(std::string_view typeSignature) const noexcept {
    T structure{};
    if (!read(typeSignature, std::as_writable_bytes(std::span(&structure, 1)))) return std::nullopt;
    return structure;
  }

  /// Returns the structure if it is of this type, else nullopt.
  [[nodiscard]] std::optional<Point> pointValue() const noexcept { return as<Point>(kPointType); }
  [[nodiscard]] std::optional<Size> sizeValue() const noexcept { return as<Size>(kSizeType); }
  [[nodiscard]] std::optional<Rect> rectValue() const noexcept { return as<Rect>(kRectType); }
  [[nodiscard]] std::optional<Range> rangeValue() const noexcept { return as<Range>(kRangeType); }

  /// Compares signatures and bytes: +0 and -0 differ, and rects are not standardised.
  [[nodiscard]] bool isEqual(const Object& other) const override;
  [[nodiscard]] std::size_t hash() const override;

  /// Returns `{x, y}`, `{w, h}` and `{{x, y}, {w, h}}` for points, sizes and rects, else the
  /// signature and the byte count.
  [[nodiscard]] std::string description() const override;

 private:
  Value(std::string_view type, std::span<const std::byte> bytes);
  [[nodiscard]] bool read(std::string_view typeSignature, std::span<std::byte> into) const noexcept;

  std::string type_;
  std::vector<std::byte> bytes_;
};

}  // namespace tq
