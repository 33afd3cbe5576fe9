#include "Patch/Patch.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <map>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "Files/Drawing.h"
#include "Patch/ArchiveTree.h"

namespace tqdoc {
namespace {

/// An element of an array, such as root.children[4].
struct Place {
  std::string array;
  std::size_t index = 0;
};

[[nodiscard]] std::optional<Place> placeIn(std::string_view path) {
  const std::size_t bracket = path.rfind('[');
  if (bracket == path.npos || !path.ends_with(']')) return std::nullopt;
  const std::string_view digits = path.substr(bracket + 1, path.size() - bracket - 2);
  Place place{std::string(path.substr(0, bracket))};
  const auto [end, fault] =
      std::from_chars(digits.data(), digits.data() + digits.size(), place.index);
  if (fault != std::errc() || end != digits.data() + digits.size()) return std::nullopt;
  return place;
}

/// Returns the path of what contains the last step of `path`, a member or an element.
[[nodiscard]] std::string_view parentOf(std::string_view path) {
  const std::size_t step = path.find_last_of(".[");
  return path.substr(0, step == path.npos ? 0 : step);
}

[[nodiscard]] std::string joined(const std::string& path, std::string_view key) {
  return path.empty() ? std::string(key) : path + '.' + std::string(key);
}

enum class Kind { changed, removed, inserted, moved };

/// A record. `reason` says why it does not fit; empty if it fits.
struct Change {
  Kind kind = Kind::changed;
  std::string path, from, property;
  std::string digest, groupDigest;
  tq::Object* value = nullptr;
  std::string reason;
};

[[nodiscard]] Change changeOf(const tq::Object& record) {
  Change change;
  const auto* members = tq::objectCast<tq::Dictionary>(&record);
  const auto text = [&](std::string_view key) {
    const auto* value =
        members != nullptr ? tq::objectCast<tq::String>(members->objectForKey(key)) : nullptr;
    return value != nullptr ? std::string(value->view()) : std::string();
  };
  const std::map<std::string_view, Kind> kinds = {{"changed", Kind::changed},
                                                  {"removed", Kind::removed},
                                                  {"inserted", Kind::inserted},
                                                  {"moved", Kind::moved}};
  const auto kind = kinds.find(text("kind"));
  if (kind == kinds.end()) {
    change.path = text("path");
    change.reason = "it is of an unknown kind";
    return change;
  }
  change = {kind->second,
            text("path"),
            text("from"),
            text("property"),
            text("sha1"),
            text("group"),
            members->objectForKey("value"),
            {}};
  constexpr std::ptrdiff_t kMostSteps = 2 * tq::TQJSONEncoder::kDepthLimit;
  const bool isKnown = (change.kind == Kind::inserted ? change.value != nullptr
                        : change.kind == Kind::changed
                            ? !change.property.empty() && change.path.ends_with(change.property)
                            : !change.digest.empty()) &&
                       std::ranges::count(change.path + change.from, '.') <= kMostSteps;
  if (!isKnown) change.reason = "it does not contain what is needed to apply it";
  return change;
}

/// The tree of the old drawing with the changes, found by their paths in the new one. An element of
/// an array is at the same place in both, except for the elements that arrive in the array or leave
/// it. All places are computed as if every change fitted.
class Patch {
 public:
  Patch(tq::Ref<tq::Dictionary> tree, const tq::Array& records) : tree_(std::move(tree)) {
    changes_.reserve(records.count());
    for (const tq::Object& record : records) changes_.push_back(changeOf(record));
    for (Change& change : changes_) {
      if (change.reason.empty()) enter(change);
    }
    for (Change& change : changes_) {
      if (change.reason.empty()) change.reason = misfitOf(change);
    }
    leaveUnmoved();
  }

  [[nodiscard]] tq::Ref<tq::Object> result() { return built(*tree_, ""); }

  [[nodiscard]] std::vector<Misfit> misfits() const {
    std::vector<Misfit> all;
    for (std::size_t i = 0; i < changes_.size(); ++i) {
      const Change& change = changes_[i];
      if (change.reason.empty()) continue;
      const std::string number = "record " + std::to_string(i + 1);
      all.push_back({change.path.empty() ? number : change.path, change.reason});
    }
    return all;
  }

 private:
  /// The changes of an array, by the indexes of the new and of the old one.
  struct Moves {
    std::map<std::size_t, Change*> arriving, leaving;
  };

  /// An element of a new array: an element of the old one that stays, or one that arrives.
  struct Slot {
    std::size_t oldIndex = 0;
    Change* arrival = nullptr;
  };
  using Slots = std::vector<Slot>;

  /// Finds the changes inside nodes that are not moved: what they change is at another place than
  /// their path says. They may be moves in turn.
  void leaveUnmoved() {
    std::unordered_set<std::string> unmoved;
    const auto isInside = [&](std::string_view path) {
      while (!path.empty() && !unmoved.contains(std::string(path))) path = parentOf(path);
      return !path.empty();
    };
    for (std::size_t before = 1; before != unmoved.size();) {
      before = unmoved.size();
      for (const Change& change : changes_) {
        if (change.kind == Kind::moved && !change.reason.empty()) unmoved.insert(change.path);
      }
      for (Change& change : changes_) {
        if (change.reason.empty() && (isInside(change.path) || isInside(change.from))) {
          change.reason = "it is inside a node that is not moved";
        }
      }
    }
  }

