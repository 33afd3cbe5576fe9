#include "Compare/Comparison.h"

#include <algorithm>
#include <cstdio>

#include "Compare/Browser.h"
#include "Files/Drawing.h"

namespace tqdoc {
namespace {

[[nodiscard]] std::optional<Image> drawnByReference(const std::string& file, int side) {
  constexpr double kSeconds = 120;
  const std::string pixels = std::to_string(side);
  tq::ExternalTool tool;
  tool.program = "rsvg-convert";
  tool.arguments = {"--width", pixels, "--height", pixels, "--keep-aspect-ratio", file};
  tool.timeoutSeconds = kSeconds;
  const auto result = tq::runExternalTool(tool);
  if (!result || result->exitStatus != 0) return std::nullopt;
  return decodedImage(*result->output);
}

[[nodiscard]] double scaleFor(const Document& document, int side) {
  const tq::Size page = document.page().size;
  return std::min(side / page.width, side / page.height);
}

}  // namespace

Pictures drawBoth(const std::string& file, int side) {
  Pictures pictures;
  pictures.theirs = drawnByReference(file, side);
  if (!pictures.theirs) pictures.explanation = "rsvg-convert fails";
  tq::Ref<tq::Error> error;
  const SvgDrawing drawing = openDrawing(file, &error);
  if (!drawing.document) {
    pictures.explanation = error->localizedDescription();
    return pictures;
  }
  const Canvas canvas = rendered(*drawing.document, scaleFor(*drawing.document, side));
  pictures.ours = Image(canvas);
  Features leftOut = drawing.leftOut;
  addTo(leftOut, canvas.leftOut());
  if (!leftOut.empty()) pictures.explanation = summary(leftOut);
  return pictures;
}

Comparison compare(const Pictures& pictures) {
  Comparison comparison{255, pictures.explanation};
  if (pictures.theirs && pictures.ours) {
    comparison.difference = differenceOf(*pictures.theirs, *pictures.ours);
  } else if (!pictures.theirs && !pictures.ours) {
    comparison.difference = 0;  // neither draws it
  }
  return comparison;
}

std::string judge(const std::string& file, int side, const std::string& browser, double bar) {
  const SvgDrawing drawing = openDrawing(file, nullptr);
  if (!drawing.document) return {};
  const double scale = scaleFor(*drawing.document, side);
  const tq::Size page = drawing.document->page().size;
  const auto third = drawnByBrowser(browser, file, {page.width * scale, page.height * scale});
  if (!third) return {};
  const double difference = differenceOf(*third, Image(rendered(*drawing.document, scale)));
  if (difference > bar) return {};
  char text[80];
  std::snprintf(text, sizeof text, "the browser draws what tqdoc draws (%.2f)", difference);
  return text;
}

}  // namespace tqdoc
