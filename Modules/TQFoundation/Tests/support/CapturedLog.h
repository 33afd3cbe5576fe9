#pragma once

#include <TQFoundation/platform/log/PlainLog.h>

#include "support/Test.h"

namespace tq::test {

/// Collects log messages during its lifetime, then restores the previous sink.
class CapturedLog {
 public:
  CapturedLog()
      : before_(setPlainLogSink([this](std::string_view message) {
          const std::scoped_lock guard(lock_);
          messages_.emplace_back(message);
        })) {}
  ~CapturedLog() { setPlainLogSink(std::move(before_)); }
  CapturedLog(const CapturedLog&) = delete;
  CapturedLog& operator=(const CapturedLog&) = delete;

  [[nodiscard]] std::vector<std::string> messages() const {
    const std::scoped_lock guard(lock_);
    return messages_;
  }

 private:
  mutable std::mutex lock_;
  std::vector<std::string> messages_;
  PlainLogSink before_;
};

}  // namespace tq::test
