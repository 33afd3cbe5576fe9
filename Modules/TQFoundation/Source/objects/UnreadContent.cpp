#include <TQFoundation/objects/UnreadContent.h>

#include <algorithm>
#include <utility>

namespace tq {

void UnreadContent::add(Kind kind, std::string_view className, std::string_view member,
                        const std::function<std::string()>& path, std::uint64_t count) {
  count_ += count;
  const auto isSame = [&](const Entry& entry) {
    return entry.kind == kind && entry.className == className && entry.member == member;
  };
  const auto listed = std::ranges::find_if(entries_, isSame);
  if (listed != entries_.end()) {
    listed->count += count;
    return;
  }
  if (entries_.size() == kMostEntries) return;
  std::string first = path();
  const std::size_t byteCount = className.size() + member.size() + first.size();
  if (byteCount > kMostBytes - byteCount_) return;
  entries_.push_back({kind, std::string(className), std::string(member), std::move(first), count});
  byteCount_ += byteCount;
}

}  // namespace tq
