#include <TQFoundation/platform/text/Collation.h>

#include <unicode/ucol.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <string>

#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/base/TQThreadSafety.h>
#include <TQFoundation/platform/threads/Lock.h>

// The C interface: its headers map the names that change with ICU's version.

namespace tq {
namespace {

/// Returns a collator for this locale, or null if ICU has no data for it.
UCollator* openCollator(const std::string& locale) {
  UErrorCode status = U_ZERO_ERROR;
  UCollator* const collator = ucol_open(locale.empty() ? "root" : locale.c_str(), &status);
  if (U_FAILURE(status)) return nullptr;
  status = U_ZERO_ERROR;
  const std::string_view valid = ucol_getLocaleByType(collator, ULOC_VALID_LOCALE, &status);
  if (valid == "root" && !locale.empty() && locale != valid) {  // ICU has no data
    ucol_close(collator);
    return nullptr;
  }
  ucol_setAttribute(collator, UCOL_NUMERIC_COLLATION, UCOL_ON, &status);
  ucol_setAttribute(collator, UCOL_STRENGTH, UCOL_TERTIARY, &status);
  ucol_setAttribute(collator, UCOL_ALTERNATE_HANDLING, UCOL_NON_IGNORABLE, &status);
  TQ_ASSERT(U_SUCCESS(status));
  return collator;
}

/// Returns the collator of a locale, or null. Collators are opened once and kept: another thread
/// may still compare with one that is replaced.
const UCollator* collatorFor(std::string_view locale) {
  struct Collators {
    Lock lock;
    std::map<std::string, const UCollator*, std::less<>> all TQ_GUARDED_BY(lock);
  };
  static auto& collators = *new Collators;  // never destroyed: threads may outlive main
  const Locked guard(collators.lock);
  const auto known = collators.all.find(locale);
  if (known != collators.all.end()) return known->second;
  const UCollator* const opened = openCollator(std::string(locale));
  if (opened != nullptr) collators.all.emplace(locale, opened);
  return opened;
}

/// The current collator.
std::atomic<const UCollator*>& currentCollator() {
  static std::atomic<const UCollator*> current = collatorFor("");
  TQ_ASSERT(current.load(std::memory_order_relaxed) != nullptr);
  return current;
}

/// Returns the part that the collator can compare: the first 2 GB.
std::int32_t lengthOf(std::string_view text) noexcept {
  constexpr std::size_t kMost = std::numeric_limits<std::int32_t>::max();
  return static_cast<std::int32_t>(std::min(text.size(), kMost));
}

bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }

/// Removes everything up to the end of the next run of digits. @return the length of the run
std::size_t takeDigits(std::string_view& text) noexcept {
  std::size_t begin = 0;
  while (begin < text.size() && !isDigit(text[begin])) ++begin;
  std::size_t end = begin;
  while (end < text.size() && isDigit(text[end])) ++end;
  text.remove_prefix(end);
  return end - begin;
}

/// Compares the lengths of the first runs of digits that differ in length. Missing runs are empty,
/// so that this is an order.
int compareDigitRuns(std::string_view a, std::string_view b) noexcept {
  while (!a.empty() || !b.empty()) {
    const std::size_t inA = takeDigits(a);
    const std::size_t inB = takeDigits(b);
    if (inA != inB) return inA < inB ? -1 : 1;
  }
  return 0;
}

}  // namespace

int localizedStandardCompare(std::string_view a, std::string_view b) {
  if (a == b) return 0;
  UErrorCode status = U_ZERO_ERROR;
  const UCollator* const collator = currentCollator().load(std::memory_order_acquire);
  const UCollationResult order =
      ucol_strcollUTF8(collator, a.data(), lengthOf(a), b.data(), lengthOf(b), &status);
  if (U_SUCCESS(status) && order != UCOL_EQUAL) return order == UCOL_LESS ? -1 : 1;
  if (const int byDigits = compareDigitRuns(a, b); byDigits != 0) return byDigits;
  return a.compare(b) < 0 ? -1 : 1;  // the order of UTF-8 is that of its code points
}

bool setCollationLocale(std::string_view locale) {
  const UCollator* const collator = collatorFor(locale);
  if (collator == nullptr) return false;
  currentCollator().store(collator, std::memory_order_release);
  return true;
}

}  // namespace tq
