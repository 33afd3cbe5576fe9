#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <unistd.h>

#include "Commands/Command.h"
#include "Files/Drawing.h"
#include "Model/Differences.h"

namespace tqdoc {
namespace {

struct Options {
  std::string oldDrawing, newDrawing;
  bool asJSON = false;
};

/// How each kind is told.
struct Look {
  const char* word;
  const char* sign;
  const char* colour;  ///< as a terminal takes it
};

[[nodiscard]] Look lookOf(Difference::Kind kind) noexcept {
  switch (kind) {
    case Difference::Kind::removed:
      return {"removed", "-", "\033[31m"};
    case Difference::Kind::inserted:
      return {"inserted", "+", "\033[32m"};
    case Difference::Kind::moved:
      return {"moved", ">", "\033[36m"};
    default:
      return {"changed", "~", "\033[33m"};
  }
}

/// A terminal, unless its user wants none of it (no-color.org).
[[nodiscard]] bool wantsColours() { return isatty(STDOUT_FILENO) != 0 && !std::getenv("NO_COLOR"); }

[[nodiscard]] std::string lineFor(const Difference& difference) {
  const std::string path = printable(difference.path) + "  " + printable(difference.what);
  switch (difference.kind) {
    case Difference::Kind::changed:
      return path + ": " + printable(difference.oldValue) + " -> " + printable(difference.newValue);
    case Difference::Kind::moved:
      return path + " from " + printable(difference.oldPath);
    default:
      return path;
  }
}

void printText(const std::vector<Difference>& differences) {
  const bool colours = wantsColours();
  for (const Difference& difference : differences) {
    const Look look = lookOf(difference.kind);
    std::cout << (colours ? look.colour : "") << look.sign << ' ' << lineFor(difference)
              << (colours ? "\033[0m" : "") << '\n';
  }
}

[[nodiscard]] tq::Ref<tq::Object> text(const std::string& value) {
  return tq::String::stringWithUTF8Repaired(value);
}

void printJSON(const std::vector<Difference>& differences) {
  std::vector<tq::Ref<tq::Object>> records;
  for (const Difference& difference : differences) {
    const auto record = tq::MutableDictionary::dictionary();
    record->setObject(tq::String::of(lookOf(difference.kind).word), "kind");
    record->setObject(text(difference.path), "path");
    record->setObject(text(difference.what), "what");
    if (difference.kind == Difference::Kind::changed) {
      record->setObject(text(difference.oldValue), "old");
      record->setObject(text(difference.newValue), "new");
    }
    if (difference.kind == Difference::Kind::moved) {
      record->setObject(text(difference.oldPath), "from");
    }
    records.push_back(record);
  }
  const auto json =
      tq::TQJSONEncoder::encodeObjectAsData(tq::Array::arrayWithObjects(std::move(records)));
  const auto bytes = json->bytes();
  std::cout.write(reinterpret_cast<const char*>(bytes.data()),
                  static_cast<std::streamsize>(bytes.size()))
      << '\n';
}

/// As openDrawing(); the null device is a drawing without anything, as version control has it for a
/// file that is not there.
[[nodiscard]] tq::Ref<Document> open(const std::string& path, tq::Ref<tq::Error>* error) {
  if (path != "/dev/null") return openDrawing(path, error).document;
  return tq::makeRef<Document>(nullptr, Document::Page{{}, {}, tq::String::of("")},
                               tq::makeRef<Group>(Node::Traits(), tq::Array::array()),
                               tq::Dictionary::dictionary());
}

Outcome diff(const Options& options) {
  tq::Ref<tq::Error> error;
  const tq::Ref<Document> oldDrawing = open(options.oldDrawing, &error);
  if (!oldDrawing) return reportTrouble(error->localizedDescription());
  const tq::Ref<Document> newDrawing = open(options.newDrawing, &error);
  if (!newDrawing) return reportTrouble(error->localizedDescription());
  const std::vector<Difference> differences = differencesOf(*oldDrawing, *newDrawing);
  if (options.asJSON) {
    printJSON(differences);
  } else {
    printText(differences);
  }
  return differences.empty() ? Outcome::fine : Outcome::different;
}

}  // namespace

void addDiffCommand(CLI::App& app, Outcome& outcome) {
  auto options = std::make_shared<Options>();
  CLI::App* command = app.add_subcommand("diff", "what differs between two versions of a drawing");
  command->add_option("old", options->oldDrawing, "a .tqdoc or .svg file, or /dev/null")
      ->required();
  command->add_option("new", options->newDrawing, "the other version")->required();
  command->add_flag("--json", options->asJSON, "tell it as an array of records");
  command->callback([options, &outcome] { outcome = diff(*options); });
}

}  // namespace tqdoc
