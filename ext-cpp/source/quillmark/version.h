#ifndef QUILLMARK_VERSION_H
#define QUILLMARK_VERSION_H

// The library's version. The build reads these three lines for its own project version, so
// the package's version file, quillmark.pc and this header always agree.
#define QUILLMARK_VERSION_MAJOR 1
#define QUILLMARK_VERSION_MINOR 0
#define QUILLMARK_VERSION_PATCH 0

/// One number that orders versions: 10000 * major + 100 * minor + patch (1.0.0 is 10000).
#define QUILLMARK_VERSION \
  (QUILLMARK_VERSION_MAJOR * 10000 + QUILLMARK_VERSION_MINOR * 100 + QUILLMARK_VERSION_PATCH)

#endif
