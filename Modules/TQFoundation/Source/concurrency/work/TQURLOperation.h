#pragma once

/// @file TQURLOperation.h
/// Asynchronous operations with a URL session.

#include <utility>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/concurrency/work/TQOperation.h>
#include <TQFoundation/platform/network/URLSession.h>

namespace tq {

/// A TQOperation with a URL session. A subclass creates its tasks with this session in start().
/// Threads: the session must be set before the operation starts.
class TQ_EXPORT TQURLOperation : public Subclass<TQURLOperation, TQOperation> {
 public:
  static constexpr std::string_view className = "TQURLOperation";
  ~TQURLOperation() override;

  /// Uses the default session.
  TQURLOperation();

  /// Returns the session that all such operations share by default. It has the default
  /// configuration and is created at the first call. Threads: any.
  [[nodiscard]] static const Ref<URLSession>& defaultURLSession();

  /// The session of this operation. Must be set before the operation starts.
  [[nodiscard]] const Ref<URLSession>& urlSession() const noexcept { return urlSession_; }
  void setUrlSession(Ref<URLSession> session) { urlSession_ = std::move(session); }

 private:
  Ref<URLSession> urlSession_;
};

}  // namespace tq
