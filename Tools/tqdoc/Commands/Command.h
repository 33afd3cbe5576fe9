#pragma once

/// @file Command.h
/// The commands, and functions that they share. Each add…Command() adds a command to the command
/// line; the command sets `outcome` when it has run.

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <CLI/App.hpp>

#include <TQFoundation/TQFoundation.h>

#include "Files/Drawing.h"
#include "Model/Features.h"

namespace tqdoc {

/// Exit codes.
enum class Outcome { success = 0, different = 1, error = 2 };

void addImportCommand(CLI::App& app, Outcome& outcome);
void addShowCommand(CLI::App& app, Outcome& outcome);
void addRenderCommand(CLI::App& app, Outcome& outcome);
void addHitCommand(CLI::App& app, Outcome& outcome);
void addSheetCommand(CLI::App& app, Outcome& outcome);
void addDiffCommand(CLI::App& app, Outcome& outcome);
void addPatchCommand(CLI::App& app, Outcome& outcome);
void addCheckCommand(CLI::App& app, Outcome& outcome);
void addRecentCommand(CLI::App& app, Outcome& outcome);
void addOptionsCommand(CLI::App& app, Outcome& outcome);

/// Opens a drawing as openDrawing() does, and adds it to the recent drawings.
[[nodiscard]] SvgDrawing openNamedDrawing(const std::string& path, tq::Ref<tq::Error>* error);

/// Prints the features of a drawing that were ignored, if any, on standard error.
void reportUnsupported(const std::string& path, const Features& leftOut);

/// Reports an error if a picture would replace one of the drawings that it is made from.
[[nodiscard]] bool isOneOf(const std::string& picture, std::span<const std::string> drawings);

/// Returns whether an output is standard output, by any of its names.
[[nodiscard]] bool isStandardOutput(const std::string& output);

/// Reports an error if two of the outputs would be written to one place. Empty ones are not
/// written.
[[nodiscard]] bool isWrittenTwice(const std::vector<std::string>& outputs);

/// Prints a value as JSON, on one line.
void printJSON(const tq::Object& value);

/// Values for printJSON(). Invalid UTF-8 is replaced.
[[nodiscard]] tq::Ref<tq::Object> jsonText(std::string_view text);
[[nodiscard]] tq::Ref<tq::Object> jsonNumber(double number);
[[nodiscard]] tq::Ref<tq::Object> jsonRect(const tq::Rect& rect);  ///< null for the null rect
[[nodiscard]] tq::Ref<tq::Object> jsonCounts(const Features& counts);

/// Returns the default width of pictures in pixels; 0 for the drawing's own size.
[[nodiscard]] int preferredWidth();

/// Prints "tqdoc: <message>" on standard error.
Outcome reportError(std::string_view message);

/// Saves changed preferences; reports an error if they cannot be written.
Outcome saveOptions();

/// Formats a number with six significant digits.
[[nodiscard]] std::string shortText(double number);

/// Formats a rect as "{{x, y}, {width, height}}", and the null rect as "nowhere".
[[nodiscard]] std::string shortText(const tq::Rect& rect);

/// Formats 1234567 as "1,234,567".
[[nodiscard]] std::string grouped(std::size_t number);

/// Formats "1 shape" and "1,234 shapes".
[[nodiscard]] std::string counted(std::size_t number, std::string_view noun);

}  // namespace tqdoc
