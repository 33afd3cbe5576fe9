#include <TQFoundation/objects/detail/LibraryClasses.h>

#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/Data.h>
#include <TQFoundation/objects/Date.h>
#include <TQFoundation/objects/Dictionary.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/Null.h>
#include <TQFoundation/objects/Number.h>
#include <TQFoundation/objects/Set.h>
#include <TQFoundation/objects/String.h>
#include <TQFoundation/objects/URL.h>
#include <TQFoundation/objects/UUID.h>
#include <TQFoundation/objects/Value.h>

namespace tq::detail {
namespace {

template <class T>
constexpr NamedClass named() noexcept {
  return {classOf<T>.codingName(), &classOf<T>};
}

constexpr NamedClass kLibraryClasses[] = {
    named<Array>(),
    named<Data>(),
    named<Date>(),
    named<Dictionary>(),
    named<Error>(),
    named<MutableArray>(),
    named<MutableData>(),
    named<MutableDictionary>(),
    named<Null>(),
    named<Number>(),
    named<Set>(),
    named<String>(),
    named<URL>(),
    named<UUID>(),
    named<Value>(),
    // Archives written elsewhere hold these too.
    {"NSMutableSet", &classOf<Set>},
    {"NSMutableString", &classOf<String>},
};

}  // namespace

std::span<const NamedClass> libraryClasses() noexcept { return kLibraryClasses; }

}  // namespace tq::detail
