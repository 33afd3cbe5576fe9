#pragma once

/// @file TimerHeap.h
/// A priority queue of timers by due time, with removal of any timer.

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tq {
class Timer;
}

namespace tq::detail {

/// A timer's position in the heap; a member of the timer.
struct TimerSlot {
  static constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);
  std::size_t position = kNowhere;
};

/// A binary heap that stores each timer's position in its slot. Timers with equal due times leave
/// in the order of insertion. push() and remove() take O(log n). The heap stores the due times, so
/// comparisons do not access the timers.
class TimerHeap {
 public:
  [[nodiscard]] bool isEmpty() const noexcept { return entries_.empty(); }
  [[nodiscard]] std::int64_t earliest() const noexcept { return entries_.front().due; }
  [[nodiscard]] Timer* top() const noexcept { return entries_.front().timer; }

  /// @throws std::bad_alloc, with the heap unchanged
  void push(std::int64_t due, Timer& timer, TimerSlot& slot) {
    entries_.push_back({due, nextOrder_++, &timer, &slot});
    rise(entries_.size() - 1, entries_.back());
  }

  void remove(TimerSlot& slot) noexcept {
    const std::size_t hole = slot.position;
    slot.position = TimerSlot::kNowhere;
    const Entry last = entries_.back();
    entries_.pop_back();
    if (hole == entries_.size()) return;
    if (hole != 0 && last < entries_[parent(hole)]) {
      rise(hole, last);
    } else {
      sink(hole, last);
    }
  }

 private:
  struct Entry {
    std::int64_t due;
    std::uint64_t order;
    Timer* timer;
    TimerSlot* slot;

    bool operator<(const Entry& other) const noexcept {
      return due != other.due ? due < other.due : order < other.order;
    }
  };

  static std::size_t parent(std::size_t i) noexcept { return (i - 1) / 2; }

  void place(std::size_t i, const Entry& entry) noexcept {
    entries_[i] = entry;
    entry.slot->position = i;
  }

  void rise(std::size_t i, Entry entry) noexcept {
    for (; i != 0 && entry < entries_[parent(i)]; i = parent(i)) place(i, entries_[parent(i)]);
    place(i, entry);
  }

  void sink(std::size_t i, Entry entry) noexcept {
    for (std::size_t child; (child = 2 * i + 1) < entries_.size(); i = child) {
      if (child + 1 < entries_.size() && entries_[child + 1] < entries_[child]) ++child;
      if (!(entries_[child] < entry)) break;
      place(i, entries_[child]);
    }
    place(i, entry);
  }

  std::vector<Entry> entries_;
  std::uint64_t nextOrder_ = 0;
};

}  // namespace tq::detail
