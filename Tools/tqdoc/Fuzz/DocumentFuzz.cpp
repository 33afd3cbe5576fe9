// Opens any bytes as the archive of a drawing. What was opened must be the same after it is
// archived and opened again. It is drawn, searched, and written as a drawing that can be read.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "../../../Modules/TQFoundation/Fuzz/support/Bytes.h"
#include "Files/Drawing.h"
#include "Model/HitIndex.h"
#include "Render/Canvas.h"
#include "Svg/SvgReader.h"
#include "Svg/SvgWriter.h"

using namespace tqdoc;
using tq::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const bool isReady = [] {
    registerModel();
    tq::setPlainLogSink([](std::string_view) {});
    return true;
  }();
  static_cast<void>(isReady);
  const auto given = tq::Data::dataWithBytes(std::as_bytes(std::span(bytes, size)));
  tq::Ref<tq::Error> error;
  const tq::Ref<Document> document = openArchive(*given, "a.tqdoc", &error);
  require((document == nullptr) == (error != nullptr));
  if (!document) return 0;
  const auto archive = tq::TQJSONEncoder::encodeObjectAsData(document);
  require(archive != nullptr);
  const tq::Ref<Document> reopened = openArchive(*archive, "a.tqdoc", nullptr);
  require(reopened != nullptr);
  require(tq::TQJSONEncoder::encodeObjectAsData(reopened)->isEqual(*archive));
  Canvas canvas(32, 24);
  canvas.draw(*document, {0, 0, 32, 24});
  (void)HitIndex(*document).hits({1, 2, 3, 4});
  const std::string svg = svgOf(*document);
  require(readSvg(std::as_bytes(std::span(svg)), "a.svg", &error).document != nullptr);
  return 0;
}
