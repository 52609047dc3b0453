#include <quillmark/ruby/ruby_handles.h>
#include <quillmark/ruby/ruby_lib.h>
#include "sketchup_window.h"

// The load chain. The interpreter finds Init_bin_Quillmark by the bundle's base name; it is
// the only symbol the bundle exports.

namespace Orvex {

// The module is handed down the chain, never kept in a global.
void init_ruby(VALUE /*module*/) { RU::init_ruby(); }

void init_ruby_ext(VALUE module) {
  init_ruby(module);
  Sketchup::init_ruby(module);
}

}  // namespace Orvex

extern "C" __attribute__((visibility("default"))) void Init_bin_Quillmark() {
  Orvex::init_ruby_ext(rb_define_module("Quillmark"));
}
