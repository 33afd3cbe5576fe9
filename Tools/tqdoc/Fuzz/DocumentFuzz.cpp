// Opens any bytes as the archive of a drawing. What was opened must be the same after it is
// archived and opened again. It is drawn, searched, and written as a drawing that can be read.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "Model/HitIndex.h"
#include "Render/Canvas.h"
#include "Reopening.h"
#include "Svg/SvgReader.h"
#include "Svg/SvgWriter.h"

using namespace tqdoc;
using tq::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  prepareModel();
  const auto given = tq::Data::dataWithBytes(std::as_bytes(std::span(bytes, size)));
  tq::Ref<tq::Error> error;
  const tq::Ref<Document> document = openArchive(*given, "a.tqdoc", &error);
  require((document == nullptr) == (error != nullptr));
  if (!document) return 0;
  Canvas canvas(32, 24);
  canvas.draw(*reopened(document), {0, 0, 32, 24});
  (void)HitIndex(*document).hits({1, 2, 3, 4});
  const std::string svg = svgOf(*document);
  require(readSvg(std::as_bytes(std::span(svg)), "a.svg", &error).document != nullptr);
  return 0;
}
