#pragma once

/// @file Command.h
/// What all commands share. Each one adds itself to the command line and, when it is called, leaves
/// its exit code behind.

#include <cstddef>
#include <string>
#include <string_view>

#include <CLI/App.hpp>

#include <TQFoundation/TQFoundation.h>

#include "Files/Drawing.h"

namespace tqdoc {

/// Exit codes.
enum class Outcome { fine = 0, different = 1, trouble = 2 };

void addImportCommand(CLI::App& app, Outcome& outcome);
void addShowCommand(CLI::App& app, Outcome& outcome);
void addRenderCommand(CLI::App& app, Outcome& outcome);
void addHitCommand(CLI::App& app, Outcome& outcome);
void addSheetCommand(CLI::App& app, Outcome& outcome);
void addDiffCommand(CLI::App& app, Outcome& outcome);
void addCheckCommand(CLI::App& app, Outcome& outcome);
void addRecentCommand(CLI::App& app, Outcome& outcome);
void addOptionsCommand(CLI::App& app, Outcome& outcome);

/// Opens a drawing that the user has named, as openDrawing() does, and remembers it.
[[nodiscard]] SvgDrawing openNamedDrawing(const std::string& path, tq::Ref<tq::Error>* error);

/// Pixels across a picture where the command line says nothing; 0: the drawing's own.
[[nodiscard]] int preferredWidth();

/// Prints "tqdoc: <message>" on standard error.
Outcome reportTrouble(std::string_view message);

/// Text from a drawing, safe to print: control characters become "?".
[[nodiscard]] std::string printable(std::string_view text);

/// Six significant digits: enough to find one's way.
[[nodiscard]] std::string shortText(double number);

/// "{{x, y}, {width, height}}"; "nowhere" for the null rect.
[[nodiscard]] std::string shortText(const tq::Rect& rect);

/// 1234567 as "1,234,567".
[[nodiscard]] std::string grouped(std::size_t number);

/// "filter 2, <text> 1", the most frequent first; "none" for nothing.
[[nodiscard]] std::string summary(const Features& leftOut);

}  // namespace tqdoc
