#pragma once

/// @file TQExport.h
/// Export macro of the shared library. Symbols without it are hidden.

/// Marks a class or function that programs may link against.
#define TQ_EXPORT __attribute__((visibility("default")))

#ifdef _GLIBCXX_DEBUG
namespace tq::detail {
/// Only a library that was built with _GLIBCXX_DEBUG has this symbol. The macro changes the layout
/// of standard containers, which are members of classes here, so program and library must agree on
/// it. Every object file refers to the symbol; a program that differs from its library does not
/// link.
extern TQ_EXPORT const char libraryHasDebugContainers;
[[gnu::used]] inline const char* const kDebugContainers = &libraryHasDebugContainers;
}  // namespace tq::detail
#endif
