#pragma once

/// @file TQURLOperation.h
/// Operations that talk to a server.

#include <utility>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/concurrency/work/TQOperation.h>
#include <TQFoundation/platform/network/URLSession.h>

namespace tq {

/// A TQOperation with the URL session that its tasks are made by; a subclass makes them in start().
/// Threads: the session is set before the operation starts.
class TQ_EXPORT TQURLOperation : public Subclass<TQURLOperation, TQOperation> {
 public:
  static constexpr std::string_view className = "TQURLOperation";

  /// With the default session.
  TQURLOperation();

  /// One for the process, of the default configuration; made on first use. Any thread.
  [[nodiscard]] static const Ref<URLSession>& defaultURLSession();

  /// The session that carries the request; to be set before the operation starts.
  [[nodiscard]] const Ref<URLSession>& urlSession() const noexcept { return urlSession_; }
  void setUrlSession(Ref<URLSession> session) { urlSession_ = std::move(session); }

 private:
  Ref<URLSession> urlSession_;
};

}  // namespace tq
