#ifndef QUILLMARK_DESKTOP_API_H
#define QUILLMARK_DESKTOP_API_H

// Marks the functions and data the desktop stand-in library exports. Code that only calls
// them (the bundle) exports nothing by including this.
#define DESKTOP_API __attribute__((visibility("default")))

#endif
