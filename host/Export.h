#pragma once

// Symbols a program outside the library may use carry QFA_API; everything else
// in the shared library stays hidden.
#if defined(QFA_STATIC_BUILD)
#define QFA_API
#else
#define QFA_API __attribute__((visibility("default")))
#endif
