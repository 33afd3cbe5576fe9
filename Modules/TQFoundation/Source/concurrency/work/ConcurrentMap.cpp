#include <TQFoundation/concurrency/work/ConcurrentMap.h>

#include <algorithm>
#include <array>
#include <memory>
#include <span>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

#include <TQFoundation/objects/Exception.h>
#include <TQFoundation/platform/operations/WorkerPool.h>

namespace tq {
namespace {

template <class Block>
void requireBlock(const Block& block, const char* function) {
  if (!block) throw Exception(InvalidArgumentException, std::string(function) + ": empty block");
}

/// Returns the measured cost per element of loops over blocks of this type. The entry depends on
/// the name of the type, not on an address. Types may share an entry; a wrong estimate only costs
/// time. Computing the entry takes as long as several cheap calls, so each thread keeps the last
/// one.
ApplyCost& costOf(const std::type_info& kind) noexcept {
  struct Last {
    const std::type_info* kind = nullptr;
    ApplyCost* cost = nullptr;
  };
  [[gnu::tls_model("initial-exec")]] static thread_local constinit Last last;
  if (last.kind != &kind) {
    static auto& costs = *new std::array<ApplyCost, 256>;
    last = {&kind, &costs[kind.hash_code() % costs.size()]};
  }
  return *last.cost;
}

/// Returns the elements of an array, which a block may change or release.
Ref<Array> elementsOf(const Array& array) { return refCast<Array>(array.copy()); }

bool isNull(const Ref<Object>& object) { return !object || object->kind() == ObjectKind::null; }

}  // namespace

Ref<Array> concurrentMapWithCompact(const Array& array, bool compact, const ArrayMapBlock& block) {
  requireBlock(block, __func__);
  const Ref<Array> held = elementsOf(array);
  const std::span<const Ref<Object>> objects = held->objects();
  std::vector<Ref<Object>> results(objects.size());  // null until the block has returned
  const auto call = [&block, objects, compact, into = results.data()](std::size_t i) {
    Ref<Object> result = block(*objects[i]);
    if (result == nullptr && !compact) {
      throw Exception(InvalidArgumentException, "concurrentMap: the block returned null");
    }
    std::construct_at(into + i, std::move(result));  // over null, which needs no release
  };
  parallelApply(objects.size(), call, &costOf(block.target_type()));
  if (compact) std::erase_if(results, isNull);
  return Array::arrayWithObjects(std::move(results));
}

Ref<Array> concurrentMap(const Array& array, const ArrayMapBlock& block) {
  return concurrentMapWithCompact(array, false, block);
}

Ref<Array> compactConcurrentMap(const Array& array, const ArrayMapBlock& block) {
  return concurrentMapWithCompact(array, true, block);
}

Ref<Array> mapWithOptions(const Array& array, EnumerationOptions options,
                          const ArrayMapBlock& usingBlock) {
  if ((options & EnumerationConcurrent) != 0) return concurrentMap(array, usingBlock);
  requireBlock(usingBlock, __func__);
  return array.map(usingBlock);
}

Ref<Array> compactMapWithOptions(const Array& array, EnumerationOptions options,
                                 const ArrayMapBlock& usingBlock) {
  if ((options & EnumerationConcurrent) != 0) return compactConcurrentMap(array, usingBlock);
  requireBlock(usingBlock, __func__);
  return array.compactMap(usingBlock);
}

std::size_t applyBlockConcurrentlyAndCountSuccess(const Array& array, const ArrayPredicate& block) {
  requireBlock(block, __func__);
  const Ref<Array> held = elementsOf(array);
  const std::span<const Ref<Object>> objects = held->objects();
  std::vector<unsigned char> results(objects.size());
  groupApply(objects.size(), [&](std::size_t i) { results[i] = block(*objects[i]) ? 1 : 0; });
  return results.size() - static_cast<std::size_t>(std::ranges::count(results, 0));
}

}  // namespace tq
