#include <TQFoundation/environment/LRVariant.h>

#include <functional>

#include <TQFoundation/base/TQAssert.h>

namespace tq {
namespace {

struct DelegateSlot {
  Ref<Object> object;
  CurrentVariantDelegate* delegate = nullptr;
};

DelegateSlot& delegateSlot() {
  static auto& slot = *new DelegateSlot;  // never destroyed: threads may run after main returns
  return slot;
}

}  // namespace

CurrentVariantDelegate::~CurrentVariantDelegate() = default;

Ref<LRVariant> LRVariant::init() { return initWithRawValue(0); }

Ref<LRVariant> LRVariant::initWithRawValue(std::int64_t rawValue) {
  return Ref<LRVariant>::adopt(new LRVariant(rawValue));
}

Ref<LRVariant> LRVariant::initWithVariants(std::initializer_list<Ref<LRVariant>> variants) {
  std::int64_t rawValue = 0;
  for (const Ref<LRVariant>& variant : variants) {
    TQ_ASSERT(variant != nullptr);
    rawValue |= variant->rawValue_;
  }
  return initWithRawValue(rawValue);
}

#define TQ_VARIANT(name, rawValue)                                                \
  const Ref<LRVariant>& LRVariant::name() {                                       \
    static const auto& variant = *new Ref<LRVariant>(initWithRawValue(rawValue)); \
    return variant;                                                               \
  }
TQ_VARIANT(none, 0)
TQ_VARIANT(final, 1)
TQ_VARIANT(xcode, 2)
TQ_VARIANT(beta, 4)
TQ_VARIANT(internal, 8)
TQ_VARIANT(experimental, 16)
TQ_VARIANT(private_, 32)
TQ_VARIANT(testing, 64)
TQ_VARIANT(featurepreview, 128)
TQ_VARIANT(inHouse, 2 + 8 + 16 + 64)
TQ_VARIANT(privateBeta, 2 + 8 + 16 + 64 + 32)
TQ_VARIANT(all, 255)
#undef TQ_VARIANT

Ref<LRVariant> LRVariant::current() {
  const DelegateSlot asked = delegateSlot();  // a copy, because the call may replace the delegate
  if (asked.delegate == nullptr) return final();
  Ref<LRVariant> answer = asked.delegate->currentVariant();
  TQ_ASSERT(answer != nullptr);
  return answer;
}

CurrentVariantDelegate* LRVariant::delegate() noexcept { return delegateSlot().delegate; }

void LRVariant::holdDelegate(Ref<Object> object, CurrentVariantDelegate* delegate) {
  delegateSlot().delegate = delegate;
  std::swap(delegateSlot().object, object);  // the earlier one is released after the slot is set
}

bool LRVariant::matchesCurrentVariant() const {
  const auto self = share(*this);  // the delegate may release it
  const Ref<LRVariant> running = current();
  return intersection(*running)->isEqual(*running);
}

bool LRVariant::isDebugUIEnabled() const { return inHouse()->matchesCurrentVariant(); }

Ref<LRVariant> LRVariant::union_(const LRVariant& other) const {
  return initWithRawValue(rawValue_ | other.rawValue_);
}

Ref<LRVariant> LRVariant::intersection(const LRVariant& other) const {
  return initWithRawValue(rawValue_ & other.rawValue_);
}

Ref<LRVariant> LRVariant::symmetricDifference(const LRVariant& other) const {
  return initWithRawValue(rawValue_ ^ other.rawValue_);
}

Ref<LRVariant> LRVariant::subtracting(const LRVariant& other) const {
  return initWithRawValue(rawValue_ & ~other.rawValue_);
}

bool LRVariant::contains(const LRVariant& member) const noexcept { return isSuperset(member); }

bool LRVariant::isSubset(const LRVariant& ofOther) const noexcept {
  return (rawValue_ & ~ofOther.rawValue_) == 0;
}

bool LRVariant::isSuperset(const LRVariant& ofOther) const noexcept {
  return ofOther.isSubset(*this);
}

bool LRVariant::isDisjoint(const LRVariant& withOther) const noexcept {
  return (rawValue_ & withOther.rawValue_) == 0;
}

LRVariant::Insertion LRVariant::insert(Ref<LRVariant>& set, const Ref<LRVariant>& newMember) {
  TQ_ASSERT(set != nullptr && newMember != nullptr);
  Ref<LRVariant> held = set->intersection(*newMember);
  if (held->isEqual(*newMember)) return {false, std::move(held)};
  formUnion(set, *newMember);
  return {true, newMember};
}

Ref<LRVariant> LRVariant::remove(Ref<LRVariant>& set, const LRVariant& member) {
  TQ_ASSERT(set != nullptr);
  Ref<LRVariant> held = set->intersection(member);
  if (held->isEmpty()) return nullptr;
  subtract(set, member);
  return held;
}

Ref<LRVariant> LRVariant::update(Ref<LRVariant>& set, const LRVariant& newMember) {
  TQ_ASSERT(set != nullptr);
  Ref<LRVariant> held = set->intersection(newMember);
  formUnion(set, newMember);
  return held->isEmpty() ? nullptr : held;
}

void LRVariant::formUnion(Ref<LRVariant>& set, const LRVariant& other) {
  TQ_ASSERT(set != nullptr);
  set = set->union_(other);
}

void LRVariant::formIntersection(Ref<LRVariant>& set, const LRVariant& other) {
  TQ_ASSERT(set != nullptr);
  set = set->intersection(other);
}

void LRVariant::formSymmetricDifference(Ref<LRVariant>& set, const LRVariant& other) {
  TQ_ASSERT(set != nullptr);
  set = set->symmetricDifference(other);
}

void LRVariant::subtract(Ref<LRVariant>& set, const LRVariant& other) {
  TQ_ASSERT(set != nullptr);
  set = set->subtracting(other);
}

bool LRVariant::isEqual(const Object& other) const {
  const auto* variant = objectCast<LRVariant>(&other);
  return variant != nullptr && variant->rawValue_ == rawValue_;
}

std::size_t LRVariant::hash() const { return std::hash<std::int64_t>()(rawValue_); }

std::string LRVariant::description() const {
  return Object::description() + " rawValue: " + std::to_string(rawValue_);
}

}  // namespace tq
