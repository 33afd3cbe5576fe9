#include "Model/Differences.h"

#include <functional>
#include <set>
#include <string_view>
#include <tuple>
#include <utility>

#include "Model/Compare.h"
#include "Model/Gradient.h"
#include "Model/Marker.h"
#include "Model/Mask.h"
#include "Model/NodePairs.h"
#include "Model/Text.h"

namespace tqdoc {
namespace {

std::string textOf(std::initializer_list<double> numbers) {
  std::string text;
  for (const double number : numbers) {
    text += (text.empty() ? "" : " ") + tq::Number::numberWith(number)->description();
  }
  return text;
}

std::string textOf(const tq::Rect& rect) {
  return textOf({rect.origin.x, rect.origin.y, rect.size.width, rect.size.height});
}

std::string textOf(const tq::Object& value) {
  if (const auto* marker = tq::objectCast<Marker>(&value)) {
    return placeOf("marker", marker->content());
  }
  return tq::objectCast<Gradient>(&value) != nullptr ? "gradient" : value.description();
}

std::string textOf(std::string_view text) { return '"' + std::string(text) + '"'; }

std::string textOf(tq::Point point) { return textOf({point.x, point.y}); }

std::string textOf(const tq::Array& spans) {
  std::string lengths;
  for (const tq::Object& span : spans) {
    lengths += (lengths.empty() ? "" : " + ") +
               std::to_string(static_cast<const TextSpan&>(span).length());
  }
  return lengths.empty() ? "none" : lengths + " characters";
}

std::string textOf(const tq::Data& bytes) { return std::to_string(bytes.length()) + " bytes"; }

/// Returns the kind and the name of a node.
std::string whatIs(const Node& node) { return placeOf(kindOf(node), node); }

std::string textOf(const PathData& path) {
  return std::to_string(path.steps().size()) + " steps within " + textOf(path.tightBounds());
}

bool areEqual(const tq::Object* a, const tq::Object* b) {
  return a == b || (a != nullptr && b != nullptr && a->isEqual(*b));
}

struct Property {
  std::string name, oldValue, newValue;
};
using Properties = std::vector<Property>;

template <class Value>
void note(Properties& differing, const char* name, bool isSame, const Value& a, const Value& b) {
  if (!isSame) differing.push_back({name, textOf(a), textOf(b)});
}

/// Null and the empty string have different texts.
std::string quoted(const tq::Object* text) {
  return text != nullptr ? '"' + textOf(*text) + '"' : "none";
}

/// Returns the first difference of two nodes or markers; empty for other values.
std::string firstDifferenceOf(const tq::Object& a, const tq::Object& b) {
  const auto* marker = tq::objectCast<Marker>(&a);
  const auto* otherMarker = tq::objectCast<Marker>(&b);
  const auto* node = marker != nullptr ? &marker->content() : tq::objectCast<Node>(&a);
  const auto* other = otherMarker != nullptr ? &otherMarker->content() : tq::objectCast<Node>(&b);
  if (node == nullptr || other == nullptr) return "";
  const auto difference = firstDifference(*node, *other, marker != nullptr ? "marker" : "pattern");
  return difference ? " (" + *difference + ")" : "";
}

/// Two objects may differ although their texts are the same.
void noteText(Properties& differing, const std::string& name, const tq::Object* a,
              const tq::Object* b) {
  if (areEqual(a, b)) return;
  const std::string before = quoted(a), after = quoted(b);
  const bool isMore = a != nullptr && b != nullptr && before == after;
  differing.push_back(
      {name, before, isMore ? "another " + after + firstDifferenceOf(*a, *b) : after});
}

bool areSame(const tq::Rect& a, const tq::Rect& b) {
  return a.origin == b.origin && a.size == b.size;
}

void noteStyle(Properties& differing, const tq::Dictionary& a, const tq::Dictionary& b) {
  const auto noteKey = [&](const tq::Object& key) {
    noteText(differing, "style." + key.description(), a.objectForKey(key), b.objectForKey(key));
  };
  for (const auto [key, value] : a) noteKey(key);
  for (const auto [key, value] : b) {
    if (a.objectForKey(key) == nullptr) noteKey(key);
  }
}

/// Reports the differences of a node itself, without its children.
Properties propertiesOf(const Node& a, const Node& b) {
  Properties differing;
  const Node::Traits& x = a.traits();
  const Node::Traits& y = b.traits();
  const auto matrix = [](const tq::AffineTransform& t) {
    return textOf({t.a, t.b, t.c, t.d, t.tx, t.ty});
  };
  noteText(differing, "name", x.name.get(), y.name.get());
  if (x.transform != y.transform) {
    differing.push_back({"transform", matrix(x.transform), matrix(y.transform)});
  }
  if (x.opacity != y.opacity) {
    differing.push_back({"opacity", textOf({x.opacity}), textOf({y.opacity})});
  }
  const auto noteFlag = [&](const char* name, bool before, bool after) {
    if (before != after) {
      differing.push_back({name, before ? "yes" : "no", after ? "yes" : "no"});
    }
  };
  noteFlag("hidden", x.hidden, y.hidden);
  if (x.blend != y.blend) {
    differing.push_back({"blend", std::string(nameOf(x.blend)), std::string(nameOf(y.blend))});
  }
  noteFlag("isolated", x.isolated, y.isolated);
  if (!x.clip != !y.clip || (x.clip && &x.clip->objectClass() != &y.clip->objectClass())) {
    const auto kind = [](const tq::Ref<Node>& clip) { return clip ? whatIs(*clip) : "none"; };
    differing.push_back({"clip", kind(x.clip), kind(y.clip)});
  }
  if (!x.mask != !y.mask) {
    const auto kind = [](const tq::Ref<Node>& mask) { return mask ? whatIs(*mask) : "none"; };
    differing.push_back({"mask", kind(x.mask), kind(y.mask)});
  }
  if (!areEqual(x.filter.get(), y.filter.get())) {
    const auto text = [](const Filter* filter) { return filter ? textOf(*filter) : "none"; };
    differing.push_back({"filter", text(x.filter.get()), text(y.filter.get())});
  }
  if (const auto* mask = tq::objectCast<Mask>(&a)) {
    const auto& other = static_cast<const Mask&>(b);
    note(differing, "region", areSame(mask->region(), other.region()), mask->region(),
         other.region());
    const bool isAlpha = mask->kind() == Mask::Kind::alpha;
    if (mask->kind() != other.kind()) {
      differing.push_back({"alpha", isAlpha ? "yes" : "no", isAlpha ? "no" : "yes"});
    }
  }
  if (const auto* shape = tq::objectCast<Shape>(&a)) {
    const auto& other = static_cast<const Shape&>(b);
    note(differing, "path", shape->path().isEqual(other.path()), shape->path(), other.path());
    noteStyle(differing, shape->style(), other.style());
  } else if (const auto* picture = tq::objectCast<Picture>(&a)) {
    const auto& other = static_cast<const Picture&>(b);
    note(differing, "frame", areSame(picture->frame(), other.frame()), picture->frame(),
         other.frame());
    note(differing, "fit", picture->fit() == other.fit(), picture->fit(), other.fit());
    note(differing, "mediaType", picture->mediaType() == other.mediaType(), picture->mediaType(),
         other.mediaType());
    note(differing, "bytes", picture->bytes().isEqual(other.bytes()), picture->bytes(),
         other.bytes());
  } else if (const auto* text = tq::objectCast<Text>(&a)) {
    const auto& other = static_cast<const Text&>(b);
    note(differing, "string", text->string() == other.string(), text->string(), other.string());
    note(differing, "position", text->position() == other.position(), text->position(),
         other.position());
    noteStyle(differing, text->style(), other.style());
    note(differing, "spans", text->spans().isEqual(other.spans()), text->spans(), other.spans());
  }
  return differing;
}

Properties propertiesOf(const Document& a, const Document& b) {
  Properties differing;
  const Document::Page& x = a.page();
  const Document::Page& y = b.page();
  note(differing, "title", a.title() == b.title(), a.title(), b.title());
  if (x.size != y.size) {
    differing.push_back(
        {"size", textOf({x.size.width, x.size.height}), textOf({y.size.width, y.size.height})});
  }
  note(differing, "viewBox", areSame(x.viewBox, y.viewBox), x.viewBox, y.viewBox);
  noteText(differing, "fit", x.fit.get(), y.fit.get());
  noteText(differing, "unsupported", &a.unsupported(), &b.unsupported());
  return differing;
}

Properties propertiesOf(const tq::Object& a, const tq::Object& b) {
  const auto* document = tq::objectCast<Document>(&a);
  if (document != nullptr) return propertiesOf(*document, static_cast<const Document&>(b));
  return propertiesOf(static_cast<const Node&>(a), static_cast<const Node&>(b));
}

/// The comparison takes non-const objects but does not change them.
template <class T>
T& lent(const T& object) {
  return const_cast<T&>(object);
}

class Delegate final : public tq::Subclass<Delegate>, public tq::TQTreeComparisonDelegate {
 public:
  static constexpr std::string_view className = "TQDocDifferences";

