#include <TQFoundation/objects/Null.h>

namespace tq {

Null::~Null() = default;

Ref<Null> Null::null() {
  static Null& instance = *new Null;  // this reference is never released
  return Ref<Null>(&instance);
}

}  // namespace tq
