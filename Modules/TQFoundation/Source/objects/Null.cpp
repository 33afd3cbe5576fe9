#include <TQFoundation/objects/Null.h>

namespace tq {

Ref<Null> Null::null() {
  static Null& instance = *new Null;  // its own reference keeps it for good
  return Ref<Null>(&instance);
}

}  // namespace tq
