#include <TQFoundation/concurrency/work/TQURLOperation.h>

namespace tq {

TQURLOperation::~TQURLOperation() = default;

TQURLOperation::TQURLOperation() : urlSession_(defaultURLSession()) {}

const Ref<URLSession>& TQURLOperation::defaultURLSession() {
  static const auto& session = *new Ref<URLSession>(URLSession::sessionWithConfiguration(
      URLSessionConfiguration::defaultSessionConfiguration()));  // never destroyed
  return session;
}

}  // namespace tq
