#pragma once

// What a shared library shows of itself. Everything is compiled hidden; a public header opens its namespace
// with TALVO_EXPORT, which makes the classes that it declares visible. A function has it, too: to clang, the
// namespace of its definition counts, which is opened without. Errors define `what` in their source file, so
// that their typeinfo is the library's alone: some platforms catch by its address.

#if defined(__GNUC__)
#define TALVO_EXPORT __attribute__((visibility("default")))
#else
#define TALVO_EXPORT
#endif
