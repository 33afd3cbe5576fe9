#include <iostream>
#include <memory>
#include <string>

#include "Commands/Command.h"
#include "Commands/Help.h"

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
  std::cout << std::string(2 * depth, ' ')
            << (group != nullptr   ? "group"
                : shape != nullptr ? "shape"
                                   : "picture");
  if (!node.name().empty()) std::cout << ' ' << printable(node.name());
  std::cout << "  " << shortText(tightBounds(node, parent));
  if (shape != nullptr) std::cout << "  " << shape->path().steps().size() << " steps";
  if (picture != nullptr) {
    std::cout << "  " << printable(picture->mediaType()) << ", "
              << grouped(picture->bytes().length()) << " bytes";
  }
  if (node.traits().opacity != 1) std::cout << "  opacity " << shortText(node.traits().opacity);
  if (node.traits().clip) std::cout << "  clipped";
  if (node.traits().hidden) std::cout << "  hidden";
  if (group == nullptr) std::cout << "  sha1 " << digestOf(node);
  std::cout << '\n';
  if (group == nullptr) return;
  const auto transform = tq::AffineTransformConcat(node.traits().transform, parent);
  for (std::size_t i = 0; i < group->count(); ++i) {
    showNode(group->child(i), transform, depth + 1);
  }
}

Outcome show(const std::string& path) {
  tq::Ref<tq::Error> error;
  const tq::Ref<Document> document = openNamedDrawing(path, &error).document;
  if (!document) return reportError(error->localizedDescription());
  std::cout << printable(path) << ": " << shortText(document->page().size.width) << " x "
            << shortText(document->page().size.height) << " pixels, "
            << grouped(document->shapeCount()) << " shapes";
  if (!document->title().empty()) std::cout << ", \"" << printable(document->title()) << '"';
  std::cout << '\n';
  const auto archive = tq::TQJSONEncoder::encodeObjectAsData(document, &error);
  if (!archive) return reportError(error->localizedDescription());
  std::cout << "archive: " << grouped(archive->length()) << " bytes, sha1 "
            << tq::sha1String_tq(*archive)->view() << '\n';
  for (const auto [name, count] : document->unsupported()) {
    std::cout << "unsupported: " << printable(name.description()) << ' ' << count.description()
              << '\n';
  }
  showNode(document->root(), {}, 0);
  return Outcome::success;
}

}  // namespace

void addShowCommand(CLI::App& app, Outcome& outcome) {
  auto path = std::make_shared<std::string>();
  CLI::App* command =
      app.add_subcommand("show", "print the tree with names, kinds and tight bounds");
  command->add_option("drawing", *path, "a .tqdoc or .svg file")->required();
  addExamples(*command, {"tqdoc show drawing.svg"});
  command->callback([path, &outcome] { outcome = show(*path); });
}

}  // namespace tqdoc
