#include <TQFoundation/platform/archive/WriteOnlyClass.h>

#include <mutex>
#include <set>
#include <string>

#include <TQFoundation/platform/log/PlainLog.h>

namespace tq::detail {

void logWriteOnly(const Class& written, std::string_view reason) {
  static auto& lock = *new std::mutex;
  static auto& logged = *new std::set<const Class*>;
  {
    const std::scoped_lock guard(lock);
    if (!logged.insert(&written).second) return;
  }
  std::string line = "Objects of class ";
  line.append(written.name()).append(" are archived but cannot be read back: ");
  plainLog(line.append(reason).append(".\n"));
}

}  // namespace tq::detail
