#include "Compare/Browser.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <span>
#include <string_view>
#include <system_error>

#include "Files/Drawing.h"

namespace tqdoc {
namespace {

/// A new folder that is removed with its content.
class TemporaryFolder {
 public:
  TemporaryFolder() : path_(std::filesystem::temp_directory_path() / "compare-XXXXXX") {
    if (mkdtemp(path_.data()) == nullptr) throw std::system_error(errno, std::generic_category());
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  [[nodiscard]] std::string file(const char* name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

}  // namespace

std::optional<Image> drawnByBrowser(const std::string& program, const std::string& file,
                                    tq::Size page) {
  const TemporaryFolder folder;
  tq::Ref<const tq::Data> drawing = readFile(file, nullptr);
  if (drawing) drawing = archiveText(drawing, file, nullptr);
  if (!drawing || !saveFile(folder.file("drawing.svg"), drawing->bytes(), nullptr)) {
    return std::nullopt;
  }
  char html[200];
  std::snprintf(html, sizeof html,
                "<body style='margin: 0'><img src='drawing.svg' style='display: block; "
                "width: %.4fpx; height: %.4fpx'>",
                page.width, page.height);
  const std::string_view text = html;
  if (!saveFile(folder.file("page.html"), std::as_bytes(std::span(text)), nullptr)) {
    return std::nullopt;
  }
  const int width = pixelsAcross(page.width), height = pixelsAcross(page.height);
  constexpr int kFrame = 200;  // of the window: the page may be smaller
  constexpr double kSeconds = 60;
  tq::ExternalTool tool;
  tool.program = program;
  tool.arguments = {
      "--headless",
      "--no-sandbox",
      "--disable-gpu",
      "--no-first-run",
      "--disable-background-networking",
      "--hide-scrollbars",
      "--default-background-color=00000000",
      "--user-data-dir=" + folder.file("profile"),
      "--window-size=" + std::to_string(width + kFrame) + "," + std::to_string(height + kFrame),
      "--screenshot=" + folder.file("page.png"),
      "file://" + folder.file("page.html")};
  tool.timeoutSeconds = kSeconds;
  if (!tq::runExternalTool(tool)) return std::nullopt;
  const auto png = readFile(folder.file("page.png"), nullptr);
  const auto screen = png ? decodedImage(*png) : std::nullopt;
  if (!screen || screen->width < width || screen->height < height) return std::nullopt;
  return screen->topLeft(width, height);
}

}  // namespace tqdoc
