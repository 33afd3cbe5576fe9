#include "Commands/Command.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>
#include <iostream>
#include <set>
#include <system_error>

#include "Preferences/Preferences.h"
#include "Render/Canvas.h"

namespace tqdoc {

namespace {

/// Returns where an output is written: at the end of all links, even if there is no file yet.
[[nodiscard]] std::filesystem::path placeOf(const std::string& output) {
  constexpr int kMostLinks = 40;  // as in the system
  std::error_code fault;          // writing the output reports it
  auto place = std::filesystem::absolute(output == kStandardStream ? "/dev/stdout" : output, fault);
  for (int i = 0; i < kMostLinks; ++i) {
    const auto target = std::filesystem::read_symlink(place, fault);
    if (fault) break;
    place = place.parent_path() / target;
  }
  const auto real = std::filesystem::weakly_canonical(place, fault);
  return fault ? place : real;
}

}  // namespace

Outcome reportError(std::string_view message) {
  std::cerr << "tqdoc: " << tq::printableText(message) << '\n';
  return Outcome::error;
}

SvgDrawing openNamedDrawing(const std::string& path, tq::Ref<tq::Error>* error) {
  SvgDrawing drawing = openDrawing(path, error);
  if (drawing.document && path != kStandardStream) rememberDrawing(path);
  return drawing;
}

void reportUnsupported(const std::string& path, const Features& leftOut) {
  if (!leftOut.empty()) reportError(path + ": unsupported: " + summary(leftOut));
}

bool isOneOf(const std::string& picture, std::span<const std::string> drawings) {
  const bool found = std::ranges::any_of(drawings, [&](const std::string& drawing) {
    std::error_code ignored;  // of names without a file
    return std::filesystem::equivalent(picture, drawing, ignored);
  });
  if (found) reportError(picture + ": is the drawing; not replaced by a picture of it");
  return found;
}

bool isStandardOutput(const std::string& output) {
  return placeOf(output) == placeOf(std::string(kStandardStream));
}

bool isWrittenTwice(const std::vector<std::string>& outputs) {
  std::set<std::filesystem::path> places;
  for (const std::string& output : outputs) {
    if (output.empty() || places.insert(placeOf(output)).second) continue;
    reportError((isStandardOutput(output) ? "standard output" : output) +
                ": would be written twice");
    return true;
  }
  return false;
}

void printJSON(const tq::Object& value) {
  std::cout << tq::TQJSONEncoder::encodeObjectAsData(value)->view() << '\n';
}

tq::Ref<tq::Object> jsonText(std::string_view text) {
  return tq::String::stringWithUTF8Repaired(text);
}

tq::Ref<tq::Object> jsonNumber(double number) {
  return tq::Number::numberWith(tq::NumberValue(number));
}

tq::Ref<tq::Object> jsonRect(const tq::Rect& rect) {
  if (tq::RectIsNull(rect)) return tq::Null::null();
  const double numbers[] = {rect.origin.x, rect.origin.y, rect.size.width, rect.size.height};
  return tq::Array::arrayWithNumbers(std::span<const double>(numbers));
}

tq::Ref<tq::Object> jsonCounts(const Features& counts) {
  auto object = tq::MutableDictionary::dictionary();
  for (const auto& [name, count] : counts) {
    object->setObject(tq::Number::numberWith(tq::NumberValue(count)),
                      tq::String::stringWithUTF8Repaired(name));
  }
  return object;
}

int preferredWidth() {
  return static_cast<int>(
      std::clamp<std::int64_t>(preferences::width.value(), 0, Canvas::kSideLimit));
}

Outcome saveOptions() {
  tq::Ref<tq::Error> error;
  return savePreferences(&error) ? Outcome::success : reportError(error->localizedDescription());
}

std::string shortText(double number) {
  std::array<char, 32> text;
  const auto end = std::to_chars(text.data(), text.data() + text.size(), number + 0.0,
                                 std::chars_format::general, 6);
  return {text.data(), end.ptr};
}

std::string shortText(const tq::Rect& rect) {
  if (tq::RectIsNull(rect)) return "nowhere";
  return "{{" + shortText(rect.origin.x) + ", " + shortText(rect.origin.y) + "}, {" +
         shortText(rect.size.width) + ", " + shortText(rect.size.height) + "}}";
}

std::string grouped(std::size_t number) {
  std::string text = std::to_string(number);
  for (std::size_t at = text.size(); at > 3;) text.insert(at -= 3, 1, ',');
  return text;
}

std::string counted(std::size_t number, std::string_view noun) {
  return grouped(number) + ' ' + std::string(noun) + (number == 1 ? "" : "s");
}

}  // namespace tqdoc
