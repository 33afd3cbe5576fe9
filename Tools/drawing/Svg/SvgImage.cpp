#include "Svg/SvgImage.h"

#include <string>
#include <string_view>

#include "Svg/Scanner.h"

namespace tqdoc {

EmbeddedImage readEmbeddedImage(SvgContext& context, pugi::xml_node node) {
  Scanner scanner(trimmed(hrefOf(node)));
  if (!scanner.take("data:")) {
    context.leaveOut("external image");
    return {};
  }
  std::string_view type = scanner.takeUntil(',');
  constexpr std::string_view kBase64 = ";base64";
  if (!type.ends_with(kBase64)) {
    context.leaveOut("image that is not in base64");
    return {};
  }
  type.remove_suffix(kBase64.size());
  context.charge(scanner.rest().size() / 8, node);
  std::string text;
  text.reserve(scanner.rest().size());
  for (const char c : scanner.rest()) {
    if (!isSpace(c)) text += c;
  }
  auto bytes = tq::dataFromBase64(text);
  if (!bytes) {
    context.leaveOut("invalid base64 of image");
    return {};
  }
  // Drawn is what begins as a PNG or a JPEG does, whatever its media type says.
  if (bytes->view().starts_with("\x89PNG\r\n\x1a\n")) {
    type = "image/png";
  } else if (bytes->view().starts_with("\xff\xd8\xff")) {
    type = "image/jpeg";
  } else {
    context.leaveOut("drawing of " + (type.empty() ? "an image" : std::string(type)));
  }
  return {tq::String::stringWithUTF8Repaired(type), std::move(bytes)};
}

}  // namespace tqdoc
