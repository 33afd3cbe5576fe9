#include "Commands/DrawingPairs.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <string_view>
#include <utility>

#include "Files/FileList.h"

namespace tqdoc {
namespace {

namespace fs = std::filesystem;

/// Runs git. Returns its output, or null with its message.
[[nodiscard]] tq::Ref<tq::Data> git(std::vector<std::string> arguments, tq::Ref<tq::Error>* error) {
  tq::ExternalTool tool{"git", std::move(arguments)};
  tool.mostOutputBytes = kFileLimit;
  const auto result = tq::runExternalTool(tool, error);
  if (!result) return nullptr;
  if (result->exitStatus == 0) return result->output;
  std::string_view message = result->errorOutput->view();
  message = message.substr(0, message.find_first_of("\n", message.find_first_not_of('\n')));
  tq::setOutError(error, errorWith("git: " + std::string(message)));
  return nullptr;
}

/// Takes the text up to the next `end` from the front of `rest`.
[[nodiscard]] std::string taken(std::string_view& rest, char end) {
  const std::size_t length = std::min(rest.find(end), rest.size());
  std::string text(rest.substr(0, length));
  rest.remove_prefix(std::min(length + 1, rest.size()));
  return text;
}

/// Returns a version by its path in the repository and the name of its object. Git gives no name,
/// but zeros, for a file that is not there, and for one in the working tree.
[[nodiscard]] DrawingVersion versionOf(const std::string& path, const std::string& blob,
                                       bool isThere, const std::string& workingTree) {
  if (!isThere) return {std::string(kNoDrawing), ""};
  if (blob.find_first_not_of('0') == blob.npos) return {workingTree + '/' + path, ""};
  return {path, blob};
}

}  // namespace

std::optional<std::vector<DrawingPair>> pairsOfDirectories(const std::string& oldDirectory,
                                                           const std::string& newDirectory,
                                                           tq::Ref<tq::Error>* error) {
  std::map<std::string, DrawingPair> pairs;
  const auto add = [&](const std::string& directory, DrawingVersion DrawingPair::*version) {
    FileList list = listFiles({directory});
    for (std::string& file : list.files) {
      const std::string name = fs::path(file).lexically_relative(directory);
      const DrawingVersion none{std::string(kNoDrawing), ""};
      DrawingPair& pair = pairs.try_emplace(name, DrawingPair{name, none, none}).first->second;
      (pair.*version).path = std::move(file);
    }
    if (!list.faults.empty()) tq::setOutError(error, errorWith(list.faults.front()));
    return list.faults.empty();
  };
  if (!add(oldDirectory, &DrawingPair::oldVersion)) return std::nullopt;
  if (!add(newDirectory, &DrawingPair::newVersion)) return std::nullopt;
  std::vector<DrawingPair> all;
  for (auto& [name, pair] : pairs) all.push_back(std::move(pair));
  return all;
}

std::optional<std::vector<DrawingPair>> pairsOfRange(const std::string& range,
                                                     tq::Ref<tq::Error>* error) {
  if (range.starts_with('-')) {
    tq::setOutError(error, errorWith(range + ": not a range of revisions"));
    return std::nullopt;
  }
  const auto top = git({"rev-parse", "--show-toplevel"}, error);
  if (!top) return std::nullopt;
  std::string_view topText = top->view();
  const std::string workingTree = taken(topText, '\n');
  const auto listed = git({"diff", "--raw", "-z", "--no-abbrev", "--no-relative", "--find-renames",
                           range, "--", ":(top)*.svg", ":(top)*.svgz", ":(top)*.tqdoc"},
                          error);
  if (!listed) return std::nullopt;
  // ":100644 100644 <object> <object> M", a zero byte, the path and a zero byte. The path of a
  // renamed or copied file is followed by its new one.
  std::vector<DrawingPair> pairs;
  for (std::string_view rest = listed->view(); rest.starts_with(':');) {
    std::string fields[5];
    for (std::string& field : fields) field = taken(rest, &field == &fields[4] ? '\0' : ' ');
    const auto& [oldMode, newMode, oldBlob, newBlob, status] = fields;
    const std::string oldPath = taken(rest, '\0');
    const bool isRenamed = status.starts_with('R') || status.starts_with('C');
    const std::string newPath = isRenamed ? taken(rest, '\0') : oldPath;
    pairs.push_back({isRenamed ? oldPath + " -> " + newPath : newPath,
                     versionOf(oldPath, oldBlob, !status.starts_with('A'), workingTree),
                     versionOf(newPath, newBlob, !status.starts_with('D'), workingTree)});
  }
  return pairs;
}

SvgDrawing openVersion(const DrawingVersion& version, tq::Ref<tq::Error>* error) {
  if (version.path == kNoDrawing) {
    return {tq::makeRef<Document>(nullptr, Document::Page{{}, {}, tq::String::of("")},
                                  tq::makeRef<Group>(Node::Traits(), tq::Array::array()),
                                  tq::Dictionary::dictionary()),
            {}};
  }
  if (version.blob.empty()) return openDrawing(version.path, error);
  return openDrawing(git({"cat-file", "blob", version.blob}, error), version.path, error);
}

}  // namespace tqdoc
