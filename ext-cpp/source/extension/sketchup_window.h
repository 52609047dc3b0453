#ifndef QUILLMARK_EXTENSION_SKETCHUP_WINDOW_H
#define QUILLMARK_EXTENSION_SKETCHUP_WINDOW_H

#include <quillmark/ruby/ruby_lib.h>

namespace Orvex {
namespace Sketchup {

/// Defines Quillmark.focus_on_sketchup_window (arity 0) on the module.
void init_ruby(VALUE module);

/// Quillmark.focus_on_sketchup_window -> true or false
///
/// Makes the host's main document window key: the first on-screen window of this process,
/// in window-server order, that the application knows, that has a toolbar and that sits at
/// the normal level. Nothing is activated, ordered front or moved. Main thread only.
VALUE rbf_activate_main_window(VALUE self);

}  // namespace Sketchup
}  // namespace Orvex

#endif
