#ifndef QUILLMARK_RUBY_RUBY_LIB_H
#define QUILLMARK_RUBY_RUBY_LIB_H

// The one includer of the interpreter's headers. Everything in the bridge includes this
// file instead, so the macros Ruby leaks into the global namespace are undone in one place.
//
// Ruby's API reports errors by longjmp. A C++ object with a non-trivial destructor must
// never be live across a call that can raise, unless the call is wrapped in rb_protect or
// rb_ensure: its destructor would simply be skipped.
//
// <ruby/encoding.h> is not included here: it brings Onigmo's regex types, which collide
// with the POSIX <regex.h> that GoogleTest includes. Sources that need encodings include
// ruby_encoding_lib.h, in .cpp files only.

#include <ruby.h>
#include <ruby/version.h>

// Every version test below reads this; undefined, it would silently count as 0.
#ifndef RUBY_API_VERSION_CODE
#error "ruby/version.h did not define RUBY_API_VERSION_CODE"
#endif

// Method functions for rb_define_method and its kin, of any arity. Up to 2.6 the
// interpreter's headers declare that parameter as VALUE (*)(ANYARGS), which C++ accepts
// only through a cast; from 2.7 they take the typed pointer, check it against the arity,
// and deprecate the cast.
#if RUBY_API_VERSION_CODE < 20700
#define QM_METHOD_FUNC(function) RUBY_METHOD_FUNC(function)
#else
#define QM_METHOD_FUNC(function) (function)
#endif

// Up to 2.6, rb_intern is a macro that caches the ID of a literal in a statement expression
// whose parenthesis and brace come from different macros, which clang reports at every use
// (-Wcompound-token-split-by-macro). The function answers the same ID; the library interns
// only while it fills its cache.
#if RUBY_API_VERSION_CODE < 20700 && defined(rb_intern)
#undef rb_intern
#endif
#ifdef close
#undef close
#endif
#ifdef read
#undef read
#endif
#ifdef write
#undef write
#endif
#ifdef sleep
#undef sleep
#endif
// Ruby wraps memcpy in a macro, which breaks std::memcpy in C++.
#ifdef memcpy
#undef memcpy
#endif

#endif
