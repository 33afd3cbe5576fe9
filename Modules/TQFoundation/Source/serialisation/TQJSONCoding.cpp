#include <TQFoundation/serialisation/TQJSONCoding.h>

#include <algorithm>
#include <string>

#include <TQFoundation/base/NumberText.h>
#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/Data.h>
#include <TQFoundation/objects/Dictionary.h>
#include <TQFoundation/objects/Number.h>
#include <TQFoundation/objects/Value.h>
#include <TQFoundation/platform/archive/KeyedArchiver.h>
#include <TQFoundation/platform/text/Base64.h>
#include <TQFoundation/platform/text/CharacterCategory.h>
#include <TQFoundation/serialisation/TQJSONEncoder.h>
#include <TQFoundation/serialisation/detail/JSONEscape.h>

namespace tq {
namespace {

/// `{"key":"base64"}`
void encodeBase64Record(std::string_view key, std::span<const std::byte> bytes,
                        TQJSONEncoder& encoder) {
  constexpr std::size_t kChunk =
      std::size_t{3} * 4096;  // a multiple of 3 needs no padding in between
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

void encodeFallbackArchive(const Object& object, TQJSONEncoder& encoder) {
  if (!KeyedArchiver::supportsKeyedCoding(object)) {
    encoder.setError(
        TQJSONEncoderError, 1,
        "Error - can't encode object of class " + std::string(object.objectClass().name()));
    return;
  }
  const Ref<Data> archive = KeyedArchiver::archivedDataWithRootObject(object);
  encodeBase64Record(TQJSONRawNSArchiveKey, archive->bytes(), encoder);
}

void encodeArrayElements(const Array& array, TQJSONEncoder& encoder) {
  const std::size_t count = array.count();
  for (std::size_t i = 0; i < count; ++i) {
    if (i != 0) encoder.write(",");
    if (array.isPacked()) {
      encoder.encodeNumber(array.numberAtIndex(i));
    } else {
      encoder.encodeObject(array.objectAtIndex(i));
    }
  }
}

void encodeDictionary(const Dictionary& dictionary, TQJSONEncoder& encoder) {
  std::string_view separator = "{";
  for (const Dictionary::Entry entry : dictionary) {
    encoder.write(separator);
    encodeAsKey(entry.key, encoder);
    encoder.write(":");
    encoder.encodeObject(entry.value);
    separator = ",";
  }
  encoder.write(dictionary.count() == 0 ? "{}" : "}");
}

/// `{<class record>,"type":"<type>","value":"{a, b…}"}`
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

void encodeBoxedValue(const Value& value, TQJSONEncoder& encoder) {
  if (const auto point = value.pointValue()) {
    encodeBoxedNumbers(value, "point", {{point->x, point->y}}, encoder);
  } else if (const auto size = value.sizeValue()) {
    encodeBoxedNumbers(value, "size", {{size->width, size->height}}, encoder);
  } else if (const auto rect = value.rectValue()) {
    const double fields[] = {rect->origin.x, rect->origin.y, rect->size.width, rect->size.height};
    encodeBoxedNumbers(value, "rect", fields, encoder);
  } else {
    encodeFallbackArchive(value, encoder);
  }
}

}  // namespace

Ref<Object> replacementObjectForJSONEncoder(const Object& object, TQJSONEncoder& encoder) {
  if (const auto own = object.objectClass().json().replacementObject) return own(object, encoder);
  return Ref<Object>(const_cast<Object*>(&object));
}

void startEncodingObject(const Object& object, TQJSONEncoder& encoder) {
  if (const auto own = object.objectClass().json().startEncodingObject) return own(object, encoder);
  if (object.kind() == ObjectKind::array) return encoder.write("[");
  encoder.write("{");
  encodeClassInfoForJSON(object, encoder);
}

void finishEncodingObject(const Object& object, TQJSONEncoder& encoder) {
  if (const auto own = object.objectClass().json().finishEncodingObject)
    return own(object, encoder);
  encoder.write(object.kind() == ObjectKind::array ? "]" : "}");
}

void encodeClassInfoForJSON(const Object& object, TQJSONEncoder& encoder) {
  if (const auto own = object.objectClass().json().encodeClassInfo) return own(object, encoder);
  encoder.write("\"_class\":\"");
  encoder.write(encoder.archiveNameOf(object.classForCoder()));
  encoder.write("\"");
}

void encodeAsRAWArchive(const Object& object, TQJSONEncoder& encoder) {
  if (const auto own = object.objectClass().json().encodeAsRAWArchive) return own(object, encoder);
  switch (object.kind()) {
    case ObjectKind::string: {
      const auto& string = static_cast<const String&>(object);
      if (string.isWellFormed()) return encoder.encodeText(string.view());
      return encodeFallbackArchive(object, encoder);
    }
    case ObjectKind::number:
      return encoder.encodeNumber(static_cast<const Number&>(object).value());
    case ObjectKind::null:
      return encoder.write("null");
    case ObjectKind::data:
      return encodeBase64Record(TQJSONRawDataKey, static_cast<const Data&>(object).bytes(),
                                encoder);
    case ObjectKind::value:
      return encodeBoxedValue(static_cast<const Value&>(object), encoder);
    case ObjectKind::array:
      startEncodingObject(object, encoder);
      encodeArrayElements(static_cast<const Array&>(object), encoder);
      return finishEncodingObject(object, encoder);
    case ObjectKind::dictionary:
      return encodeDictionary(static_cast<const Dictionary&>(object), encoder);
    default:
      break;
  }
  encodeFallbackArchive(object, encoder);
}

void encodeAsKey(const Object& object, TQJSONEncoder& encoder) {
  if (const auto own = object.objectClass().json().encodeAsKey) return own(object, encoder);
  if (object.kind() == ObjectKind::string) {
    encoder.encodeObject(object);
    // Its fallback archive cannot stand where a key must; the error keeps the text from being used.
    if (static_cast<const String&>(object).isWellFormed()) return;
  }
  if (object.kind() == ObjectKind::number) {
    return encoder.encodeText(static_cast<const Number&>(object).value().text());
  }
  encoder.setError(TQJSONEncoderError, 2,
                   "Don't know how to encode objects of class " +
                       std::string(object.objectClass().name()) + " as keys");
}

Ref<String> safeJSONValue(const String& string) {
  std::string_view rest = string.view();
  std::size_t plain = detail::unescapedPrefix(rest);
  if (plain == rest.size()) return Ref<String>(const_cast<String*>(&string));
  std::string escaped;
  for (;;) {
    escaped.append(rest.substr(0, plain));
    if (plain == rest.size()) break;
    char escape[detail::kLongestEscape];
    escaped.append(escape, detail::writeEscape(escape, static_cast<unsigned char>(rest[plain])));
    rest.remove_prefix(plain + 1);
    plain = detail::unescapedPrefix(rest);
  }
  return String::stringWithGeneralisedUTF8(escaped);
}

bool TQJSONAwkwardCharacters::contains(char32_t character) noexcept {
  return character == U'"' || character == U'\\' || character == U'/' ||
         isControlOrFormatCharacter(character);
}

}  // namespace tq
