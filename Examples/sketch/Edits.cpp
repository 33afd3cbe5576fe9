#include "Edits.h"

#include <algorithm>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "Model/Document.h"
#include "Model/Text.h"

namespace sketch {
namespace {

using tqdoc::Group;
using tqdoc::Node;
using tqdoc::NodePath;

/// What an edit makes of a node.
struct Outcome {
  bool isKept = false;              ///< the node stays as it is
  tq::Ref<Node> inPlace = nullptr;  ///< replaces a node that is not kept; null removes it
  tq::Ref<Node> onTop = nullptr;    ///< is added to the node's group, above its other nodes
};

/// @param parent  from the coordinates around the node to the drawing's
using Edit = std::function<Outcome(const Node& node, const tq::AffineTransform& parent)>;

/// Applies an edit to the selected nodes. Only the groups that lead to them are made anew.
class Editing {
 public:
  Editing(const Drawing& drawing, const Edit& edit) : selected_(drawing.selection), edit_(edit) {
    result_.document = drawing.document->withRoot(edited(drawing.document->root(), {}));
  }
  [[nodiscard]] Drawing take() { return std::move(result_); }

 private:
  /// `oldPath_` and `newPath_` lead to `group` before and after the edit.
  [[nodiscard]] tq::Ref<Group> edited(const Group& group, const tq::AffineTransform& parent) {
    const auto inside = tq::AffineTransformConcat(group.traits().transform, parent);
    std::vector<tq::Ref<tq::Object>> children, onTop;
    for (std::size_t i = 0; i < group.count(); ++i) {
      oldPath_.push_back(i);
      newPath_.push_back(children.size());
      if (selected_.contains(oldPath_)) {
        Outcome outcome = edit_(group.child(i), inside);
        const bool remains = outcome.isKept || outcome.inPlace;
        if (remains && !outcome.onTop) result_.selection.insert(newPath_);
        if (outcome.isKept) children.push_back(group.children().objects()[i]);
        if (outcome.inPlace) children.push_back(std::move(outcome.inPlace));
        if (outcome.onTop) onTop.push_back(std::move(outcome.onTop));
      } else if (leadsToSelected(oldPath_)) {
        children.push_back(edited(static_cast<const Group&>(group.child(i)), inside));
      } else {
        children.push_back(group.children().objects()[i]);
      }
      oldPath_.pop_back();
      newPath_.pop_back();
    }
    for (tq::Ref<tq::Object>& node : onTop) {
      newPath_.push_back(children.size());
      result_.selection.insert(newPath_);
      newPath_.pop_back();
      children.push_back(std::move(node));
    }
    return tq::makeRef<Group>(group.traits(), tq::Array::arrayWithObjects(std::move(children)));
  }

  /// The paths below a node directly follow its own path.
  [[nodiscard]] bool leadsToSelected(const NodePath& path) const {
    const auto next = selected_.upper_bound(path);
    return next != selected_.end() && next->size() > path.size() &&
           std::equal(path.begin(), path.end(), next->begin());
  }

  const Selection& selected_;
  const Edit& edit_;
  NodePath oldPath_, newPath_;
  Drawing result_;
};

[[nodiscard]] Drawing edited(const Drawing& drawing, const Edit& edit) {
  return Editing(drawing, edit).take();
}

[[nodiscard]] Node::Traits movedTraits(const Node& node, const tq::AffineTransform& parent,
                                       tq::Vector offset) {
  // The same distance in the coordinates around the node.
  const auto inverse = tq::AffineTransformInvert(parent);
  Node::Traits traits = node.traits();
  traits.transform.tx += inverse.a * offset.dx + inverse.c * offset.dy;
  traits.transform.ty += inverse.b * offset.dx + inverse.d * offset.dy;
  return traits;
}

void takeNames(const Node& node, tq::TQStringUniquer& names) {
  names.take(node.name());
  const auto* group = tq::objectCast<Group>(&node);
  if (group == nullptr) return;
  for (std::size_t i = 0; i < group->count(); ++i) takeNames(group->child(i), names);
}

}  // namespace

Drawing moved(const Drawing& drawing, tq::Vector offset) {
  return edited(drawing, [offset](const Node& node, const tq::AffineTransform& parent) -> Outcome {
    return {.inPlace = node.withTraits(movedTraits(node, parent, offset))};
  });
}

Drawing removed(const Drawing& drawing) {
  return edited(drawing, [](const Node&, const tq::AffineTransform&) { return Outcome(); });
}

Drawing duplicated(const Drawing& drawing, tq::Vector offset) {
  tq::TQStringUniquer names;
  takeNames(drawing.document->root(), names);
  return edited(drawing, [&](const Node& node, const tq::AffineTransform& parent) -> Outcome {
    Node::Traits traits = movedTraits(node, parent, offset);
    if (traits.name) {
      traits.name = tq::String::stringWithUTF8Repaired(names.uniqueCopyName(node.name()));
    }
    return {.isKept = true, .onTop = node.withTraits(std::move(traits))};
  });
}

Drawing recoloured(const Drawing& drawing, std::string_view color) {
  return edited(drawing, [color](const Node& node, const tq::AffineTransform&) -> Outcome {
    const auto recolouredStyle = [color](const tq::Dictionary& old) {
      const bool isOutline =
          old.objectForKey("fill") == nullptr && old.objectForKey("stroke") != nullptr;
      const auto style = tq::MutableDictionary::dictionaryWithDictionary(old);
      style->setObject(tq::String::of(color), isOutline ? "stroke" : "fill");
      return tq::refCast<tq::Dictionary>(style->copy());
    };
    if (const auto* shape = tq::objectCast<tqdoc::Shape>(&node)) {
      return {.inPlace = shape->withStyle(recolouredStyle(shape->style()))};
    }
    if (const auto* text = tq::objectCast<tqdoc::Text>(&node)) {
      return {.inPlace = text->withStyle(recolouredStyle(text->style()))};
    }
    return {.isKept = true};
  });
}

}  // namespace sketch
