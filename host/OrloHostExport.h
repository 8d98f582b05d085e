#pragma once

// The library is built with hidden visibility; only what carries this macro is
// reachable from the browser library and the host executable.
#if defined(_WIN32)
#if defined(ORLOHOST_BUILDING)
#define ORLOHOST_EXPORT __declspec(dllexport)
#else
#define ORLOHOST_EXPORT __declspec(dllimport)
#endif
#else
// Consumers get default visibility too: the browser library is itself built with
// hidden visibility and would otherwise take these declarations as its own symbols.
#define ORLOHOST_EXPORT __attribute__((visibility("default")))
#endif
