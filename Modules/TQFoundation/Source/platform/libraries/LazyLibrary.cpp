#include <TQFoundation/platform/libraries/LazyLibrary.h>

#include <dlfcn.h>

namespace tq::detail {
namespace {

std::string lastFailure() {
  return "A library could not be loaded: " + std::string(::dlerror()) + ".";
}

}  // namespace

LazyLibrary::LazyLibrary(const char* file)
    : handle_(::dlopen(file, RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE)) {
  if (handle_ == nullptr) failure_ = lastFailure();
}

LazyLibrary::Address LazyLibrary::find(const char* function) {
  void* const address = handle_ != nullptr ? ::dlsym(handle_, function) : nullptr;
  if (address == nullptr && failure_.empty()) failure_ = lastFailure();
  return Address(address);
}

}  // namespace tq::detail
