#pragma once

// Which symbols a shared library exports. All code is compiled with hidden visibility. A public header opens
// its namespace with TALVO_EXPORT, which makes the classes it declares visible. Functions carry the macro
// themselves, too: clang takes a function's visibility from the namespace around its definition, and source
// files open that namespace without the macro. Error classes define `what` in their source file, so that only
// the library contains their typeinfo: some platforms match exceptions by its address.

#if defined(__GNUC__)
#define TALVO_EXPORT __attribute__((visibility("default")))
#else
#define TALVO_EXPORT
#endif
