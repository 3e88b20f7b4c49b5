// Platform types: the fixed-width names the library's interface is written in.
// LONG is the 32-bit signed integer of the original platform (C++ long is 64 bits here).
#pragma once

#include <cstddef>
#include <cstdint>

typedef int BOOL;
typedef uint8_t BYTE;
typedef uint16_t WORD;
typedef uint32_t DWORD;
typedef unsigned int UINT;
typedef int32_t LONG;
typedef uint32_t ULONG;
typedef uint64_t ULONGLONG;

#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif
