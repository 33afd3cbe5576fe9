#include "Options.h"

namespace sketch {
namespace options {

const tq::Preference<bool> showsGrid("ShowsGrid", true);
const tq::Preference<bool> snapsToGrid("SnapsToGrid", true);
const tq::Preference<bool> snapsToCrossings("SnapsToCrossings", true);
const tq::Preference<double> gridStep("GridStep", 10);
const tq::Preference<bool> logsWork("LogsWork", false);
const tq::Preference<Path> openFile("OpenFile", {});
const tq::Preference<Path> folder("Folder", {});
const tq::Preference<std::vector<Path>> recentFiles("RecentFiles", {});

}  // namespace options

void rememberFile(const Path& file) {
  constexpr int kMostRecent = 8;
  tq::RecentsList<Path> recent(options::recentFiles.value(), kMostRecent);
  recent.insert(file);
  options::recentFiles.setValue(std::vector<Path>(recent.begin(), recent.end()));
}

void setLogsWork(bool logsWork) {
  for (tq::LogChannel* channel : {&tq::TQLogging::applicationLog(), &tq::TQLogging::historyLog(),
                                  &tq::TQLogging::renderingLog()}) {
    channel->setLevel(logsWork ? tq::LogLevel::debug : tq::LogLevel::default_);
  }
}

}  // namespace sketch
