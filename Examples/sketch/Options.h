#pragma once

/// @file Options.h
/// Options and recent files, stored as preferences. All processes of the editor share them.

#include <filesystem>
#include <vector>

#include <TQFoundation/TQFoundation.h>

namespace sketch {

using Path = std::filesystem::path;

namespace options {
extern const tq::Preference<bool> showsGrid, snapsToGrid, snapsToCrossings;
extern const tq::Preference<double> gridStep;  ///< in the units of the drawing
extern const tq::Preference<bool> logsWork;    ///< messages and times on standard error
extern const tq::Preference<Path> openFile;    ///< to open at the next start; may be empty
extern const tq::Preference<Path> folder;      ///< whose drawings are shown
extern const tq::Preference<std::vector<Path>> recentFiles;  ///< latest first
}  // namespace options

/// Puts a file first in the list of recent ones.
void rememberFile(const Path& file);

/// Sets the level of the log channels that the editor uses.
void setLogsWork(bool logsWork);

}  // namespace sketch
