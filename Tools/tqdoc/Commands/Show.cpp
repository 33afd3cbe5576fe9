#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Commands/Command.h"
#include "Commands/Help.h"
#include "Model/Text.h"

namespace tqdoc {
namespace {

/// Returns the digest of an archive of the node alone. Equal nodes have equal digests.
[[nodiscard]] std::string digestOf(const Node& node) {
  constexpr std::size_t kShown = 12;
  tq::Ref<tq::Error> error;
  const auto archive = tq::TQJSONEncoder::encodeObjectAsData(node, &error);
  return archive ? std::string(tq::sha1String_tq(*archive)->view().substr(0, kShown)) : "no digest";
}

void showNode(const Node& node, const tq::AffineTransform& parent, std::size_t depth) {
  const auto* group = tq::objectCast<Group>(&node);
  const auto* shape = tq::objectCast<Shape>(&node);
  const auto* picture = tq::objectCast<Picture>(&node);
  const auto* text = tq::objectCast<Text>(&node);
  std::cout << std::string(2 * depth, ' ') << kindOf(node);
  if (!node.name().empty()) std::cout << ' ' << tq::printableText(node.name());
  std::cout << "  " << shortText(tightBounds(node, parent));
  if (shape != nullptr) std::cout << "  " << shape->path().steps().size() << " steps";
  if (text != nullptr) std::cout << "  \"" << tq::printableText(text->string()) << '"';
  if (picture != nullptr) {
    std::cout << "  " << tq::printableText(picture->mediaType()) << ", "
              << grouped(picture->bytes().length()) << " bytes";
  }
  if (node.traits().opacity != 1) std::cout << "  opacity " << shortText(node.traits().opacity);
  if (node.traits().blend != Blend::normal) std::cout << "  blend " << nameOf(node.traits().blend);
  if (node.traits().isolated) std::cout << "  isolated";
  if (node.traits().clip) std::cout << "  clipped";
  if (node.traits().mask) std::cout << "  masked";
  if (node.traits().filter) std::cout << "  filtered";
  if (node.traits().hidden) std::cout << "  hidden";
  if (group == nullptr) std::cout << "  sha1 " << digestOf(node);
  std::cout << '\n';
  if (group == nullptr) return;
  const auto transform = tq::AffineTransformConcat(node.traits().transform, parent);
  for (std::size_t i = 0; i < group->count(); ++i) {
    showNode(group->child(i), transform, depth + 1);
  }
}

/// As showNode() prints it. Bounds are those in the drawing.
[[nodiscard]] tq::Ref<tq::Object> recordOf(const Node& node, const tq::AffineTransform& parent) {
  auto record = tq::MutableDictionary::dictionary();
  record->setObject(jsonText(kindOf(node)), "kind");
  if (!node.name().empty()) record->setObject(jsonText(node.name()), "name");
  record->setObject(jsonRect(tightBounds(node, parent)), "bounds");
  if (const auto* text = tq::objectCast<Text>(&node)) {
    record->setObject(jsonText(text->string()), "string");
  }
  if (node.traits().opacity != 1) record->setObject(jsonNumber(node.traits().opacity), "opacity");
  const auto flag = tq::Number::numberWith(tq::NumberValue(true));
  if (node.traits().blend != Blend::normal) {
    record->setObject(tq::String::of(nameOf(node.traits().blend)), "blend");
  }
  if (node.traits().isolated) record->setObject(flag, "isolated");
  if (node.traits().clip) record->setObject(flag, "clipped");
  if (node.traits().mask) record->setObject(flag, "masked");
  if (node.traits().filter) record->setObject(flag, "filtered");
  if (node.traits().hidden) record->setObject(flag, "hidden");
  const auto* group = tq::objectCast<Group>(&node);
  if (group == nullptr) {
    record->setObject(jsonText(digestOf(node)), "sha1");
    return record;
  }
  const auto transform = tq::AffineTransformConcat(node.traits().transform, parent);
  std::vector<tq::Ref<tq::Object>> children;
  for (std::size_t i = 0; i < group->count(); ++i) {
    children.push_back(recordOf(group->child(i), transform));
  }
  record->setObject(tq::Array::arrayWithObjects(std::move(children)), "children");
  return record;
}

struct ShowOptions {
  std::string drawing;
  bool asJSON = false;
};

void printText(const ShowOptions& options, const SvgDrawing& drawing, const tq::Data& archive) {
  const Document& document = *drawing.document;
  std::cout << tq::printableText(options.drawing) << ": " << shortText(document.page().size.width)
            << " x " << shortText(document.page().size.height) << " pixels, "
            << counted(document.shapeCount(), "shape");
  if (!document.title().empty()) std::cout << ", \"" << tq::printableText(document.title()) << '"';
  std::cout << "\narchive: " << counted(archive.length(), "byte") << ", sha1 "
            << tq::sha1String_tq(archive)->view() << '\n';
  for (const auto& [name, count] : drawing.leftOut) {
    std::cout << "unsupported: " << tq::printableText(name) << ' ' << count << '\n';
  }
  showNode(document.root(), {}, 0);
}

void printRecord(const SvgDrawing& drawing, const tq::Data& archive) {
  const Document& document = *drawing.document;
  const auto record = tq::MutableDictionary::dictionary();
  record->setObject(jsonText(document.title()), "title");
  record->setObject(jsonNumber(document.page().size.width), "width");
  record->setObject(jsonNumber(document.page().size.height), "height");
  record->setObject(jsonNumber(static_cast<double>(document.shapeCount())), "shapes");
  record->setObject(jsonNumber(static_cast<double>(archive.length())), "archiveBytes");
  record->setObject(tq::sha1String_tq(archive), "sha1");
  record->setObject(jsonCounts(drawing.leftOut), "unsupported");
  record->setObject(recordOf(document.root(), {}), "root");
  printJSON(*record);
}

Outcome show(const ShowOptions& options) {
  tq::Ref<tq::Error> error;
  const SvgDrawing drawing = openNamedDrawing(options.drawing, &error);
  if (!drawing.document) return reportError(error->localizedDescription());
  const auto archive = tq::TQJSONEncoder::encodeObjectAsData(drawing.document, &error);
  if (!archive) return reportError(error->localizedDescription());
  options.asJSON ? printRecord(drawing, *archive) : printText(options, drawing, *archive);
  return Outcome::success;
}

}  // namespace

void addShowCommand(CLI::App& app, Outcome& outcome) {
  auto options = std::make_shared<ShowOptions>();
  CLI::App* command =
      app.add_subcommand("show", "print the tree with names, kinds and tight bounds");
  command->add_option("drawing", options->drawing, "a .tqdoc or .svg file")->required();
  command->add_flag("--json", options->asJSON, "print a JSON object");
  addExamples(*command, {"tqdoc show drawing.svg", "tqdoc show --json - < drawing.svg"});
  command->callback([options, &outcome] { outcome = show(*options); });
}

}  // namespace tqdoc
