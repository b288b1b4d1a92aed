#pragma once

// What a shared library shows of itself. Everything is compiled hidden; a public header opens its namespace
// with TALVO_EXPORT, which makes what it declares visible. Errors define `what` in their source file, so that
// their typeinfo is the library's alone: some platforms catch by its address.

#if defined(__GNUC__)
#define TALVO_EXPORT __attribute__((visibility("default")))
#else
#define TALVO_EXPORT
#endif
