// A host with a toolkit that runs the default main context of the process. gtk_main() alone serves
// timers, the main queue and performed blocks. The program shows a window and uses all of them. Its
// exit status is 0 if all were served, and 1 after ten seconds.

#include <gtk/gtk.h>

#include <cstdio>
#include <string>
#include <thread>

#include <TQFoundation/TQFoundation.h>

namespace {

constexpr int kBlocks = 100;
constexpr int kTicks = 5;

/// A window that counts the served events.
class Window final : public tq::Subclass<Window> {
 public:
  static constexpr std::string_view className = "Window";

  Window() : window_(gtk_window_new(GTK_WINDOW_TOPLEVEL)), label_(gtk_label_new("")) {
    gtk_container_add(GTK_CONTAINER(window_), label_);
    gtk_widget_show_all(window_);
  }
  ~Window() override { gtk_widget_destroy(window_); }

  /// Updates the label, once for any number of new blocks.
  void showCounts() {
    ++texts;
    gtk_label_set_text(GTK_LABEL(label_), ("blocks: " + std::to_string(blocks)).c_str());
  }

  [[nodiscard]] bool isServed() const {
    return ticks >= kTicks && blocks == kBlocks && actions == 1 && performed == 1 && texts > 0 &&
           gtk_widget_get_mapped(window_) != FALSE;
  }

  int ticks = 0;      // calls of a repeating timer
  int blocks = 0;     // blocks of the main queue, added by another thread
  int actions = 0;    // calls of a debouncer, after three requests
  int performed = 0;  // blocks performed by the run loop
  int texts = 0;      // updates of a rate limiter, requested for each block

 private:
  GtkWidget* window_;
  GtkWidget* label_;
};

}  // namespace

int main(int argc, char** argv) {
  gtk_init(&argc, &argv);
  const auto window = tq::makeRef<Window>();
  const auto limiter = tq::TQRateLimiter::initWithTarget(window, &Window::showCounts);

  tq::scheduledTimerWithTimeInterval(0.02, true, [&](tq::Timer& timer) {
    ++window->ticks;
    if (!window->isServed()) return;
    timer.invalidate();
    gtk_main_quit();
  });
  tq::scheduledTimerWithTimeInterval(10, false, [](tq::Timer&) { gtk_main_quit(); });

  const auto debouncer = tq::Debouncer::init(0.05, [&] { ++window->actions; });
  for (int i = 0; i < 3; ++i) debouncer->schedulePerformAction();

  tq::RunLoop::main().performBlock([&] { ++window->performed; });
  std::thread elsewhere([&] {
    for (int i = 0; i < kBlocks; ++i) {
      tq::mainQueueAsync([&] { ++window->blocks; });
      limiter->setNeedsUpdate(true);
    }
  });
  gtk_main();
  elsewhere.join();

  std::printf("ticks %d, blocks %d, debounced %d, performed %d, texts %d: %s\n", window->ticks,
              window->blocks, window->actions, window->performed, window->texts,
              window->isServed() ? "served" : "not served");
  return window->isServed() ? 0 : 1;
}
