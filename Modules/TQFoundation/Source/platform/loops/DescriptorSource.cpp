#include <TQFoundation/platform/loops/DescriptorSource.h>

#include <glib-unix.h>

#include <memory>
#include <utility>

namespace tq::detail {
namespace {

using Function = std::function<void()>;

// GLib keeps the function until the call has returned, even if the function destroys the source.
gboolean call(gint, GIOCondition, gpointer function) noexcept {
  (*static_cast<const Function*>(function))();
  return G_SOURCE_CONTINUE;
}

void destroy(gpointer function) noexcept { delete static_cast<Function*>(function); }

GSource* sourceFor(int descriptor, Function canRead) {
  auto function = std::make_unique<Function>(std::move(canRead));
  GSource* const source = g_unix_fd_source_new(descriptor, G_IO_IN);
  g_source_set_callback(source, G_SOURCE_FUNC(call), function.release(), destroy);
  return source;
}

}  // namespace

DescriptorSource::DescriptorSource(RunLoop& loop, int descriptor, Function canRead)
    : source_(sourceFor(descriptor, std::move(canRead))) {
  g_source_attach(static_cast<GSource*>(source_), static_cast<GMainContext*>(loop.context()));
}

DescriptorSource::~DescriptorSource() {
  g_source_destroy(static_cast<GSource*>(source_));
  g_source_unref(static_cast<GSource*>(source_));
}

}  // namespace tq::detail
