#pragma once

/// @file StandardLibrary.h
/// Makes a program fail to link if its C++ library is not the one that this library was built with.
///
/// Classes here have standard containers as members, so both must agree on the layouts of these.
/// The C++ library and its mode give a symbol its name. Only a library that was built with them has
/// the symbol, and every object file refers to it: the linker's message names what the program
/// uses.

#include <version>

#if defined(_LIBCPP_VERSION)
#define TQ_STANDARD_LIBRARY libraryUsesLibcxx
#elif defined(_GLIBCXX_DEBUG)
#define TQ_STANDARD_LIBRARY libraryUsesDebugLibstdcxx
#elif !_GLIBCXX_USE_CXX11_ABI
#define TQ_STANDARD_LIBRARY libraryUsesLibstdcxxWithOldStrings
#else
#define TQ_STANDARD_LIBRARY libraryUsesPlainLibstdcxx
#endif

namespace tq::detail {
extern __attribute__((visibility("default"))) const char TQ_STANDARD_LIBRARY;
[[gnu::used, gnu::visibility("hidden")]] inline const char* const kStandardLibrary =
    &TQ_STANDARD_LIBRARY;
}  // namespace tq::detail
