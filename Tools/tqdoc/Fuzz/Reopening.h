#pragma once

#include <string_view>

#include "../../../Modules/TQFoundation/Fuzz/support/Bytes.h"
#include "Files/Drawing.h"

namespace tqdoc {

/// Registers the document model, and silences the log.
inline void prepareModel() {
  static const bool isReady = [] {
    registerModel();
    tq::setPlainLogSink([](std::string_view) {});
    return true;
  }();
  static_cast<void>(isReady);
}

/// Returns the document after it was archived and opened again. It must be the same.
inline tq::Ref<Document> reopened(const tq::Ref<Document>& document) {
  const auto archive = tq::TQJSONEncoder::encodeObjectAsData(document);
  tq::fuzz::require(archive != nullptr);
  tq::Ref<Document> again = openArchive(*archive, "a.tqdoc", nullptr);
  tq::fuzz::require(again != nullptr);
  tq::fuzz::require(tq::TQJSONEncoder::encodeObjectAsData(again)->isEqual(*archive));
  return again;
}

}  // namespace tqdoc
