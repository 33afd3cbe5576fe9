#pragma once

/// @file TQJSONURLEncoder.h
/// Writes JSON archives to existing files by location.

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/URL.h>
#include <TQFoundation/serialisation/TQJSONFileEncoder.h>

namespace tq {

/// Opens an existing file and writes the archive over it from its start. The file is neither
/// created nor truncated: if it was longer, its end remains after the archive. If the file cannot
/// be opened, the encoder has that error from the start and encodes nothing. The destructor closes
/// the file. To save a document, use TQJSONEncoder::saveObject().
class TQ_EXPORT TQJSONURLEncoder final : public Subclass<TQJSONURLEncoder, TQJSONFileEncoder> {
 public:
  static constexpr std::string_view className = "TQJSONURLEncoder";

  /// Opens the existing file at `url` for writing.
  [[nodiscard]] static Ref<TQJSONURLEncoder> initWithURL(const URL& url);
  explicit TQJSONURLEncoder(const URL& url);
  ~TQJSONURLEncoder() override;
};

}  // namespace tq
