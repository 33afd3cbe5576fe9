#include <TQFoundation/comparison/TQComparisonItem.h>

#include <utility>
#include <vector>

namespace tq {
namespace {

/// An object without content.
class Placeholder final : public Subclass<Placeholder> {
 public:
  static constexpr std::string_view className = "Object";
};

}  // namespace

TQComparisonItem::TQComparisonItem(Ref<Object> newObject, Ref<Object> oldObject,
                                   Ref<TQComparisonItem> parent)
    : updatedObject_(std::move(newObject)),
      oldObject_(std::move(oldObject)),
      parent_(std::move(parent)) {}

TQComparisonItem::~TQComparisonItem() = default;

Ref<TQComparisonItem> TQComparisonItem::initWithNewObject(Ref<Object> newObject,
                                                          Ref<Object> oldObject,
                                                          Ref<TQComparisonItem> parent) {
  return Ref<TQComparisonItem>::adopt(
      new TQComparisonItem(std::move(newObject), std::move(oldObject), std::move(parent)));
}

Ref<TQComparisonItem> TQComparisonItem::init() {
  return initWithNewObject(makeRef<Placeholder>(), makeRef<Placeholder>(), nullptr);
}

std::string TQComparisonItem::internalFullPath() { return {}; }

std::string TQComparisonItem::fullPath() {
  std::string path = internalFullPath();
  std::size_t kept = 0;
  for (std::size_t i = 0; i < path.size();) {
    if (path.compare(i, 2, ".-") == 0) {
      i += 2;
    } else {
      path[kept++] = path[i++];
    }
  }
  path.resize(kept);
  return path;
}

Ref<TQComparisonPropertyChange> TQComparisonItem::addChangeForPropertyNamed(std::string name) {
  return TQComparisonPropertyChange::initWithNewObject(
      Ref<Object>(updatedObject()), Ref<Object>(oldObject()), share(*this), std::move(name));
}

Object* TQComparisonItem::object() const noexcept {
  Object* const updated = updatedObject();
  return updated != nullptr ? updated : oldObject();
}

std::string TQComparisonItem::joinedPath() {
  std::vector<PathStep> steps;
  for (TQComparisonItem* item = this; item != nullptr; item = steps.back().before) {
    steps.push_back(item->pathStep());
  }
  std::string path;
  for (auto step = steps.rbegin(); step != steps.rend(); ++step) {
    if (step->hasDot) path += '.';
    path += step->text;
  }
  return path;
}

TQComparisonPropertyChange::TQComparisonPropertyChange(Ref<Object> newObject, Ref<Object> oldObject,
                                                       Ref<TQComparisonItem> parent,
                                                       std::string propertyName)
    : Subclass(std::move(newObject), std::move(oldObject), std::move(parent)),
      propertyName_(std::move(propertyName)) {}

Ref<TQComparisonPropertyChange> TQComparisonPropertyChange::initWithNewObject(
    Ref<Object> newObject, Ref<Object> oldObject, Ref<TQComparisonItem> parent,
    std::string propertyName) {
  return Ref<TQComparisonPropertyChange>::adopt(new TQComparisonPropertyChange(
      std::move(newObject), std::move(oldObject), std::move(parent), std::move(propertyName)));
}

TQComparisonItem::PathStep TQComparisonPropertyChange::pathStep() {
  return {propertyName_, parent(), parent() != nullptr};
}

TQComparisonPathItem::TQComparisonPathItem(Ref<Object> newObject, Ref<Object> oldObject,
                                           Ref<TQComparisonItem> parent, std::string objectName,
                                           std::int64_t index)
    : Subclass(std::move(newObject), std::move(oldObject), std::move(parent)),
      objectName_(std::move(objectName)),
      index_(index) {}

Ref<TQComparisonPathItem> TQComparisonPathItem::pathItemWithParent(Ref<TQComparisonItem> parent,
                                                                   Ref<Object> newObject,
                                                                   Ref<Object> oldObject,
                                                                   std::string named,
                                                                   std::int64_t index) {
  return Ref<TQComparisonPathItem>::adopt(new TQComparisonPathItem(
      std::move(newObject), std::move(oldObject), std::move(parent), std::move(named), index));
}

TQComparisonItem::PathStep TQComparisonPathItem::pathStep() {
  if (index_ >= 0) {
    objectName_ += "[" + std::to_string(index_) + "]";
    index_ = kNoIndex;
  }
  TQComparisonItem* const above = parent();
  const bool isBelowRoot = above == nullptr || above->parent() == nullptr;
  return {objectName_, isBelowRoot ? nullptr : above, !isBelowRoot};
}

}  // namespace tq
