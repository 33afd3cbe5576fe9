#pragma once

#include <unordered_set>

#include "support/Test.h"

namespace tq::test {

/// Explores every interleaving of a few threads that share Cells, on one real thread.
///
/// A thread is a closure whose decisions depend only on the results of its operations on cells. So
/// an exception can stop it at any operation, and running it again with the log of its earlier
/// results returns it to the same place. States (cells, logs, sleepers) that were explored before
/// are pruned. Steps are sequentially consistent: the model does not cover weaker memory orders.
class ThreadModel {
 public:
  using Thread = std::function<void()>;

  /// A check inside a thread that failed.
  struct Violation : std::runtime_error {
    using std::runtime_error::runtime_error;
  };

  ThreadModel() { current() = this; }
  ~ThreadModel() { current() = nullptr; }
  ThreadModel(const ThreadModel&) = delete;
  ThreadModel& operator=(const ThreadModel&) = delete;

  static ThreadModel*& current() {
    static ThreadModel* model = nullptr;
    return model;
  }

  std::size_t newCell(std::uint64_t value) {
    start_.cells.push_back(value);
    return start_.cells.size() - 1;
  }

  [[nodiscard]] std::size_t cellCount() const { return start_.cells.size(); }

  /// Destroys the cells from `first` on, before `end`: a later use is a violation.
  void destroyCells(std::size_t first, std::size_t end) {
    step([&](auto& cells) {
      for (std::size_t i = first; i < end; ++i) cells[i] = kDestroyed;
      return 0;
    });
  }
  static constexpr std::uint64_t kDestroyed = 0xdead'dead'dead'dead;

  /// @param atEnd  checks the cells after all threads have ended; it may use them like a thread
  /// @return the first fault: a violation, or threads that sleep forever; "" if there is none
  std::string explore(
      const std::vector<Thread>& threads, const Thread& atEnd = [] {}) try {
    outside_ = nullptr;
    start_.threads.assign(threads.size(), {});
    std::vector<State> open{start_};
    while (!open.empty()) {
      const State state = std::move(open.back());
      open.pop_back();
      bool anyoneRuns = false;
      bool everyoneEnded = true;
      for (std::size_t t = 0; t < threads.size(); ++t) {
        everyoneEnded &= state.threads[t].hasEnded;
        if (state.threads[t].hasEnded || state.threads[t].sleepsOn != kAwake) continue;
        anyoneRuns = true;
        choices_ = 1;
        for (std::size_t choice = 0; choice < choices_; ++choice) {
          now_ = state;
          choice_ = choice;
          run(threads[t], t);
          if (seen_.insert(key(now_)).second) open.push_back(std::move(now_));
        }
      }
      if (everyoneEnded) {
        now_ = state;
        outside_ = &now_.cells;
        atEnd();
        outside_ = nullptr;
      } else if (!anyoneRuns) {
        return "threads sleep for ever";
      }
    }
    return {};
  } catch (const Violation& violation) {
    return violation.what();
  }

  [[nodiscard]] std::size_t stateCount() const { return seen_.size(); }

  /// Performs one operation of the running thread and returns its result, or the logged result.
  /// Before and after the exploration, operations are performed directly.
  template <class Operation>
  std::uint64_t step(Operation&& operation) {
    if (outside_ != nullptr) return static_cast<std::uint64_t>(operation(*outside_));
    std::vector<std::uint64_t>& log = now_.threads[self_].log;
    if (position_ < log.size()) return log[position_++];
    if (!mayStep_) throw Pause();
    mayStep_ = false;
    const auto answer = static_cast<std::uint64_t>(operation(now_.cells));
    log.push_back(answer);
    ++position_;
    return answer;
  }

  /// Sleeps while the cell holds `expected`.
  void wait(std::size_t cell, std::uint64_t expected) {
    step([&](auto& cells) {
      if (outside_ != nullptr) throw Violation("nobody is left to wake a sleeper");
      if (cells[cell] != expected) return 0;
      now_.threads[self_].sleepsOn = cell;  // the thread that wakes it adds to its log
      throw Pause();
    });
  }

