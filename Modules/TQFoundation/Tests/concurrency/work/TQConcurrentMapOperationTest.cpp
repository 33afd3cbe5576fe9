#include <TQFoundation/concurrency/work/TQConcurrentMapOperation.h>

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <stdexcept>

#include <TQFoundation/objects/Exception.h>

#include "support/Numbers.h"

namespace tq {
namespace {

using test::numbers;
using test::valueOf;

struct Outcome {
  Ref<Array> results;
  std::exception_ptr failure;
};

Outcome mapped(const Array& array, std::ptrdiff_t maximum, const ArrayMapBlock& block) {
  std::promise<Outcome> promise;
  mapWithMaxConcurrencyCount(array, maximum, block,
                             [&](Ref<Array> results, std::exception_ptr failure) {
                               promise.set_value({std::move(results), std::move(failure)});
                             });
  return promise.get_future().get();
}

TEST(TQConcurrentMapOperation, CompletesOnceWithTheAnswersInOrder) {
  for (const std::ptrdiff_t maximum : {-3, 0, 1, 2, 50}) {
    for (const int count : {0, 1, 500}) {
      std::atomic<int> running{0}, most{0};
      const auto array = numbers(count);
      const auto [results, failure] = mapped(*array, maximum, [&](Object& object) -> Ref<Object> {
        const int now = ++running;
        if (now > most) most = now;
        Ref<Object> answer = Number::numberWith(2 * valueOf(object));
        --running;
        return answer;
      });
      ASSERT_NE(results, nullptr);
      EXPECT_TRUE(results->isEqual(*map(*array, [](Object& object) -> Ref<Object> {
        return Number::numberWith(2 * valueOf(object));
      })));
      EXPECT_EQ(failure, nullptr);
      EXPECT_TRUE(maximum <= 0 || most <= maximum) << most;
    }
  }
}

TEST(TQConcurrentMapOperation, FailuresReachTheCompletion) {
  const auto array = numbers(100);
  const auto thrown = mapped(*array, 4, [](Object& object) -> Ref<Object> {
    if (valueOf(object) >= 40) throw std::runtime_error(std::to_string(valueOf(object)));
    return share(object);
  });
  EXPECT_EQ(thrown.results, nullptr);
  try {
    std::rethrow_exception(thrown.failure);
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "40") << "the first one in order";
  }
  const auto none = mapped(*array, 4, [](Object&) { return nullptr; });
  EXPECT_THROW(std::rethrow_exception(none.failure), Exception);
  const auto ignore = [](Ref<Array>) {};
  EXPECT_THROW(mapWithMaxConcurrencyCount(*array, 1, nullptr, ignore), Exception);
  EXPECT_THROW(mapWithMaxConcurrencyCount(
                   *array, 1, [](Object& o) { return share(o); }, ArrayMapCompletion()),
               Exception);
  std::promise<std::size_t> count;
  mapWithMaxConcurrencyCount(
      *array, 0, [](Object& o) { return share(o); },
      [&](Ref<Array> results) { count.set_value(results->count()); });
  EXPECT_EQ(count.get_future().get(), 100u);
}

}  // namespace
}  // namespace tq
