# frozen_string_literal: true

# The bundle built over GNUstep, loaded through a real `require`: the demo against real
# windows on the X display in DISPLAY, the bundle's exports and libraries, and a call with
# no display at all.
#
#   QUILLMARK_BUNDLE_DIR  the folder holding bin_Quillmark.<dlext>
#   QUILLMARK_SANITIZE    the sanitizers the bundle was built with, if any

require "minitest/autorun"
require "open3"
require "rbconfig"
require "tmpdir"

class GnustepBundleTest < Minitest::Test
  BUNDLE_DIR = ENV.fetch("QUILLMARK_BUNDLE_DIR")
  BUNDLE = File.join(BUNDLE_DIR, "bin_Quillmark.#{RbConfig::CONFIG['DLEXT']}")
  HOST = File.expand_path("../../../platform/host_ruby/sketchup.rb", __dir__)
  DEMO = File.expand_path("../../../../examples/demo_gnustep.rb", __dir__)

  def run_ruby(env, *args)
    out, err, status = Open3.capture3(env, RbConfig.ruby, "-I", BUNDLE_DIR, *args)
    assert status.success?, "child failed (#{status}):\n#{err}"
    out
  end

  def test_the_demo_makes_the_main_window_key_and_writes_both_screens
    skip "needs DISPLAY (scripts/test.sh gnustep starts an Xvfb)" unless ENV["DISPLAY"]
    Dir.mktmpdir do |folder|
      lines = run_ruby({}, DEMO, folder).lines.map(&:chomp)
      assert_includes lines, "[NSApp keyWindow] before: #2 garden.skp - second window"
      assert_includes lines, "Quillmark.focus_on_sketchup_window => true"
      assert(lines.any? { |l| l =~ /\A\[NSApp keyWindow\] after: #\d+ house\.skp - main window\z/ }, lines.join("\n"))
      assert_includes lines, "Window-list objects left over: 0"
      %w[before after].each do |name|
        header = File.binread(File.join(folder, "#{name}.ppm"), 16)
        assert_match(/\AP6\n\d+ \d+\n255\n/, header)
      end
      refute_equal File.binread(File.join(folder, "before.ppm")),
                   File.binread(File.join(folder, "after.ppm")),
                   "the key window's title bar must change on screen"
    end
  end

  def test_without_a_display_the_function_answers_false
    env = { "DISPLAY" => nil }
    assert_equal "false\n",
                 run_ruby(env, "-e", "require #{HOST.dump}; require 'bin_Quillmark'; p Quillmark.focus_on_sketchup_window")
  end

  def tool(*command)
    out, status = Open3.capture2(*command)
    assert status.success?, command.join(" ")
    out.lines
  end

  # The seam's functions (default visibility in the desktop headers) stay inside as well.
  def test_the_bundle_exports_its_init_function_alone_and_links_the_gnustep_desktop
    assert_equal ["Init_bin_Quillmark"], tool("nm", "-D", "--defined-only", BUNDLE).map { |line| line.split.last }
    names = tool("ldd", BUNDLE).join.scan(%r{=> (\S+)}).flatten.map { |path| File.basename(path) }
    assert_includes names, "libquillmark_desktop_gnustep.so"
    assert(names.any? { |n| n.start_with?("libgnustep-gui.so") }, names.join(" "))
    refute_includes names, "libquillmark_desktop.so"
  end

  # GCC's Objective-C runtime registers each compiled module (its selectors and classes)
  # from a constructor of its own; that is the only start-up code the seam may add.
  def test_start_up_code_is_the_objective_c_module_registration_at_most
    skip "instrumented build (#{ENV['QUILLMARK_SANITIZE']})" unless ENV.fetch("QUILLMARK_SANITIZE", "").empty?
    names = tool("nm", BUNDLE).map { |line| line.split.last }
    initialisers = names.grep(/\A_GLOBAL__sub_I_/)
    assert_empty initialisers.reject { |name| name.include?("geom_transformation") }
    init_array = tool("readelf", "-W", "-S", BUNDLE).find { |line| line.include?(".init_array") }
    entries = init_array.split[init_array.split.index(".init_array") + 4].to_i(16) / 8
    objc = names.include?("__objc_gnu_init") ? 1 : 0
    # frame_dummy, the transformation's initialiser if any, the module registration.
    assert_operator entries, :<=, 1 + initialisers.size + objc
  end
end
