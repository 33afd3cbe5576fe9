#include "History.h"

#include <utility>

namespace sketch {

void History::add(std::string name, const Drawing& before, const Drawing& after) {
  TreeEdit edit = treeEditTo(before.document->root(), after.document->root());
  if (edit.isEmpty()) return;
  done_.push({std::move(name), std::move(edit), before.selection, after.selection});
  undone_.removeAll();
}

std::optional<Drawing> History::undo(const Drawing& now) {
  auto step = done_.pop();
  if (!step) return std::nullopt;
  Drawing before{now.document->withRoot(reverted(step->edit, now.document->root())), step->before};
  undone_.push(*std::move(step));
  return before;
}

std::optional<Drawing> History::redo(const Drawing& now) {
  auto step = undone_.pop();
  if (!step) return std::nullopt;
  Drawing after{now.document->withRoot(applied(step->edit, now.document->root())), step->after};
  done_.push(*std::move(step));
  return after;
}

}  // namespace sketch
