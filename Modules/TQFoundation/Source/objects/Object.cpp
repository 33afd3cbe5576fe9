#include <TQFoundation/objects/Object.h>

#include <charconv>
#include <cstdint>
#include <functional>

#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/objects/Class.h>
#include <TQFoundation/objects/Weak.h>

namespace tq {
namespace {

// Objects whose destruction is deferred, most recent first. The links are stored in header fields
// that are no longer needed, so that a release allocates nothing.
struct PutOff {
  int depth = 0;
  const Object* first = nullptr;
};
// Every destruction reads this, so it must not need the function call of a library's thread-local
// variables.
[[gnu::tls_model("initial-exec")]] thread_local constinit PutOff putOff;

constexpr int kAlignmentBits = 3;  // an Object starts at a multiple of 8, not always its class
static_assert(alignof(Object) == 1 << kAlignmentBits);

}  // namespace

// An object whose constructor has thrown was never released. It may still be marked as weakly held.
Object::~Object() {
  const std::uint32_t references = references_.load(std::memory_order_relaxed);
  if (references == kBeingDestroyed) return;
  const bool isKeptByItsDestructor = (references & kBeingDestroyed) != 0;
  TQ_ASSERT(!isKeptByItsDestructor);
  if ((references & kWeaklyHeld) != 0) detail::forgetWeakly(*this);
}

const Class& Object::objectClass() const noexcept { return classOf<Object>; }

const Class& Object::classForCoder() const noexcept { return objectClass().classForCoder(); }

bool Object::isEqual(const Object& other) const { return this == &other; }

std::size_t Object::hash() const { return std::hash<const void*>{}(this); }

Ref<Object> Object::copy() const { return Ref<Object>(const_cast<Object*>(this)); }

std::string Object::description() const {
  char digits[2 * sizeof(std::uintptr_t)];
  const auto end =
      std::to_chars(digits, digits + sizeof digits, reinterpret_cast<std::uintptr_t>(this), 16);
  std::string text = "<";
  text.append(objectClass().name()).append(": 0x").append(digits, end.ptr).append(">");
  return text;
}

// The link uses the 48 bits of the count and the spare bits: an address of up to 51 bits without
// its three low bits, which are 0. Kind and detail are kept, because destructors read them.
void Object::setNextPutOff(const Object* object) const noexcept {
  const auto link = reinterpret_cast<std::uintptr_t>(object) >> kAlignmentBits;
  references_.store(static_cast<std::uint32_t>(link), std::memory_order_relaxed);
  linkHigh_ = static_cast<std::uint16_t>(link >> 32);
}

const Object* Object::nextPutOff() const noexcept {
  const std::uintptr_t low = references_.load(std::memory_order_relaxed);
  return reinterpret_cast<const Object*>((std::uintptr_t{linkHigh_} << 32 | low) << kAlignmentBits);
}

// Invariant: at depth 0 the list is empty. The outermost destruction empties it, one object at a
// time, and each object may use the full depth again. The work is one step per object.
void Object::lastReleased(std::uint32_t before) const noexcept {
  if ((before & kWeaklyHeld) != 0) detail::forgetWeakly(*this);
  if (putOff.depth == kDirectReleaseDepth) {
    setNextPutOff(putOff.first);
    putOff.first = this;
    return;
  }
  ++putOff.depth;
  destroy();
  if (putOff.depth == 1) {
    while (putOff.first != nullptr) {
      const Object* object = putOff.first;
      putOff.first = object->nextPutOff();
      object->destroy();
    }
  }
  --putOff.depth;
}

void Object::destroy() const noexcept {
  references_.store(kBeingDestroyed, std::memory_order_relaxed);
  delete this;
}

}  // namespace tq
