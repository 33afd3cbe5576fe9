#include "Thumbnails.h"

#include <exception>
#include <utility>

#include "Files/Drawing.h"
#include "Files/FileList.h"

namespace sketch {

namespace {

/// Returns null if the drawing cannot be drawn.
[[nodiscard]] std::shared_ptr<tqdoc::Canvas> thumbnailOf(const tqdoc::Document& document,
                                                         int side) {
  try {
    auto picture = std::make_shared<tqdoc::Canvas>(side, side);
    const tq::Rect all(0, 0, side, side);
    picture->fill(all, {1, 1, 1});
    picture->draw(document, all);
    return picture;
  } catch (const std::exception&) {
    return nullptr;
  }
}

}  // namespace

/// Draws one file and reports to the main thread.
class Thumbnails::Drawer final : public tq::Subclass<Drawer, tq::Operation> {
 public:
  static constexpr std::string_view className = "Drawer";

  Drawer(Thumbnails& owner, std::size_t batch, Path file)
      : owner_(&owner), batch_(batch), file_(std::move(file)) {}

  void main() override {
    std::shared_ptr<tqdoc::Canvas> picture;
    if (const auto document = tqdoc::openDrawing(file_.native(), nullptr).document) {
      if (isCancelled()) return;
      picture = thumbnailOf(*document, kSide);
    }
    tq::mainQueueAsync([owner = owner_, batch = batch_, file = file_, picture] {
      if (const auto thumbnails = owner.lock()) thumbnails->finish(batch, file, picture.get());
    });
  }

 private:
  const tq::Weak<Thumbnails> owner_;
  const std::size_t batch_;
  const Path file_;
};

Thumbnails::Thumbnails(Handler handler) : handler_(std::move(handler)) {
  queue_->setName("thumbnails");
}

void Thumbnails::draw(const Path& folder) {
  cancel();
  auto files = tqdoc::listFiles({folder.native()}).files;
  if (files.size() > kMostFiles) files.resize(kMostFiles);
  batch_ = {batch_.number, 0, files.size()};
  for (const std::string& file : files) {
    queue_->addOperation(tq::makeRef<Drawer>(*this, batch_.number, file));
  }
  handler_.didProgress(0, batch_.total);
}

void Thumbnails::cancel() {
  queue_->cancelAllOperations();
  batch_ = {batch_.number + 1, 0, 0};
  handler_.didProgress(0, 0);
}

void Thumbnails::finish(std::size_t batch, const Path& file, const tqdoc::Canvas* picture) {
  if (batch != batch_.number) return;
  if (picture != nullptr) handler_.didDraw(file, *picture);
  handler_.didProgress(++batch_.done, batch_.total);
}

}  // namespace sketch
