#pragma once

/// @file TQExport.h
/// What leaves the shared library. Everything else is hidden.

#define TQ_EXPORT __attribute__((visibility("default")))
