// The desktop's file operations, above all its recycle bin: one call on every platform.
//
// Windows has it in its shell. Elsewhere the same structure and call stand here, filled by the desktop's
// trash, for the one operation that the commands need.
#pragma once

#ifdef _WIN32

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
// The shell's header needs what stands in front of it.
#include <shellapi.h>
// A component of the messages has this name.
#undef DELETE

#else

struct SHFILEOPSTRUCTW {
    void* hwnd;
    unsigned wFunc;
    const char16_t* pFrom;  ///< native paths, each ended by a null unit, the list by one more
    const char16_t* pTo;
    unsigned short fFlags;
    int fAnyOperationsAborted;
    void* hNameMappings;
    const char16_t* lpszProgressTitle;
};

inline constexpr unsigned FO_DELETE = 3;
inline constexpr unsigned short FOF_SILENT = 0x4;           ///< without a progress window
inline constexpr unsigned short FOF_NOCONFIRMATION = 0x10;  ///< without a question
inline constexpr unsigned short FOF_ALLOWUNDO = 0x40;       ///< into the recycle bin instead of for good
inline constexpr unsigned short FOF_FILESONLY = 0x80;       ///< no folders

/// 0 on success. `FO_DELETE` with `FOF_ALLOWUNDO` and `FOF_FILESONLY` moves each file, in their order, to the
/// desktop's trash, from where its file manager can restore it; a link goes itself, and a folder is refused.
/// The first file that no trash can take stays where it is and ends the call. Every other operation fails.
/// Nobody is asked anything.
int SHFileOperationW(SHFILEOPSTRUCTW* operation);

#endif
