#pragma once

// TESSEL_API marks what the shared library exports; everything else is hidden.
#if defined(_WIN32)
#if defined(TESSEL_BUILDING)
#define TESSEL_API __declspec(dllexport)
#else
#define TESSEL_API __declspec(dllimport)
#endif
#else
#define TESSEL_API __attribute__((visibility("default")))
#endif
