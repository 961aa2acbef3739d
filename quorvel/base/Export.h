#pragma once

/// QUORVEL_API marks what the shared library exports; everything else stays
/// hidden. Static builds define QUORVEL_STATIC, which makes it empty.
#if defined(QUORVEL_STATIC)
#define QUORVEL_API
#elif defined(_WIN32)
#if defined(QUORVEL_BUILDING)
#define QUORVEL_API __declspec(dllexport)
#else
#define QUORVEL_API __declspec(dllimport)
#endif
#else
#define QUORVEL_API __attribute__((visibility("default")))
#endif
