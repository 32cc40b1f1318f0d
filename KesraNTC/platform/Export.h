#pragma once

#if __cplusplus < 201703L
#error "KesraNTC needs C++17: compile with -std=c++17 or a later standard"
#endif

// An installed Windows library tells what it was built with, and refuses a game that was built otherwise.
#if defined(_WIN32) && __has_include("KesraNTC/platform/BuiltWith.h")
#include "KesraNTC/platform/BuiltWith.h"
#endif

// KESRANTC_API marks what the library exports. KESRANTC_BUILDING is defined while the library itself is
// compiled, KESRANTC_STATIC for whoever links it statically.
#if defined(KESRANTC_STATIC)
#define KESRANTC_API
#elif defined(_WIN32) && defined(KESRANTC_BUILDING)
#define KESRANTC_API __declspec(dllexport)
#elif defined(_WIN32)
#define KESRANTC_API __declspec(dllimport)
#else
#define KESRANTC_API __attribute__((visibility("default")))
#endif

// Lets the compiler check printf-style arguments; the positions count from 1 and include `this`.
#if defined(__MINGW32__)
#define KESRANTC_PRINTF(text, first) __attribute__((format(gnu_printf, text, first)))
#else
#define KESRANTC_PRINTF(text, first) __attribute__((format(printf, text, first)))
#endif
