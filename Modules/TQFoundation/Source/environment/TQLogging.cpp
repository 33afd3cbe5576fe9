#include <TQFoundation/environment/TQLogging.h>

namespace tq {
namespace {

constexpr std::string_view kApplication = "com.korvan.xcode";
constexpr std::string_view kRendering = "com.korvan.rendering";

}  // namespace

#define TQ_LOG(accessor, subsystem, category)                              \
  LogChannel& TQLogging::accessor() {                                      \
    static LogChannel& channel = LogChannel::channel(subsystem, category); \
    return channel;                                                        \
  }
TQ_LOG(renderingLog, kRendering, "rendering")
TQ_LOG(rasterisationLog, kRendering, "rasterisation")
TQ_LOG(modelLog, kApplication, "model")
TQ_LOG(historyLog, kApplication, "history")
TQ_LOG(influenceRectLog, kApplication, "influenceRect")
TQ_LOG(applicationLog, kApplication, "application")
TQ_LOG(poiLog, kApplication, "PointsOfInterest")
TQ_LOG(collaborationOpenerLog, kApplication, "collab-opener")
TQ_LOG(collaborationLog, kApplication, "collaboration")
TQ_LOG(presenceLog, kApplication, "presence")
TQ_LOG(authenticationRefreshLog, kApplication, "authentication-refresh")
TQ_LOG(keychainLog, kApplication, "keychain")
#undef TQ_LOG

LogChannel& TQLogging::quartzImpositorLog() {
  return usesHighFrequencySignposts() ? LogChannel::channel(kRendering, "QuartzImpositor")
                                      : LogChannel::disabled();
}

}  // namespace tq
