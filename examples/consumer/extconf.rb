# The example consumer, built the ordinary Ruby way against an installed Quillmark:
#
#   PKG_CONFIG_PATH=<install prefix>/lib/pkgconfig ruby extconf.rb && make
#   ruby -I . -e 'require "quillmark_consumer"'
#
# The same sources as the CMake build beside it (CMakeLists.txt).
require "mkmf"

pkg_config("quillmark") or abort "Quillmark not found: put <prefix>/lib/pkgconfig on PKG_CONFIG_PATH"

# The library's static parts inline the interpreter's object layouts: they serve only the
# Ruby (minor version and platform) they were compiled for.
built_for = pkg_config("quillmark", "variable=ruby_abi")
this_ruby = "#{RbConfig::CONFIG['MAJOR']}.#{RbConfig::CONFIG['MINOR']} (#{RbConfig::CONFIG['arch']})"
unless built_for == this_ruby
  abort "this Quillmark was built for Ruby #{built_for}, but this is Ruby #{this_ruby}"
end

$CXXFLAGS << " -std=c++17 -fvisibility=hidden"
create_makefile("quillmark_consumer")