  /// Notes what the change does at its place.
  void enter(Change& change) {
    bool isFirst = true;
    if (change.kind == Kind::changed) {
      std::string_view object = change.path;
      object.remove_suffix(std::min(object.size(), change.property.size() + 1));
      auto& [property, known] =
          *properties_[std::string(object)].emplace(change.property, &change).first;
      isFirst = known == &change;
      return touch(object, change, isFirst);
    }
    const auto to = placeIn(change.path);
    const auto from = change.kind == Kind::moved ? placeIn(change.from) : to;
    if (!to || !from) {
      change.reason = "it is not at a place of a group";
      return;
    }
    if (change.kind != Kind::inserted) {
      isFirst = moves_[from->array].leaving.emplace(from->index, &change).second;
      touch(from->array, change, isFirst);
    }
    if (change.kind != Kind::removed && isFirst) {
      isFirst = moves_[to->array].arriving.emplace(to->index, &change).second;
      touch(to->array, change, isFirst);
    }
  }

  void touch(std::string_view path, Change& change, bool isFirst) {
    if (!isFirst) change.reason = "another change is at the same place";
    for (; touched_.insert(std::string(path)).second && !path.empty(); path = parentOf(path)) {
    }
  }

  /// Returns the elements of the array at `path` in the new drawing.
  [[nodiscard]] const Slots& slotsOf(const std::string& path, const tq::Array& oldArray) {
    const auto [known, isNew] = slots_.try_emplace(path);
    Slots& slots = known->second;
    if (!isNew) return slots;
    const Moves& moves = moves_[path];
    auto arrival = moves.arriving.begin();
    const auto addArrivals = [&] {
      while (arrival != moves.arriving.end() && arrival->first == slots.size()) {
        slots.push_back({0, arrival++->second});
      }
    };
    for (std::size_t i = 0; i < oldArray.count(); ++i) {
      if (moves.leaving.contains(i)) continue;
      addArrivals();
      slots.push_back({i});
    }
    addArrivals();
    return slots;
  }

  /// Returns what was at the place before that has this path in the new drawing, or null. Moved
  /// nodes inside moved nodes are followed, but not the endless chains of hostile records.
  [[nodiscard]] const tq::Object* oldObjectAt(std::string_view path, int depth = 0) {
    constexpr int kDepthLimit = 4000;
    if (path.empty()) return tree_.get();
    if (depth == kDepthLimit) return nullptr;
    const auto known = oldObjects_.find(std::string(path));
    if (known != oldObjects_.end()) return known->second;
    const tq::Object* const found =
        oldObjectIn(oldObjectAt(parentOf(path), depth + 1), path, depth);
    oldObjects_.emplace(path, found);
    return found;
  }

  [[nodiscard]] const tq::Object* oldObjectIn(const tq::Object* parent, std::string_view path,
                                              int depth) {
    const auto place = placeIn(path);
    if (!place) {
      const auto* members = tq::objectCast<tq::Dictionary>(parent);
      return members != nullptr ? members->objectForKey(path.substr(path.rfind('.') + 1)) : nullptr;
    }
    const auto* array = tq::objectCast<tq::Array>(parent);
    if (array == nullptr) return nullptr;
    const Slots& slots = slotsOf(place->array, *array);
    if (place->index >= slots.size()) return nullptr;
    const auto [oldIndex, arrival] = slots[place->index];
    if (arrival == nullptr) return &array->objectAtIndex(oldIndex);
    return arrival->kind == Kind::moved ? leavingObject(*arrival, depth + 1) : nullptr;
  }

  /// Returns the node that a removal or a move takes away, or null.
  [[nodiscard]] const tq::Object* leavingObject(const Change& change, int depth = 0) {
    const auto place = placeIn(change.kind == Kind::moved ? change.from : change.path);
    const auto* array = tq::objectCast<tq::Array>(oldObjectAt(place->array, depth));
    return array != nullptr && place->index < array->count() ? &array->objectAtIndex(place->index)
                                                             : nullptr;
  }

  /// Returns why a change does not fit, or nothing.
  [[nodiscard]] std::string misfitOf(const Change& change) {
    if (change.kind == Kind::changed) {
      std::string_view object = change.path;
      object.remove_suffix(std::min(object.size(), change.property.size() + 1));
      return differs(oldObjectAt(object), change.digest,
                     object.empty() ? "the drawing" : "its node");
    }
    if (change.kind != Kind::inserted) {
      const tq::Object* const node = leavingObject(change);
      const auto* tree = tq::objectCast<tq::Dictionary>(node);
      const bool isWhole = change.kind == Kind::removed && tree != nullptr;
      if (isWhole) return digestOf(*tree) == change.digest ? "" : "its node is not as it was";
      if (auto reason = differs(node, change.digest, "its node"); !reason.empty()) return reason;
    }
    if (change.kind == Kind::removed) return "";
    const Place place = *placeIn(change.path);
    const tq::Object* const array = oldObjectAt(place.array);
    if (tq::objectCast<tq::Array>(array) != nullptr &&
        slotsOf(place.array, *tq::objectCast<tq::Array>(array)).size() <= place.index) {
      return "its group has fewer nodes";
    }
    return differs(oldObjectAt(parentOf(place.array)), change.groupDigest, "its group");
  }

