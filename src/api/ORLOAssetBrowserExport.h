#pragma once

// Only the embedding interface carries this mark; the library is built with hidden
// visibility, so everything else stays internal to it.
#if defined(ORLO_BROWSER_BUILDING)
#define ORLO_BROWSER_EXPORT __attribute__((visibility("default")))
#else
#define ORLO_BROWSER_EXPORT
#endif