  /// Wakes all sleepers, or one; each choice of the one is a branch.
  void wake(std::size_t cell, bool everybody) {
    step([&](auto&) {
      std::vector<ThreadState*> sleepers;
      for (ThreadState& thread : now_.threads) {
        if (thread.sleepsOn == cell) sleepers.push_back(&thread);
      }
      if (!everybody && !sleepers.empty()) {
        choices_ = sleepers.size();
        sleepers = {sleepers[choice_]};
      }
      for (ThreadState* sleeper : sleepers) {
        sleeper->sleepsOn = kAwake;
        sleeper->log.push_back(0);
      }
      return 0;
    });
  }

  [[nodiscard]] std::size_t self() const { return self_; }

 private:
  static constexpr std::size_t kAwake = ~std::size_t{0};

  struct ThreadState {
    std::vector<std::uint64_t> log;
    std::size_t sleepsOn = kAwake;
    bool hasEnded = false;
  };
  struct State {
    std::vector<std::uint64_t> cells;
    std::vector<ThreadState> threads;
  };
  struct Pause {};

  void run(const Thread& thread, std::size_t self) {
    self_ = self;
    position_ = 0;
    mayStep_ = true;
    try {
      thread();
      now_.threads[self].hasEnded = true;
    } catch (const Pause&) {
    }
  }

  static std::string key(const State& state) {
    std::string text;
    const auto add = [&](std::uint64_t value) {
      text.append(reinterpret_cast<const char*>(&value), sizeof value);
    };
    for (const std::uint64_t cell : state.cells) add(cell);
    for (const ThreadState& thread : state.threads) {
      add(thread.sleepsOn);
      add(thread.log.size());
      for (const std::uint64_t answer : thread.log) add(answer);
    }
    return text;
  }

  State start_;
  State now_;
  std::unordered_set<std::string> seen_;
  std::size_t self_ = 0;
  std::size_t position_ = 0;
  std::size_t choice_ = 0;
  std::size_t choices_ = 1;
  bool mayStep_ = false;
  std::vector<std::uint64_t>* outside_ = &start_.cells;  ///< where no thread runs: before and after
};

/// The model's std::atomic<T>.
template <class T>
class ModelCell {
 public:
  ModelCell(T value = {}) : index_(ThreadModel::current()->newCell(value)) {}
  ModelCell(const ModelCell&) = delete;
  ModelCell& operator=(const ModelCell&) = delete;

  using Order = std::memory_order;  // without effect
  T load(Order = {}) const {
    return change([](T old) { return old; });
  }
  void store(T value, Order = {}) { exchange(value); }
  T exchange(T value, Order = {}) {
    return change([&](T) { return value; });
  }
  T fetch_add(T amount, Order = {}) {
    return change([&](T old) { return static_cast<T>(old + amount); });
  }
  T fetch_sub(T amount, Order = {}) {
    return change([&](T old) { return static_cast<T>(old - amount); });
  }
  bool compare_exchange_strong(T& expected, T desired, Order = {}, Order = {}) {
    const T found = change([&](T old) { return old == expected ? desired : old; });
    return found == std::exchange(expected, found);
  }

  void wait(T expected) const { ThreadModel::current()->wait(index_, expected); }
  void wake(bool everybody) const { ThreadModel::current()->wake(index_, everybody); }

 private:
  using Gone = ThreadModel::Violation;

  template <class Change>
  T change(Change&& next) const {
    return static_cast<T>(ThreadModel::current()->step([&](auto& cells) {
      if (cells[index_] == ThreadModel::kDestroyed) throw Gone("a destroyed cell is used");
      const T old = static_cast<T>(cells[index_]);
      cells[index_] = next(old);
      return old;
    }));
  }

  std::size_t index_;
};

/// The model's system calls, for the locks of this library.
struct ModelSystem {
  using Word = ModelCell<std::uint32_t>;
  using Word64 = ModelCell<std::uint64_t>;
  static constexpr int kSpins = 1;

  static inline std::array<std::optional<Word>, 2> bells;  // of the current model
  static Word& bell(const void*, std::uint64_t ticket) { return *bells[ticket % bells.size()]; }

  static std::uint32_t self() {
    return static_cast<std::uint32_t>(ThreadModel::current()->self()) + 1;
  }
  static void relax() {}
  static void wait(const Word& word, std::uint32_t expected) { word.wait(expected); }
  static void wake(const Word& word, int count) { word.wake(count > 1); }
  [[noreturn]] static void stop(const char* message) { throw ThreadModel::Violation(message); }
};

}  // namespace tq::test
