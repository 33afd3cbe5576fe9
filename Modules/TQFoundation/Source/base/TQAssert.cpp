#include <TQFoundation/base/TQAssert.h>

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace tq {

void assertionFailed(const char* function, const char* file, int line,
                     const char* condition) noexcept {
  std::string_view family = file;
  family.remove_prefix(family.find_last_of('/') + 1);  // npos + 1 is 0: no directory to remove
  family = family.substr(0, family.find_last_of('.'));
  std::fprintf(stderr,
               "Assertion failed: (%s), function %s, file Modules/TQFoundation/Source/%.*s, "
               "line %d.\n",
               condition, function, static_cast<int>(family.size()), family.data(), line);
  std::abort();
}

}  // namespace tq
