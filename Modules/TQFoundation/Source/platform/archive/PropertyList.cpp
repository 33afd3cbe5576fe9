#include <TQFoundation/platform/archive/PropertyList.h>

#include <optional>
#include <utility>
#include <vector>

#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/Date.h>
#include <TQFoundation/objects/Dictionary.h>
#include <TQFoundation/objects/Number.h>
#include <TQFoundation/objects/String.h>
#include <TQFoundation/platform/archive/detail/BinaryPropertyList.h>

namespace tq::detail {
namespace {

constexpr std::size_t kNodeCost = 64;         // about the memory that the writer uses for a value
constexpr std::size_t kReadingsPerByte = 16;  // lists from other writers share objects

// The price of creating a container, in bytes read. A container takes about 200 bytes of memory,
// but may take only 3 bytes of a list: marker, offset and reference. A list without shared objects
// can pay this price.
constexpr std::size_t kContainerPrice = 32;
static_assert(kContainerPrice + 3 < 3 * kReadingsPerByte);

/// Writes children before their parents. Shared objects are written again at each reference, so the
/// size limit applies to the output.
class Writer {
 public:
  using Node = BinaryPropertyListWriter::Node;

  Writer(std::string& fault, std::size_t largest) : fault_(fault), left_(largest) {}

  std::optional<Node> write(const Object& object, int depth) {
    switch (object.kind()) {
      case ObjectKind::string:
        return text(static_cast<const String&>(object));
      case ObjectKind::number:
        return spend(0) ? std::optional(list_.number(static_cast<const Number&>(object).value()))
                        : std::nullopt;
      case ObjectKind::date:
        return spend(0) ? std::optional(list_.date(
                              static_cast<const Date&>(object).timeIntervalSinceReferenceDate()))
                        : std::nullopt;
      case ObjectKind::data: {
        const auto bytes = static_cast<const Data&>(object).bytes();
        return spend(bytes.size()) ? std::optional(list_.data(bytes)) : std::nullopt;
      }
      case ObjectKind::array:
      case ObjectKind::dictionary:
        if (depth == 0) return fail("an object that is nested too deeply");
        return object.kind() == ObjectKind::array
                   ? array(static_cast<const Array&>(object), depth - 1)
                   : dictionary(static_cast<const Dictionary&>(object), depth - 1);
      default:
        return fail("non-property list object of class " +
                    std::string(object.objectClass().name()));
    }
  }

  [[nodiscard]] Ref<Data> finish() const { return list_.finish(); }

 private:
  std::nullopt_t fail(std::string fault) {
    fault_ = std::move(fault);
    return std::nullopt;
  }

  bool spend(std::size_t bytes) {
    if (bytes > left_ || left_ - bytes < kNodeCost) {
      fault_ = "an object that is too large";
      return false;
    }
    left_ -= bytes + kNodeCost;
    return true;
  }

  std::optional<Node> text(const String& string) {
    if (!spend(string.view().size())) return std::nullopt;
    return list_.string(string.view());
  }

  std::optional<Node> array(const Array& array, int depth) {
    if (!spend(0)) return std::nullopt;
    std::vector<Node> elements;
    for (std::size_t i = 0; i < array.count(); ++i) {
      const auto element = array.isPacked() && spend(0)
                               ? std::optional(list_.number(array.numberAtIndex(i)))
                               : write(array.objectAtIndex(i), depth);
      if (!element) return std::nullopt;
      elements.push_back(*element);
    }
    return list_.array(elements);
  }

  std::optional<Node> dictionary(const Dictionary& dictionary, int depth) {
    if (!spend(0)) return std::nullopt;
    std::vector<std::pair<Node, Node>> members;
    for (const auto& [key, value] : dictionary) {
      if (key.kind() != ObjectKind::string)
        return fail("a dictionary with a key that is not a string");
      const auto name = text(static_cast<const String&>(key));
      const auto member = name ? write(value, depth) : std::nullopt;
      if (!member) return std::nullopt;
      members.emplace_back(*name, *member);
    }
    return list_.dictionary(members);
  }

  BinaryPropertyListWriter list_;
  std::string& fault_;
  std::size_t left_;  // of the largest size
};

/// Creates each leaf once, and a container for each reference to it, so that the containers form a
/// tree.
class Reader {
 public:
  explicit Reader(BinaryPropertyListReader list) : list_(list), leaves_(list.objectCount()) {}

  Ref<Object> read(std::uint64_t number, int depth) {
    if (number < leaves_.size() && leaves_[number]) {
      return list_.pay(1) ? leaves_[number] : nullptr;
    }
    const auto node = list_.node(number);
    if (!node) return nullptr;
    const bool isArray = node->kind == Kind::array;
    if (!isArray && node->kind != Kind::dictionary) return leaves_[number] = leaf(*node);
    if (depth == 0) return nullptr;
    if (node->value == 0) return isArray ? Ref<Object>(Array::array()) : Dictionary::dictionary();
    if (!list_.pay(kContainerPrice)) return nullptr;
    return isArray ? array(*node, depth - 1) : dictionary(*node, depth - 1);
  }

 private:
  using Kind = BinaryPropertyListReader::Kind;

  static Ref<Object> leaf(const BinaryPropertyListReader::Node& node) {
    switch (node.kind) {
      case Kind::number:
        return Number::numberWith(node.number);
      case Kind::date:
        return Date::dateWithTimeIntervalSinceReferenceDate(node.number.doubleValue());
      case Kind::data:
        return Data::dataWithBytes(node.content);
      default:
        return stringFromNode(node);  // null for a UID
    }
  }

  Ref<Object> array(const BinaryPropertyListReader::Node& node, int depth) {
    std::vector<Ref<Object>> elements;
    for (std::uint64_t i = 0; i < node.value; ++i) {
      elements.push_back(read(list_.reference(node, i), depth));
      if (elements.back() == nullptr) return nullptr;
    }
    return Array::arrayWithObjects(std::move(elements));
  }

  Ref<Object> dictionary(const BinaryPropertyListReader::Node& node, int depth) {
    std::vector<std::pair<Ref<Object>, Ref<Object>>> entries;
    for (std::uint64_t i = 0; i < node.value; ++i) {
      Ref<Object> name = read(list_.reference(node, i), 0);
      if (!name || name->kind() != ObjectKind::string) return nullptr;
      Ref<Object> value = read(list_.reference(node, node.value + i), depth);
      if (value == nullptr) return nullptr;
      entries.emplace_back(std::move(name), std::move(value));
    }
    return Dictionary::dictionaryWithEntries(entries);
  }

  BinaryPropertyListReader list_;
  std::vector<Ref<Object>> leaves_;  // by number; null until created
};

}  // namespace

Ref<Data> bytesFromPropertyList(const Object& object, std::string& fault, std::size_t largest) {
  Writer writer(fault, largest);
  return writer.write(object, kPropertyListDepth) ? writer.finish() : nullptr;
}

Ref<Object> propertyListFromBytes(std::span<const std::byte> bytes) {
  auto list = BinaryPropertyListReader::open(bytes, kReadingsPerByte);
  if (!list) return nullptr;
  const std::uint64_t top = list->top();
  return Reader(*list).read(top, kPropertyListDepth);
}

}  // namespace tq::detail
