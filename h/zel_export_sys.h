// The export macro of each library: a declaration marked with it belongs to that library's
// boundary; everything else stays hidden. Inside its own build a library exports, elsewhere it
// is imported.
#ifndef ZEL_EXPORT_SYS_H
#define ZEL_EXPORT_SYS_H

#ifdef _WIN32
#define ZEL_EXPORT __declspec(dllexport)
#define ZEL_IMPORT __declspec(dllimport)
#else
#define ZEL_EXPORT __attribute__((visibility("default")))
#define ZEL_IMPORT __attribute__((visibility("default")))
#endif

// A format of the suite's own formatter: the rules of C99 on every platform, whatever the runtime library does.
#ifdef __clang__
#define ZEL_PRINTF_FORMAT(format_index, first_index) __attribute__((format(printf, format_index, first_index)))
#else
#define ZEL_PRINTF_FORMAT(format_index, first_index) __attribute__((format(gnu_printf, format_index, first_index)))
#endif

#ifdef ZEL_ERR_BUILD
#define ERR_API ZEL_EXPORT
#else
#define ERR_API ZEL_IMPORT
#endif

#ifdef ZEL_THR_BUILD
#define THR_API ZEL_EXPORT
#else
#define THR_API ZEL_IMPORT
#endif

#ifdef ZEL_VER_BUILD
#define VER_API ZEL_EXPORT
#else
#define VER_API ZEL_IMPORT
#endif

#ifdef ZEL_FIO_BUILD
#define FIO_API ZEL_EXPORT
#else
#define FIO_API ZEL_IMPORT
#endif

#ifdef ZEL_MEM_BUILD
#define MEM_API ZEL_EXPORT
#else
#define MEM_API ZEL_IMPORT
#endif

#ifdef ZEL_GEN_BUILD
#define GEN_API ZEL_EXPORT
#else
#define GEN_API ZEL_IMPORT
#endif

#endif
