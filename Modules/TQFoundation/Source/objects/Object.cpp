#include <TQFoundation/objects/Object.h>

#include <charconv>
#include <cstring>
#include <functional>

#include <TQFoundation/objects/Class.h>
#include <TQFoundation/objects/Weak.h>

namespace tq {
namespace {

// Objects whose destruction has been put off, most recent first. Each lies in the list by a pointer
// written over its dead header (count and spare bytes), so that nothing is allocated in a release.
struct PutOff {
  int depth = 0;
  const Object* first = nullptr;
};
// Reached by every destruction, so without the call that a library's thread-local variables take.
[[gnu::tls_model("initial-exec")]] thread_local constinit PutOff putOff;

constexpr std::size_t kLinkOffset = sizeof(void*);  // behind the virtual table
static_assert(kLinkOffset + sizeof(const Object*) <= sizeof(Object));

void pushPutOff(const Object* object) noexcept {
  std::memcpy(reinterpret_cast<std::byte*>(const_cast<Object*>(object)) + kLinkOffset,
              &putOff.first, sizeof putOff.first);
  putOff.first = object;
}

const Object* popPutOff() noexcept {
  const Object* object = putOff.first;
  std::memcpy(&putOff.first, reinterpret_cast<const std::byte*>(object) + kLinkOffset,
              sizeof putOff.first);
  return object;
}

// Invariant: at depth 0 the list is empty. The outermost destruction drains it, one object at a
// time, each with the whole depth to itself again; total work is one step an object.
void destroy(const Object* object) noexcept {
  if (putOff.depth == Object::kDirectReleaseDepth) {
    pushPutOff(object);
    return;
  }
  ++putOff.depth;
  delete object;
  if (putOff.depth == 1) {
    while (putOff.first != nullptr) delete popPutOff();
  }
  --putOff.depth;
}

}  // namespace

Object::~Object() = default;

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

void Object::lastReleased(std::uint32_t before) const noexcept {
  if ((before & kWeaklyHeld) != 0) detail::forgetWeakly(*this);
  destroy(this);
}

}  // namespace tq
