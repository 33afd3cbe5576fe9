#include <TQFoundation/serialisation/TQJSONCoding.h>

#include <TQFoundation/objects/Class.h>
#include <TQFoundation/serialisation/TQJSONEncoder.h>
#include <TQFoundation/serialisation/detail/JSONValueForms.h>

namespace tq {
namespace {

/// The steps of objects whose class does not define them.
constexpr JSONCoding kDefaults = {
    .replacementObject = [](const Object& object,
                            TQJSONEncoder&) { return Ref<Object>(const_cast<Object*>(&object)); },
    .startEncodingObject =
        [](const Object& object, TQJSONEncoder& encoder) {
          encoder.write("{");
          encodeClassInfoForJSON(object, encoder);
        },
    .finishEncodingObject = [](const Object&, TQJSONEncoder& encoder) { encoder.write("}"); },
    .encodeClassInfo =
        [](const Object& object, TQJSONEncoder& encoder) {
          encoder.write("\"_class\":\"");
          encoder.write(encoder.archiveNameOf(object.classForCoder()));
          encoder.write("\"");
        },
    .encodeAsRAWArchive = detail::encodeKeyedArchive,
    .encodeAsKey = detail::refuseAsKey,
};

/// Returns a step of an object: that of its class, else that of its value class, else the default.
template <auto step>
auto stepOf(const Object& object) noexcept {
  if (const auto own = object.objectClass().json().*step) return own;
  if (const auto form = detail::jsonFormOf(object.kind()).*step) return form;
  return kDefaults.*step;
}

}  // namespace

Ref<Object> replacementObjectForJSONEncoder(const Object& object, TQJSONEncoder& encoder) {
  return stepOf<&JSONCoding::replacementObject>(object)(object, encoder);
}

void startEncodingObject(const Object& object, TQJSONEncoder& encoder) {
  stepOf<&JSONCoding::startEncodingObject>(object)(object, encoder);
}

void finishEncodingObject(const Object& object, TQJSONEncoder& encoder) {
  stepOf<&JSONCoding::finishEncodingObject>(object)(object, encoder);
}

void encodeClassInfoForJSON(const Object& object, TQJSONEncoder& encoder) {
  stepOf<&JSONCoding::encodeClassInfo>(object)(object, encoder);
}

void encodeAsRAWArchive(const Object& object, TQJSONEncoder& encoder) {
  stepOf<&JSONCoding::encodeAsRAWArchive>(object)(object, encoder);
}

void encodeAsKey(const Object& object, TQJSONEncoder& encoder) {
  stepOf<&JSONCoding::encodeAsKey>(object)(object, encoder);
}

}  // namespace tq
