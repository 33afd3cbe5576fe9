#pragma once

/// @file TQJSONURLEncoder.h
/// The sink that writes to a location.

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/URL.h>
#include <TQFoundation/serialisation/TQJSONFileEncoder.h>

namespace tq {

/// Opens an existing file and writes the archive over it from its start: the file is neither made
/// nor cut, so the tail of a longer one stays behind the archive. A location that cannot be opened
/// is the encoder's error from the start, and nothing is encoded. Closes the file when it is
/// destroyed.
class TQ_EXPORT TQJSONURLEncoder final : public Subclass<TQJSONURLEncoder, TQJSONFileEncoder> {
 public:
  static constexpr std::string_view className = "TQJSONURLEncoder";

  /// Opens the existing file at `url`, to be written over from its start.
  [[nodiscard]] static Ref<TQJSONURLEncoder> initWithURL(const URL& url);
  explicit TQJSONURLEncoder(const URL& url);
  ~TQJSONURLEncoder() override;
};

}  // namespace tq
