#pragma once

/// @file Reopening.h
/// Shared by the fuzz targets: archives and reopens drawings.

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

/// Returns the document after it was archived and opened again. What was opened must be the same
/// once more. (A power of ten may change the first time; see TQJSONEncoder.)
inline tq::Ref<Document> reopened(const tq::Ref<Document>& document) {
  const auto archive = tq::TQJSONEncoder::encodeObjectAsData(document);
  tq::fuzz::require(archive != nullptr);
  tq::Ref<Document> again = openArchive(*archive, "a.tqdoc", nullptr);
  tq::fuzz::require(again != nullptr);
  const auto second = tq::TQJSONEncoder::encodeObjectAsData(again);
  const auto third =
      tq::TQJSONEncoder::encodeObjectAsData(openArchive(*second, "a.tqdoc", nullptr));
  tq::fuzz::require(third->isEqual(*second));
  return again;
}

}  // namespace tqdoc
