#include <TQFoundation/serialisation/detail/JSONValueForms.h>

#include <TQFoundation/objects/Dictionary.h>
#include <TQFoundation/objects/String.h>
#include <TQFoundation/objects/Value.h>
#include <TQFoundation/serialisation/TQJSONDecoder.h>

namespace tq::detail {
namespace {

Ref<Object> decodeDictionary(TQJSONDecoder& decoder) { return decoder.decodeMembers(); }

Ref<Object> decodeBoxedValue(TQJSONDecoder& decoder) {
  const Ref<String> type = refCast<String>(decoder.decodeObjectForKey("type"));
  const std::string_view name = type ? type->view() : "";
  if (name == "point") return Value::valueWithPoint(decoder.decodePointForKey("value"));
  if (name == "size") return Value::valueWithSize(decoder.decodeSizeForKey("value"));
  if (name == "rect") return Value::valueWithRect(decoder.decodeRectForKey("value"));
  return Value::valueWithBytes({}, {});
}

constexpr struct {
  const Class* theClass;
  JSONCoding form;
} kForms[] = {
    {&classOf<Dictionary>, {.initWithJSONDecoder = decodeDictionary}},
    {&classOf<Value>, {.initWithJSONDecoder = decodeBoxedValue}},
};

constexpr JSONCoding kNoForm;

}  // namespace

const JSONCoding& jsonFormOf(const Class& theClass) noexcept {
  for (const auto& [formClass, form] : kForms) {
    if (formClass == &theClass) return form;
  }
  return kNoForm;
}

}  // namespace tq::detail
