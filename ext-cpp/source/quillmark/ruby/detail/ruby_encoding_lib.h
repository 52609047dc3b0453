#ifndef QUILLMARK_RUBY_RUBY_ENCODING_LIB_H
#define QUILLMARK_RUBY_RUBY_ENCODING_LIB_H

// The interpreter's encoding API. Include it from .cpp files only: it declares Onigmo's
// regex structs, which clash with POSIX <regex.h> in any file that includes both.

#include <quillmark/ruby/ruby_lib.h>

#include <ruby/encoding.h>

#endif