  Delegate(const Document& a, const Document& b) : pairs_(a, b) {}

  std::vector<std::string> propertiesOfObject(tq::TQTreeComparison&, tq::Object& a,
                                              tq::Object& b) override {
    std::vector<std::string> names;
    for (Property& property : propertiesOf(a, b)) names.push_back(std::move(property.name));
    return names;
  }

  void compareChildrenOf(tq::TQTreeComparison& comparison, tq::Object& a, tq::Object& b) override {
    if (const auto* document = tq::objectCast<Document>(&a)) {
      return comparison.compareOldObject(lent(document->root()),
                                         lent(static_cast<const Document&>(b).root()), "root");
    }
    const tq::Ref<Node>& clip = static_cast<const Node&>(a).traits().clip;
    const tq::Ref<Node>& other = static_cast<const Node&>(b).traits().clip;
    if (clip && other && &clip->objectClass() == &other->objectClass()) {
      comparison.compareOldObject(*clip, *other, "clip");
    }
    const tq::Ref<Node>& mask = static_cast<const Node&>(a).traits().mask;
    const tq::Ref<Node>& otherMask = static_cast<const Node&>(b).traits().mask;
    if (mask && otherMask) comparison.compareOldObject(*mask, *otherMask, "mask");
    if (const auto* group = tq::objectCast<Group>(&a)) {
      comparison.compareOldArray(group->children(), static_cast<const Group&>(b).children(),
                                 "children");
    }
  }

