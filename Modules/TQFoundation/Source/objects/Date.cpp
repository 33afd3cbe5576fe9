#include <TQFoundation/objects/Date.h>

#include <TQFoundation/objects/Number.h>

namespace tq {

Ref<Date> Date::dateWithTimeIntervalSinceReferenceDate(double seconds) {
  return Ref<Date>::adopt(new Date(seconds));
}

bool Date::isEqual(const Object& other) const {
  return other.kind() == ObjectKind::date &&
         NumberValue(seconds_).isEqual(static_cast<const Date&>(other).seconds_);
}

std::size_t Date::hash() const { return NumberValue(seconds_).hash(); }

std::string Date::description() const { return NumberValue(seconds_).text() + " s"; }

}  // namespace tq
