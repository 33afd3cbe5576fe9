#include <TQFoundation/objects/Exception.h>

namespace tq {

Exception::~Exception() = default;

const char* Exception::what() const noexcept {
  return reason_.empty() ? name_.c_str() : reason_.c_str();
}

}  // namespace tq
