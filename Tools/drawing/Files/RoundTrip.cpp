#include "Files/RoundTrip.h"

#include <algorithm>

#include "Model/Compare.h"
#include "Render/Canvas.h"

namespace tqdoc {
namespace {

/// Describes the first byte at which two archives differ.
[[nodiscard]] std::string byteDifference(std::string_view a, std::string_view b) {
  const auto [at, other] = std::ranges::mismatch(a, b);
  return "archives of " + std::to_string(a.size()) + " and " + std::to_string(b.size()) +
         " bytes differ from byte " + std::to_string(at - a.begin()) + " on";
}

}  // namespace

RoundTrip roundTrip(const std::string& path) {
  RoundTrip result;
  tq::Ref<tq::Error> error;
  const auto fail = [&](const char* step) {
    result.failure = path + ": " + step + ": " + error->localizedDescription();
    return result;
  };
  SvgDrawing drawing = openDrawing(path, &error);
  if (!drawing.document) {
    result.failure = error->localizedDescription();
    return result;
  }
  result.leftOut = std::move(drawing.leftOut);
  const auto archive = tq::TQJSONEncoder::encodeObjectAsData(drawing.document, &error);
  if (!archive) return fail("archiving");
  result.archiveBytes = archive->length();
  result.reopened = openArchive(*archive, path, &error);
  if (!result.reopened) return fail("reopening");
  const auto again = tq::TQJSONEncoder::encodeObjectAsData(result.reopened, &error);
  if (!again) return fail("archiving again");
  result.document = std::move(drawing.document);

  if (archive->view() != again->view()) {
    result.differences.push_back(byteDifference(archive->view(), again->view()));
  }
  if (auto difference = firstDifference(*result.document, *result.reopened)) {
    result.differences.push_back(*std::move(difference));
  }
  if (isArchive(path)) {
    const auto file = tq::dataWithContentsOfURL(*tq::URL::fileURLWithPath(path), &error);
    const auto text = file ? archiveText(file, path, &error) : nullptr;
    if (!text) return fail("reading again");
    if (text->view() != archive->view()) {
      result.differences.push_back("file and " + byteDifference(text->view(), archive->view()));
    }
  }
  return result;
}

bool looksTheSame(const Document& a, const Document& b, int side) {
  const Canvas one = renderedSquare(a, side);
  const Canvas other = renderedSquare(b, side);
  return std::ranges::equal(one.pixels(), other.pixels());
}

}  // namespace tqdoc
