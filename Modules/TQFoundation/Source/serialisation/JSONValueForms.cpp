#include <TQFoundation/serialisation/detail/JSONValueForms.h>

#include <algorithm>
#include <atomic>
#include <span>
#include <string>

#include <TQFoundation/base/NumberText.h>
#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/Data.h>
#include <TQFoundation/objects/Date.h>
#include <TQFoundation/objects/Dictionary.h>
#include <TQFoundation/objects/Exception.h>
#include <TQFoundation/objects/Null.h>
#include <TQFoundation/objects/Value.h>
#include <TQFoundation/platform/archive/KeyedArchiver.h>
#include <TQFoundation/platform/log/PlainLog.h>
#include <TQFoundation/platform/text/Base64.h>
#include <TQFoundation/serialisation/TQJSONDataEncoder.h>
#include <TQFoundation/serialisation/TQJSONDecoder.h>

namespace tq::detail {
namespace {

/// Writes `{"key":"base64"}`.
void encodeBase64Record(std::string_view key, std::span<const std::byte> bytes,
                        TQJSONEncoder& encoder) {
  constexpr std::size_t kChunk = std::size_t{3} * 4096;  // a multiple of 3 needs no padding
  encoder.write("{\"");
  encoder.write(key);
  encoder.write("\":\"");
  std::string text;
  while (!bytes.empty()) {
    const auto chunk = bytes.first(std::min(kChunk, bytes.size()));
    bytes = bytes.subspan(chunk.size());
    text = base64FromBytes(chunk);
    for (std::string_view rest = text; !rest.empty();) {
      const std::size_t slash = std::min(rest.find('/'), rest.size());
      encoder.write(rest.substr(0, slash));
      if (slash != rest.size()) encoder.write("\\/");
      rest.remove_prefix(std::min(slash + 1, rest.size()));
    }
  }
  encoder.write("\"}");
}

[[noreturn]] void raiseChanged() {
  throw Exception(InvalidArgumentException, "A container was changed while it was encoded.");
}

/// To be called after each call of the host while a container is being written.
inline void requireUnchanged(ChangeWatch container) {
  if (container.hasChanged()) [[unlikely]]
    raiseChanged();
}

// MARK: strings, numbers, null

void encodeAtomOrArchive(const Object& object, TQJSONEncoder& encoder) {
  if (!encodeAtom(object, encoder)) encodeKeyedArchive(object, encoder);
}

/// An ill-formed string would be a keyed archive, which is not a valid key.
void encodeStringKey(const Object& object, TQJSONEncoder& encoder) {
  if (!encodeAtom(object, encoder)) return refuseAsKey(object, encoder);
  // Last, because the sink of the log is the host's and may release the key.
  const std::string_view key = static_cast<const String&>(object).view();
  if (isReservedKey(key)) logReservedKey(key);
}

void encodeNumberKey(const Object& object, TQJSONEncoder& encoder) {
  encoder.encodeText(static_cast<const Number&>(object).value().text());
}

// MARK: data

void encodeData(const Object& object, TQJSONEncoder& encoder) {
  const auto* sink = objectCast<TQJSONDataEncoder>(&encoder);
  if (sink != nullptr && sink->data().get() == &object) {
    throw Exception(InvalidArgumentException,
                    "The archive cannot contain the data it is written to.");
  }
  encodeBase64Record(TQJSONRawDataKey, static_cast<const Data&>(object).bytes(), encoder);
}

// MARK: boxed values

/// Writes `{<class record>,"type":"<type>","value":"{a, b…}"}`.
void encodeBoxedNumbers(const Value& value, std::string_view type, std::span<const double> numbers,
                        TQJSONEncoder& encoder) {
  startEncodingObject(value, encoder);
  encoder.write(",\"type\":\"");
  encoder.write(type);
  encoder.write("\",\"value\":\"");
  std::string_view separator = "{";
  for (const double number : numbers) {
    char text[kNumberTextCapacity];
    const char* end = writeDouble16(text, TQJSONClampedDouble(number));
    encoder.write(separator);
    encoder.write({text, end});
    separator = ", ";
  }
  encoder.write("}\"");
  finishEncodingObject(value, encoder);
}

void encodeBoxedValue(const Object& object, TQJSONEncoder& encoder) {
  const auto& value = static_cast<const Value&>(object);
  if (const auto point = value.pointValue()) {
    encodeBoxedNumbers(value, "point", {{point->x, point->y}}, encoder);
  } else if (const auto size = value.sizeValue()) {
    encodeBoxedNumbers(value, "size", {{size->width, size->height}}, encoder);
  } else if (const auto rect = value.rectValue()) {
    const double fields[] = {rect->origin.x, rect->origin.y, rect->size.width, rect->size.height};
    encodeBoxedNumbers(value, "rect", fields, encoder);
  } else {
    encodeKeyedArchive(value, encoder);
  }
}

Ref<Object> decodeBoxedValue(TQJSONDecoder& decoder) {
  const Ref<String> type = refCast<String>(decoder.decodeObjectForKey("type"));
  const std::string_view name = type ? type->view() : "";
  if (name == "point") return Value::valueWithPoint(decoder.decodePointForKey("value"));
  if (name == "size") return Value::valueWithSize(decoder.decodeSizeForKey("value"));
  if (name == "rect") return Value::valueWithRect(decoder.decodeRectForKey("value"));
  return Value::valueWithBytes({}, {});
}

// MARK: arrays

void startArray(const Object&, TQJSONEncoder& encoder) { encoder.write("["); }
void finishArray(const Object&, TQJSONEncoder& encoder) { encoder.write("]"); }

void encodeArray(const Object& object, TQJSONEncoder& encoder) {
  const auto& array = static_cast<const Array&>(object);
  startEncodingObject(array, encoder);
  const ChangeWatch watch(array);
  const std::size_t count = array.count();
  for (std::size_t i = 0; i < count; ++i) {
    if (i != 0) encoder.write(",");
    if (array.isPacked()) {
      encoder.encodeNumber(array.numberAtIndex(i));
    } else {
      encoder.encodeObject(array.objectAtIndex(i));
      requireUnchanged(watch);
    }
  }
  finishEncodingObject(array, encoder);
}

// MARK: dictionaries

/// The key of a host may change the dictionary that holds it.
void encodeHostsKey(Ref<const Object> key, TQJSONEncoder& encoder) { encodeAsKey(*key, encoder); }

void encodeDictionary(const Object& object, TQJSONEncoder& encoder) {
  const auto& dictionary = static_cast<const Dictionary&>(object);
  const ChangeWatch watch(dictionary);
  const std::span<const Ref<Object>> keys = dictionary.keys();
  const std::span<const Ref<Object>> values = dictionary.values();
  for (std::size_t i = 0; i < keys.size(); ++i) {
    encoder.write(i == 0 ? "{" : ",");
    const ObjectKind kind = keys[i]->kind();
    if (kind == ObjectKind::string || kind == ObjectKind::number) {
      encodeAsKey(*keys[i], encoder);
    } else {
      encodeHostsKey(keys[i], encoder);
    }
    requireUnchanged(watch);
    encoder.write(":");
    if (encodeAtom(*values[i], encoder)) continue;
    encoder.encodeObject(values[i]);
    requireUnchanged(watch);
  }
  encoder.write(keys.empty() ? "{}" : "}");
}

Ref<Object> decodeDictionary(TQJSONDecoder& decoder) { return decoder.decodeMembers(); }

// MARK: table

struct JSONValueForm {
  ObjectKind kind;
  const Class* theClass;
  JSONCoding steps;
};

constexpr JSONValueForm kForms[] = {
    {ObjectKind::other, nullptr, {}},
    {ObjectKind::string,
     &classOf<String>,
     {.encodeAsRAWArchive = encodeAtomOrArchive, .encodeAsKey = encodeStringKey}},
    {ObjectKind::number,
     &classOf<Number>,
     {.encodeAsRAWArchive = encodeAtomOrArchive, .encodeAsKey = encodeNumberKey}},
    {ObjectKind::null, &classOf<Null>, {.encodeAsRAWArchive = encodeAtomOrArchive}},
    {ObjectKind::data, &classOf<Data>, {.encodeAsRAWArchive = encodeData}},
    {ObjectKind::date, &classOf<Date>, {}},
    {ObjectKind::value,
     &classOf<Value>,
     {.initWithJSONDecoder = decodeBoxedValue, .encodeAsRAWArchive = encodeBoxedValue}},
    {ObjectKind::array,
     &classOf<Array>,
     {.startEncodingObject = startArray,
      .finishEncodingObject = finishArray,
      .encodeAsRAWArchive = encodeArray}},
    {ObjectKind::dictionary,
     &classOf<Dictionary>,
     {.initWithJSONDecoder = decodeDictionary, .encodeAsRAWArchive = encodeDictionary}},
};
static_assert(std::ranges::is_sorted(kForms, {}, &JSONValueForm::kind) &&
                  std::size(kForms) == static_cast<std::size_t>(ObjectKind::dictionary) + 1,
              "the table is indexed by kind");

}  // namespace

const JSONCoding& jsonFormOf(ObjectKind kind) noexcept {
  return kForms[static_cast<std::size_t>(kind)].steps;
}

const JSONCoding& jsonFormOf(const Class& theClass) noexcept {
  for (const JSONValueForm& form : kForms) {
    if (form.theClass == &theClass) return form.steps;
  }
  return kForms[0].steps;
}

void encodeKeyedArchive(const Object& object, TQJSONEncoder& encoder) {
  if (!KeyedArchiver::supportsKeyedCoding(object)) {
    encoder.setError(
        TQJSONEncoderError, 1,
        "Error - can't encode object of class " + std::string(object.objectClass().name()));
    return;
  }
  const auto held = share(encoder);  // objects that are archived may release it
  const Ref<Data> archive = KeyedArchiver::archivedDataWithRootObject(object);
  encodeBase64Record(TQJSONRawNSArchiveKey, archive->bytes(), encoder);
}

void logReservedKey(std::string_view key) {
  static std::atomic<bool> isLogged[3];
  const std::size_t which = key == TQJSONClassKey ? 0 : key == TQJSONRawDataKey ? 1 : 2;
  if (isLogged[which].exchange(true)) return;
  std::string line = "The key ";
  plainLog(line.append(key).append(
      " is reserved: an object or dictionary with such a member is read as something else.\n"));
}

void refuseAsKey(const Object& object, TQJSONEncoder& encoder) {
  encoder.setError(TQJSONEncoderError, 2,
                   "Don't know how to encode objects of class " +
                       std::string(object.objectClass().name()) + " as keys");
}

}  // namespace tq::detail
