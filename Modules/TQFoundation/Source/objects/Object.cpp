#include <TQFoundation/objects/Object.h>

#include <charconv>
#include <cstdint>
#include <functional>

#include <TQFoundation/objects/Class.h>
#include <TQFoundation/objects/Weak.h>

namespace tq {
namespace {

// Objects whose destruction has been put off, most recent first. Each leads to the next one by what
// nobody needs of its header any more, so that nothing is allocated in a release.
struct PutOff {
  int depth = 0;
  const Object* first = nullptr;
};
// Reached by every destruction, so without the call that a library's thread-local variables take.
[[gnu::tls_model("initial-exec")]] thread_local constinit PutOff putOff;

constexpr int kAlignmentBits = 4;  // an object starts at a multiple of 16

}  // namespace

// Marked still: a constructor has thrown, and nobody has released the object.
Object::~Object() {
  if ((references_.load(std::memory_order_relaxed) & kWeaklyHeld) != 0) detail::forgetWeakly(*this);
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

// The link takes the 48 bits of count and spare room: an address of up to 52 bits without the four
// that are always 0. Kind and detail stay, because destructors read them.
void Object::setNextPutOff(const Object* object) const noexcept {
  const auto link = reinterpret_cast<std::uintptr_t>(object) >> kAlignmentBits;
  references_.store(static_cast<std::uint32_t>(link), std::memory_order_relaxed);
  linkHigh_ = static_cast<std::uint16_t>(link >> 32);
}

const Object* Object::nextPutOff() const noexcept {
  const std::uintptr_t low = references_.load(std::memory_order_relaxed);
  return reinterpret_cast<const Object*>((std::uintptr_t{linkHigh_} << 32 | low) << kAlignmentBits);
}

// Invariant: at depth 0 the list is empty. The outermost destruction drains it, one object at a
// time, each with the whole depth to itself again; total work is one step an object.
void Object::lastReleased(std::uint32_t before) const noexcept {
  if ((before & kWeaklyHeld) != 0) {
    detail::forgetWeakly(*this);
    references_.store(0, std::memory_order_relaxed);
  }
  if (putOff.depth == kDirectReleaseDepth) {
    setNextPutOff(putOff.first);
    putOff.first = this;
    return;
  }
  ++putOff.depth;
  delete this;
  if (putOff.depth == 1) {
    while (putOff.first != nullptr) {
      const Object* object = putOff.first;
      putOff.first = object->nextPutOff();
      object->setNextPutOff(nullptr);  // a count of 0 again, as every destructor finds it
      delete object;
    }
  }
  --putOff.depth;
}

}  // namespace tq
