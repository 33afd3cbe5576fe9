// Reads any bytes as a keyed archive. An object that was read must keep its archive when it is
// written and read again. An input that begins with "b" is the archive; the bytes of any other
// choose the content of a well-formed one.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include <TQFoundation/objects/Class.h>
#include <TQFoundation/objects/Exception.h>
#include <TQFoundation/platform/archive/KeyedArchiver.h>
#include <TQFoundation/platform/archive/KeyedUnarchiver.h>

#include "KeyedArchiveGenerator.h"

namespace {

using tq::fuzz::require;

class Host final : public tq::Subclass<Host> {
 public:
  static constexpr std::string_view className = "Host";
  static inline int count = 0;  // of all that were read

  void encodeWithCoder(tq::KeyedArchiver& coder) const {
    coder.encodeObject(content_, "content");
    const tq::Ref<tq::Object> back = back_.lock();
    coder.encodeObject(back, "back");
    coder.encodeDouble(number_, "number");
  }
  bool initWithCoder(tq::KeyedUnarchiver& coder) {
    ++count;
    content_ = coder.decodeObjectForKey("content");
    back_ = coder.decodeWeakObjectForKey<tq::Object>("back");
    if (const auto back = back_.lock()) (void)back->description();
    number_ = coder.decodeDoubleForKey("number");
    return true;
  }

 private:
  tq::Ref<tq::Object> content_;
  tq::Weak<tq::Object> back_;
  double number_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const bool isReady = [] {
    tq::Class::registerClass<Host>();
    return true;
  }();
  static_cast<void>(isReady);
  const bool isArchive = size > 0 && bytes[0] == 'b';
  const std::string input = isArchive ? std::string(bytes, bytes + size)
                                      : tq::fuzz::KeyedArchiveGenerator({bytes, size}).archive();
  Host::count = 0;
  const auto given = std::as_bytes(std::span(input));
  const tq::Ref<tq::Object> object = tq::KeyedUnarchiver::unarchiveRootObject(given);
  tq::UnreadContent unread;
  const tq::Ref<tq::Object> listed =
      tq::KeyedUnarchiver::unarchiveRootObject(given, nullptr, {}, nullptr, &unread);
  require((object == nullptr) == (listed == nullptr));
  if (!object) return 0;
  tq::Ref<tq::Data> archive;
  try {
    archive = tq::KeyedArchiver::archivedDataWithRootObject(*object);
  } catch (const tq::Exception&) {
    return 0;  // the writer may refuse the order of references in a file
  }
  require(tq::KeyedArchiver::archivedDataWithRootObject(*listed)->view() == archive->view());
  tq::ReadingLimits limits;
  limits.unfoldedPerByte = 1'000'000;  // the new archive may be shorter, but not its content
  const tq::Ref<tq::Object> again =
      tq::KeyedUnarchiver::unarchiveRootObject(archive->bytes(), nullptr, limits);
  require(again != nullptr);
  require(tq::KeyedArchiver::archivedDataWithRootObject(*again)->view() == archive->view());
  if (Host::count == 0 && object->isEqual(*listed)) {  // it contains neither a Host nor NaN
    require(again->isEqual(*object) && object->isEqual(*again));
    require(again->hash() == object->hash() && again->description() == object->description());
  }
  return 0;
}
