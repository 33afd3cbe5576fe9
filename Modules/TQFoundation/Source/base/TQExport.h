#pragma once

/// @file TQExport.h
/// What leaves the shared library. Everything else is hidden.

/// Marks a class or function that hosts may link against.
#define TQ_EXPORT __attribute__((visibility("default")))
