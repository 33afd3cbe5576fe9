// Values for the pretty printers. printed.gdb stops in `stop` and prints them.

#include <cstring>

#include <TQFoundation/TQFoundation.h>

using namespace tq;

namespace {

struct Page final : Subclass<Page> {
  static constexpr std::string_view className = "Page";
  Point at{1, 2};
};

[[gnu::noinline]] void stop(const void*) { asm volatile(""); }

void show() {
  const Ref<String> text = String::of("né \"x\"\n");
  const Ref<Object> surrogate = String::stringWithUTF16(std::u16string(1, u'\xD800'));
  const Ref<String> longText = String::of(std::string(5000, 'a'));
  const Ref<Object> none;
  const Ref<Number> numbers[] = {Number::numberWith(true), Number::numberWith(std::int8_t(-5)),
                                 Number::numberWith(-7),   Number::numberWith(~0UL),
                                 Number::numberWith(0.5F), Number::numberWith(-0.0)};
  const NumberValue plain = 42L;
  const double doubles[] = {1, 2.5, -3};
  const Ref<Array> packed = Array::arrayWithNumbers(doubles);
  const NumberValue mixedNumbers[] = {true, 2, 0.5};
  const Ref<Array> mixed = Array::arrayWithNumbers(mixedNumbers);
  const Ref<Array> boxed = Array::arrayWithNumbers(doubles);
  static_cast<void>(boxed->objectAtIndex(0));
  const std::vector<double> many(100000, 1);
  const Ref<Array> huge = Array::arrayWithNumbers(many);

  const Ref<MutableArray> array = MutableArray::array();
  const Ref<MutableDictionary> dictionary = MutableDictionary::dictionary();
  array->addObject(text);
  array->addObject(Null::null());
  array->addObject(Array::array());
  dictionary->setObject(array, "list");
  dictionary->setObject(Number::numberWith(1L), Number::numberWith(2L));
  const Ref<Object> fixed = dictionary->copy();
  const Ref<MutableArray> cyclic = MutableArray::array();
  for (int i = 0; i < 3; ++i) cyclic->addObject(cyclic);

  const Ref<Set> set = Set::setWithObjects({String::of("a"), String::of("b")});
  const Ref<Data> data = Data::dataWithBytes("\x01\x02\x03\x04\x05");
  const Ref<Date> date = Date::dateWithTimeIntervalSinceReferenceDate(86401.5);
  const Ref<Value> values[] = {Value::valueWithPoint({1, 2}), Value::valueWithSize({3, 4.5}),
                               Value::valueWithRect({1, 2, 3, 4}), Value::valueWithRange({5, 6})};
  const Ref<UUID> uuid = UUID::UUIDWithBytes({0x68, 0x75, 0x3A});
  const Ref<Error> error = Error::errorWithDomain(POSIXErrorDomain, 2, "gone");

  const Ref<Page> page = makeRef<Page>();
  const Weak<Page> weak = page;
  const Weak<Page> gone = makeRef<Page>();
  const Weak<Page> nobody;
  const Object& object = *array;
  const Held<Page> held(page, page.get());

  const Rect rects[] = {{1, 2, -3, 4}, RectNull, RectZero};
  const Vector vector{1, -0.5};
  const AffineTransform transforms[] = {AffineTransformIdentity, {1, 0, 0, 2, 3.5, 0}};
  const Ref<TQRect> boxedRect = TQRect::initWithRect({1, 2, 3, 4});

  // References before construction, or after their object was destroyed.
  alignas(Ref<Object>) unsigned char garbage[3][sizeof(Ref<Object>)];
  const std::uintptr_t wild = 0x1234;
  static const std::uint64_t zeros[8] = {};
  static const std::uint64_t ones[8] = {~0ULL, ~0ULL, ~0ULL, ~0ULL, ~0ULL, ~0ULL, ~0ULL, ~0ULL};
  const auto* const zeroed = &zeros;
  const auto* const filled = &ones;
  std::memcpy(garbage[0], &wild, sizeof wild);
  std::memcpy(garbage[1], &zeroed, sizeof zeroed);
  std::memcpy(garbage[2], &filled, sizeof filled);
  const auto& bad = reinterpret_cast<const Ref<Object>(&)[3]>(garbage);
  stop(&bad);
  cyclic->removeAllObjects();
}

}  // namespace

int main() { show(); }