  bool isObject(tq::TQTreeComparison&, tq::Object& a, tq::Object& b) override {
    return pairs_.areSame(static_cast<const Node&>(a), static_cast<const Node&>(b));
  }

 private:
  NodePairs pairs_;
};

std::string pathOf(tq::TQComparisonItem& item) {
  const std::string path = item.fullPath();
  return path.starts_with('.') ? path.substr(1) : path;  // a property of the whole drawing
}

/// Returns the old object. Below a node that moved between groups, the items have none: the parent
/// of all of them is an insertion, and its removal has the node.
const tq::Object& oldObjectOf(const tq::TQComparisonItem& item) {
  if (const tq::Object* object = item.oldObject()) return *object;
  if (const auto* insertion = tq::objectCast<tq::TQComparisonArrayChange>(&item)) {
    return *insertion->associatedChange()->object();
  }
  return oldObjectOf(*item.parent());
}

Difference differenceOf(tq::TQComparisonArrayChange& change) {
  const auto* node = static_cast<const Node*>(change.object());
  Difference difference;
  difference.path = pathOf(change);
  difference.what = whatIs(*node);
  const auto partner = change.associatedChange();
  if (change.isRemoval()) {
    difference.kind = Difference::Kind::removed;
    difference.oldNode = node;
    return difference;
  }
  difference.kind = partner ? Difference::Kind::moved : Difference::Kind::inserted;
  difference.newNode = node;
  difference.oldGroup = static_cast<const Node*>(&oldObjectOf(*change.parent()));
  if (partner) {
    difference.oldNode = static_cast<const Node*>(partner->object());
    difference.oldPath = pathOf(*partner);
  }
  return difference;
}

Difference differenceOf(tq::TQComparisonPropertyChange& change) {
  const tq::Object& oldObject = oldObjectOf(change);
  Difference difference;
  difference.path = pathOf(change);
  difference.property = change.propertyName();
  for (Property& property : propertiesOf(oldObject, *change.updatedObject())) {
    if (property.name != difference.property) continue;
    difference.oldValue = std::move(property.oldValue);
    difference.newValue = std::move(property.newValue);
  }
  difference.oldNode = tq::objectCast<Node>(&oldObject);
  difference.newNode = tq::objectCast<Node>(change.updatedObject());
  difference.what = difference.newNode != nullptr ? whatIs(*difference.newNode) : "drawing";
  return difference;
}

/// Returns true if `path` is below one of `paths`.
bool isBelow(std::string_view path, const std::set<std::string, std::less<>>& paths) {
  for (auto dot = path.rfind('.'); dot != path.npos; dot = path.rfind('.', dot - 1)) {
    if (paths.contains(path.substr(0, dot))) return true;
    if (dot == 0) break;
  }
  return false;
}

/// Removes repetitions. The comparison reports what is inside a pair each time when it finds the
/// pair, and links only one of the repeated halves of a move. If an archive uses one node in
/// several places, it is also compared where it is inserted.
void keepOneAtEachPlace(std::vector<Difference>& differences) {
  using Kind = Difference::Kind;
  std::set<std::string> changes, departures, arrivals;
  for (Difference& move : differences) {
    if (move.kind != Kind::moved) continue;
    const auto [departure, leaves] = departures.insert(move.oldPath);
    const auto [arrival, arrives] = arrivals.insert(move.path);
    if (leaves && arrives) continue;
    // The other half belongs to an earlier move.
    if (leaves) departures.erase(departure);
    if (arrives) arrivals.erase(arrival);
    move.kind = arrives ? Kind::inserted : Kind::removed;
    if (!arrives) move.path = move.oldPath;
    (arrives ? move.oldNode : move.newNode) = nullptr;
  }
  std::set<std::string, std::less<>> insertions;
  std::erase_if(differences, [&](const Difference& each) {
    if (each.kind == Kind::moved) return false;
    auto& places = each.kind == Kind::changed   ? changes
                   : each.kind == Kind::removed ? departures
                                                : arrivals;
    if (!places.insert(each.path).second) return true;
    if (each.kind == Kind::inserted) insertions.insert(each.path);
    return false;
  });
  std::erase_if(differences,
                [&](const Difference& each) { return isBelow(each.path, insertions); });
}

}  // namespace

std::vector<Difference> differencesOf(const Document& oldDocument, const Document& newDocument) {
  const auto delegate = tq::makeRef<Delegate>(oldDocument, newDocument);
  const auto comparison =
      tq::TQTreeComparison::initWithRoot1(tq::Ref<tq::Object>(&lent(oldDocument)),
                                          tq::Ref<tq::Object>(&lent(newDocument)), true, delegate);
  std::vector<Difference> differences;
  for (const auto& item : comparison->changes()) {
    if (auto* change = tq::objectCast<tq::TQComparisonPropertyChange>(item.get())) {
      differences.push_back(differenceOf(*change));
      continue;
    }
    auto& change = static_cast<tq::TQComparisonArrayChange&>(*item);
    if (change.isRemoval() && change.isMove()) continue;  // reported with its insertion
    differences.push_back(differenceOf(change));
  }
  keepOneAtEachPlace(differences);
  return differences;
}

}  // namespace tqdoc
