// The export macro of each library. A declaration with the macro is exported by the library; all
// other names are hidden. The macro means export in the library's own build, where ZEL_..._BUILD
// is defined, and import everywhere else.
//
// GEN_INLINE_API marks an inline function that zel_gen exports too. The library's own build compiles a copy for that
// even if it doesn't call the function. A caller compiles the function itself and imports nothing.
#ifndef ZEL_EXPORT_SYS_H
#define ZEL_EXPORT_SYS_H

#ifdef _WIN32
#define ZEL_EXPORT __declspec(dllexport)
#define ZEL_IMPORT __declspec(dllimport)
#define ZEL_INLINE_EXPORT __declspec(dllexport)
#define ZEL_INLINE_IMPORT
#else
#define ZEL_EXPORT __attribute__((visibility("default")))
#define ZEL_IMPORT __attribute__((visibility("default")))
#define ZEL_INLINE_EXPORT __attribute__((visibility("default"), used))
#define ZEL_INLINE_IMPORT __attribute__((visibility("default")))
#endif

// The attribute of a function that takes a format of the suite's own formatter. The compiler checks the arguments by
// the rules of C99 on every platform. Both indices count from 1.
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
#define GEN_INLINE_API ZEL_INLINE_EXPORT
#else
#define GEN_API ZEL_IMPORT
#define GEN_INLINE_API ZEL_INLINE_IMPORT
#endif

#endif
