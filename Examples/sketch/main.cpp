// A small editor of drawings: a host of the library with a toolkit that runs the default main
// context of the process, so that gtk_main() alone serves timers, the main queue and observations.
//
// Read Edits.h first (what an edit is), then TreeEdit.h and History.h (undo), Editor.h (saving),
// CanvasView.h (picking and dragging), Thumbnails.h and Fetch.h (work in the background), Window.h.

#include <string_view>

#include "Window.h"

int main(int argc, char** argv) {
  gtk_init(&argc, &argv);
  tq::TQPerformanceTimingInitialise();
  tq::UserDefaults::setApplicationDomain("sketch");
  tqdoc::registerModel();

  sketch::Path file;
  for (int i = 1; i < argc; ++i) {
    if (std::string_view(argv[i]) == "--log") {  // for this run, whatever the preference says
      tq::UserDefaults::setArguments(*tq::Dictionary::dictionaryWithEntries(
          {{sketch::options::logsWork.key(), tq::Number::numberWith(true)}}));
    } else {
      file = argv[i];
    }
  }
  sketch::setLogsWork(sketch::options::logsWork.value());
  if (file.empty()) file = sketch::options::openFile.value();

  const auto window = tq::makeRef<sketch::Window>();
  if (!file.empty()) window->open(file);
  gtk_main();
}
