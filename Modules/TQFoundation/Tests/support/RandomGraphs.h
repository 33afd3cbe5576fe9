#pragma once

#include <bit>

#include "support/Objects.h"
#include "support/Test.h"

namespace tq::test {

/// Random object graphs of all classes that archives can store.
class RandomGraphs {
 public:
  /// Creates an object of a host's class around another object, or around null.
  using Host = std::function<Ref<Object>(double real, std::int64_t whole, Ref<Object> child)>;

  /// @param isKeyed  for keyed archives: parts may be shared, keys may be of any class, sets are
  ///                included
  RandomGraphs(unsigned seed, Host host, bool isKeyed = false)
      : random_(seed), host_(std::move(host)), isKeyed_(isKeyed) {}

  Ref<Object> object(int depth) {
    if (isKeyed_ && !made_.empty() && below(4) == 0) return made_[below(made_.size())];
    Ref<Object> object = depth > 0 && below(2) == 0 ? container(depth - 1) : leaf();
    if (isKeyed_) made_.push_back(object);
    return object;
  }

 private:
  std::size_t below(std::size_t count) { return random_() % count; }

  Ref<Object> leaf() {
    const auto kind = below(5);
    if (kind == 0) return Number::numberWith(number());
    if (kind == 1) return string();
    if (kind == 3) return single();
    if (kind == 4) return packed();
    // Sometimes longer than the block that is encoded at once.
    return Data::dataWithBytes(
        std::string(below(50) == 0 ? 20'000 : below(40), static_cast<char>(random_())));
  }

  Ref<Object> container(int depth) {
    const auto kind = below(isKeyed_ ? 5 : 4);
    if (kind == 1) return array(depth);
    if (kind == 4) return Set::setWithObjects({single(), string(), string()});
    if (kind != 0) return dictionary(depth);
    return host_(real(), static_cast<std::int64_t>(random_()),
                 below(4) == 0 ? nullptr : object(depth));
  }

  /// Without powers of ten: the second encoding of 1e23 and of some others differs from the first.
  double real() {
    const auto bits = random_();
    const double reals[] = {
        std::bit_cast<double>(bits), static_cast<double>(bits % 20'000) / 100,
        std::ldexp(static_cast<double>(bits >> 11), -static_cast<int>(bits % 110)),
        std::copysign(std::numeric_limits<double>::infinity(), static_cast<int>(bits)),
        static_cast<double>(static_cast<int>(bits))};
    const double value = reals[below(5)];
    return NumberValue(std::fabs(value)).text().starts_with("1e") ? 0.5 : value;
  }

  NumberValue number() {
    const auto bits = random_();
    const NumberValue numbers[] = {
        bits % 2 == 0,
        static_cast<std::int8_t>(bits),
        static_cast<std::int16_t>(bits),
        static_cast<std::int32_t>(bits),
        static_cast<std::int64_t>(bits),
        bits,
        static_cast<float>(bits % 10'000) / 4,  // others are read as doubles with more digits
        real()};
    return numbers[below(8)];
  }

  Ref<String> string() {
    std::u16string units;
    for (auto n = below(12); n > 0; --n) {
      const char16_t ranges[] = {u' ', 0x00, 0x80, 0x2000, 0xD800, 0xDC00, 0xFFF0};
      units += static_cast<char16_t>(ranges[below(4) == 0 ? below(7) : below(2)] + below(96));
      if (below(8) == 0) units += u"\U0001F600";
    }
    return String::stringWithUTF16(units);
  }

  Ref<Object> single() {
    const Ref<Object> objects[] = {
        Null::null(),
        String::stringWithUTF16(u"a\xD800z"),
        Value::valueWithPoint({real(), real()}),
        Value::valueWithSize({real(), real()}),
        Value::valueWithRect({real(), real(), real(), real()}),
        Value::valueWithRange({random_() >> 1, below(9)}),
        Value::valueWith("{?=dd}", Point{real(), 1}),
        Date::dateWithTimeIntervalSinceReferenceDate(static_cast<int>(random_()))};
    return objects[below(8)];
  }

  Ref<Object> packed() {
    std::vector<NumberValue> numbers(1 + below(9));
    const auto kind = below(3);
    for (auto& n : numbers) n = kind == 0 ? number() : kind == 1 ? NumberValue(real()) : random_();
    return Array::arrayWithNumbers(numbers);
  }

  Ref<Object> array(int depth) {
    std::vector<Ref<Object>> elements(below(6));
    for (auto& element : elements) element = object(depth);
    const Ref<Array> array = Array::arrayWithObjects(elements);
    return isKeyed_ && below(2) == 0 ? MutableArray::arrayWithArray(*array) : array;
  }

  Ref<Object> dictionary(int depth) {
    const Ref<MutableDictionary> dictionary = MutableDictionary::dictionary();
    const auto count = below(4) == 0 ? below(41) : below(5);
    for (std::size_t i = 0; i < count; ++i) {
      const std::string text =
          (below(3) == 0 ? "" : "k") + std::to_string(below(4) == 0 ? below(1000) : i);
      Ref<Object> key = String::of(text);
      if (isKeyed_ && below(4) == 0) key = single();
      dictionary->setObject(object(count > 8 ? 0 : depth), key);
    }
    return below(2) == 0 ? dictionary->copy() : Ref<Object>(dictionary);
  }

  std::mt19937_64 random_;
  const Host host_;
  const bool isKeyed_;
  std::vector<Ref<Object>> made_;
};

}  // namespace tq::test
