#pragma once

/// Marks a class or function that a kit library hands out. Everything else stays hidden: all kit libraries are built
/// with hidden visibility. One macro serves every library because ELF and Mach-O import and export alike; on Windows
/// each library is built with its own `QRT_BUILDS_<MODULE>` and gets its own macro below.
#if defined(_WIN32)
#define QRT_SYMBOL_EXPORT __declspec(dllexport)
#define QRT_SYMBOL_IMPORT __declspec(dllimport)
#else
#define QRT_SYMBOL_EXPORT [[gnu::visibility("default")]]
#define QRT_SYMBOL_IMPORT [[gnu::visibility("default")]]
#endif

/// Marks a template that appears in the exported names of others: a function whose arguments are hidden is hidden too.
#if defined(_WIN32)
#define QRT_VISIBLE_TEMPLATE
#else
#define QRT_VISIBLE_TEMPLATE [[gnu::visibility("default")]]
#endif

#if defined(QRT_BUILDS_CORE)
#define QRT_CORE_EXPORT QRT_SYMBOL_EXPORT
#else
#define QRT_CORE_EXPORT QRT_SYMBOL_IMPORT
#endif

#if defined(QRT_BUILDS_CACHE)
#define QRT_CACHE_EXPORT QRT_SYMBOL_EXPORT
#else
#define QRT_CACHE_EXPORT QRT_SYMBOL_IMPORT
#endif

#if defined(QRT_BUILDS_COMPOSITION)
#define QRT_COMPOSITION_EXPORT QRT_SYMBOL_EXPORT
#else
#define QRT_COMPOSITION_EXPORT QRT_SYMBOL_IMPORT
#endif

#if defined(QRT_BUILDS_LOGGER)
#define QRT_LOGGER_EXPORT QRT_SYMBOL_EXPORT
#else
#define QRT_LOGGER_EXPORT QRT_SYMBOL_IMPORT
#endif

#if defined(QRT_BUILDS_PLAYER)
#define QRT_PLAYER_EXPORT QRT_SYMBOL_EXPORT
#else
#define QRT_PLAYER_EXPORT QRT_SYMBOL_IMPORT
#endif