  /// Returns nothing if the object has this digest.
  [[nodiscard]] std::string differs(const tq::Object* object, const std::string& digest,
                                    const std::string& name) {
    const auto* tree = tq::objectCast<tq::Dictionary>(object);
    if (tree == nullptr) return name + " does not exist";
    std::string& known = digests_[tree];
    if (known.empty()) known = digestOf(*ownTree(*tree));
    return known == digest ? "" : name + " is not as it was";
  }

  /// Returns an object of the old tree with the changes below `path`.
  [[nodiscard]] tq::Ref<tq::Object> built(const tq::Object& object, const std::string& path) {
    if (touched_.contains(path)) {
      if (const auto* array = tq::objectCast<tq::Array>(&object)) return builtArray(*array, path);
      if (const auto* members = tq::objectCast<tq::Dictionary>(&object)) {
        return builtMembers(*members, path);
      }
    }
    return tq::Ref<tq::Object>(const_cast<tq::Object*>(&object));
  }

  [[nodiscard]] tq::Ref<tq::Object> builtMembers(const tq::Dictionary& members,
                                                 const std::string& path) {
    const auto result = tq::MutableDictionary::dictionaryWithDictionary(members);
    for (const auto [key, value] : members) {
      result->setObject(built(value, joined(path, key.description())), tq::share(key));
    }
    const auto properties = properties_.find(path);
    if (properties == properties_.end()) return result;
    for (const auto& [property, change] : properties->second) {
      if (!change->reason.empty()) continue;
      const std::size_t dot = property.find('.');
      const std::string member = property.substr(0, dot);
      if (dot == property.npos) {
        setOrRemove(*result, member, change->value);
        continue;
      }
      const auto* values = tq::objectCast<tq::Dictionary>(result->objectForKey(member));
      const auto newValues = values != nullptr
                                 ? tq::MutableDictionary::dictionaryWithDictionary(*values)
                                 : tq::MutableDictionary::dictionary();
      setOrRemove(*newValues, property.substr(dot + 1), change->value);
      result->setObject(newValues, member);
    }
    return result;
  }

  static void setOrRemove(tq::MutableDictionary& members, const std::string& key,
                          tq::Object* value) {
    if (value != nullptr) {
      members.setObject(tq::share(*value), key);
    } else {
      members.removeObjectForKey(*tq::String::stringWithUTF8Repaired(key));
    }
  }

  /// Elements that should leave and do not fit stay after the element before them.
  [[nodiscard]] tq::Ref<tq::Object> builtArray(const tq::Array& array, const std::string& path) {
    std::vector<tq::Ref<tq::Object>> elements;
    const auto& leaving = moves_[path].leaving;
    const auto addUnmoved = [&](std::size_t index) {
      for (auto next = leaving.find(index); next != leaving.end() && next->first == index;
           ++index) {
        if (!next->second->reason.empty() && index < array.count()) {
          elements.push_back(tq::share(array.objectAtIndex(index)));
        }
        ++next;
      }
    };
    addUnmoved(0);
    const Slots& slots = slotsOf(path, array);
    for (std::size_t i = 0; i < slots.size(); ++i) {
      const auto [oldIndex, arrival] = slots[i];
      const std::string place = path + '[' + std::to_string(i) + ']';
      if (arrival == nullptr) {
        elements.push_back(built(array.objectAtIndex(oldIndex), place));
        addUnmoved(oldIndex + 1);
      } else if (arrival->reason.empty()) {
        elements.push_back(arrival->kind == Kind::moved ? built(*leavingObject(*arrival), place)
                                                        : tq::share(*arrival->value));
      }
    }
    return tq::Array::arrayWithObjects(std::move(elements));
  }

  tq::Ref<tq::Dictionary> tree_;
  std::vector<Change> changes_;
  // By paths in the new drawing: the changed properties, the arrays, and all places that contain a
  // change.
  std::unordered_map<std::string, std::map<std::string, Change*>> properties_;
  std::unordered_map<std::string, Moves> moves_;
  std::unordered_map<std::string, Slots> slots_;
  std::unordered_map<std::string, const tq::Object*> oldObjects_;
  std::unordered_set<std::string> touched_;
  std::unordered_map<const tq::Object*, std::string> digests_;
};

}  // namespace

Patched patched(const Document& oldDocument, const tq::Array& changes, tq::Ref<tq::Error>* error) {
  Patch patch(archiveTree(oldDocument), changes);
  const auto archive = tq::TQJSONEncoder::encodeObjectAsData(patch.result(), error);
  if (!archive) return {nullptr, patch.misfits()};
  return {openArchive(*archive, "the changes do not make a drawing", error), patch.misfits()};
}

}  // namespace tqdoc
