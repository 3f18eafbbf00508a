// The short form that the file systems of Windows keep of every name, and the way back.
//
// From a path to its short form and back each component comes out as it is stored. Elsewhere there are no
// short forms, and both calls give 0.
#pragma once

#ifdef _WIN32

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
// A component of the messages has this name.
#undef DELETE

/// The system's own calls over 16-bit text: the units written, without the terminator; 0 when nothing stands
/// at the path, and a number above `units` when the buffer is too small for it.
inline unsigned long GetShortPathNameW(const char16_t* path, char16_t* buffer, unsigned long units) {
    return ::GetShortPathNameW(reinterpret_cast<const wchar_t*>(path), reinterpret_cast<wchar_t*>(buffer),
                               units);
}
inline unsigned long GetLongPathNameW(const char16_t* path, char16_t* buffer, unsigned long units) {
    return ::GetLongPathNameW(reinterpret_cast<const wchar_t*>(path), reinterpret_cast<wchar_t*>(buffer),
                              units);
}

#else

unsigned long GetShortPathNameW(const char16_t* path, char16_t* buffer, unsigned long units);
unsigned long GetLongPathNameW(const char16_t* path, char16_t* buffer, unsigned long units);

#endif
