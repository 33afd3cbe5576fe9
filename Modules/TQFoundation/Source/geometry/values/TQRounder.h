#pragma once

/// @file TQRounder.h
/// A Rounder<double> as a reference-counted object.

#include <string_view>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/geometry/values/Rounder.h>
#include <TQFoundation/objects/Class.h>
#include <TQFoundation/objects/Ref.h>

namespace tq {

/// Holds one Rounder<double> and calls it. Threads: one at a time.
class TQ_EXPORT TQRounder final : public Subclass<TQRounder> {
 public:
  static constexpr std::string_view className = "TQRounder";
  ~TQRounder() override;

  [[nodiscard]] static Ref<TQRounder> init();  ///< with increment 1
  /// With any increment; see Rounder for 0, NaN and negative ones.
  [[nodiscard]] static Ref<TQRounder> initWithRoundingIncrement(double roundingIncrement);

  /// The rounder that is called.
  [[nodiscard]] const Rounder<double>& rounder() const noexcept { return rounder_; }
  void setRounder(const Rounder<double>& rounder) noexcept { rounder_ = rounder; }

  /// The increment of the rounder.
  [[nodiscard]] double roundingIncrement() const noexcept { return rounder_.roundingIncrement(); }
  void setRoundingIncrement(double increment) noexcept { rounder_.setRoundingIncrement(increment); }

  /// Return what round() and align() of the rounder return.
  [[nodiscard]] double roundValue(double value) const noexcept;
  [[nodiscard]] double alignValue(double value, double toBase) const noexcept;
  [[nodiscard]] double alignValue(double value, double toBase,
                                  double minimumMagnitude) const noexcept;
  [[nodiscard]] Point roundPoint(Point point, AxisMask mask = AxisMask::both) const noexcept;
  [[nodiscard]] Size roundSize(Size size, AxisMask mask = AxisMask::both) const noexcept;
  [[nodiscard]] Vector roundVector(Vector vector, AxisMask mask = AxisMask::both) const noexcept;

 private:
  TQRounder() noexcept = default;

  Rounder<double> rounder_;
};

}  // namespace tq
