#pragma once

// Marks the classes and functions that libzrbase exports; everything else is hidden.
#if defined(ZR_BUILDING_LIBRARY)
#define ZR_EXPORT __attribute__((visibility("default")))
#else
#define ZR_EXPORT
#endif
