#pragma once

/// @file TQExport.h
/// Export macro of the shared library. Symbols without it are hidden.

#include <TQFoundation/base/detail/StandardLibrary.h>

/// Marks a class or function that programs may link against.
#define TQ_EXPORT __attribute__((visibility("default")))
