// How a module marks the functions that the interpreter finds by name.
#pragma once

#ifdef _WIN32
#define KX_MODULE_ENTRY extern "C" __declspec(dllexport)
#else
#define KX_MODULE_ENTRY extern "C" __attribute__((visibility("default")))
#endif
