#pragma once

/// @file SvgEntities.h
/// Expands the entities that a drawing declares in its document type.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "Model/Features.h"

namespace tqdoc {

/// A drawing's text with its entities expanded.
class ExpandedText {
 public:
  /// All expansions together may have this many bytes, and this many for each byte of the file.
  static constexpr std::size_t kGrowthAllowed = 1 << 20;
  static constexpr std::size_t kGrowthPerByte = 8;

  /// Replaces references to internal general entities (`<!ENTITY name "value">`), also within
  /// values. Does nothing to a text without such declarations. External entities are never read;
  /// references to them stay as they are and are counted, as are those to undeclared entities.
  /// @throws SvgFault if an entity contains itself, or if the text would grow too large
  explicit ExpandedText(std::string_view source);

  [[nodiscard]] std::string_view text() const noexcept { return changed_ ? text_ : source_; }
  [[nodiscard]] const Features& leftOut() const noexcept { return leftOut_; }

  /// Returns the offset in the source of an offset in the text. Within an entity, that of its
  /// reference.
  [[nodiscard]] std::ptrdiff_t sourceOffset(std::ptrdiff_t offset) const noexcept;

 private:
  struct Reference {
    std::size_t source, sourceEnd, text, textEnd;  // offsets before and after expansion
  };

  std::string_view source_;
  std::string text_;
  bool changed_ = false;
  std::vector<Reference> references_;
  Features leftOut_;
};

}  // namespace tqdoc
