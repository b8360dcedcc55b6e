/* The version of libquor, which is its own: the programs have another one.
 *
 * A new major version breaks programs that were built with an older one, and its library has
 * another SONAME. A new minor version adds to the interface. A new patch version changes neither.
 */
#ifndef QUOR_VERSION_H
#define QUOR_VERSION_H

#define QUOR_VERSION_MAJOR 1
#define QUOR_VERSION_MINOR 1
#define QUOR_VERSION_PATCH 0

/* To compare with: #if QUOR_VERSION >= QUOR_MAKE_VERSION(1, 2, 0) */
#define QUOR_MAKE_VERSION(major, minor, patch) ((major)*10000 + (minor)*100 + (patch))
#define QUOR_VERSION QUOR_MAKE_VERSION(QUOR_VERSION_MAJOR, QUOR_VERSION_MINOR, QUOR_VERSION_PATCH)

#endif
