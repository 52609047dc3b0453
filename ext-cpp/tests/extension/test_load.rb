# frozen_string_literal: true

# Loads the built bundle through a real `require`, with and without the host stand-in.
# Each scenario runs in a fresh interpreter: a bundle is loaded once per process.
#
#   QUILLMARK_BUNDLE_DIR  the folder holding bin_Quillmark.<dlext>
#   QUILLMARK_SANITIZE    the sanitizers the bundle was built with, if any

require "minitest/autorun"
require "open3"
require "rbconfig"

class LoadTest < Minitest::Test
  BUNDLE_DIR = ENV.fetch("QUILLMARK_BUNDLE_DIR")
  HOST = File.expand_path("../../platform/host_ruby/sketchup.rb", __dir__)
  BUNDLE = File.join(BUNDLE_DIR, "bin_Quillmark.#{RbConfig::CONFIG['DLEXT']}")

  # The lines a new interpreter that can require the bundle prints running code (after the
  # host stand-in unless host is false); fails on a non-zero exit.
  def ruby(code, host = true)
    code = "require #{HOST.dump}\n#{code}" if host
    out, err, status = Open3.capture3(RbConfig.ruby, "-I", BUNDLE_DIR, "-e", code)
    assert status.success?, "child failed (#{status}):\n#{err}"
    out.lines.map(&:chomp)
  end

  # The names a binary exports, or with all: false every name in its symbol table.
  def symbols(binary, all: false)
    out, status = Open3.capture2("nm", *(all ? [] : ["-D", "--defined-only"]), binary)
    assert status.success?
    out.lines.map { |line| line.split.last }
  end

  def test_loads_once_and_offers_one_function_of_arity_zero
    lines = ruby(<<-RUBY)
      p require("bin_Quillmark"), require("bin_Quillmark")
      p Quillmark.singleton_methods, Quillmark.method(:focus_on_sketchup_window).arity
      p Quillmark.private_instance_methods(false)
      # The desktop stand-in starts with no window at all.
      p Quillmark.focus_on_sketchup_window
      # The interpreter's own wording for a wrong argument count differs between versions.
      def no_arguments; end
      [-> { Quillmark.focus_on_sketchup_window(1) }, -> { no_arguments(1) }].each do |call|
        begin
          call.call
        rescue ArgumentError => e
          puts e.message
        end
      end
    RUBY
    assert_equal ["true", "false", "[:focus_on_sketchup_window]", "0", "[:focus_on_sketchup_window]", "false"],
                 lines[0, 6]
    assert_match(/\A\S.*1.*0/, lines[6])
    assert_equal lines[7], lines[6]
  end

  def test_a_missing_host_fails_the_load_before_the_function_is_defined
    code = <<-RUBY
      begin
        require "bin_Quillmark"
      rescue NameError => e
        puts e.message
      end
      p Quillmark.singleton_methods + Quillmark.private_instance_methods(false)
    RUBY
    assert_equal ["uninitialized constant Sketchup", "[]"], ruby(code, false)
    assert_equal ["uninitialized constant Sketchup::Material", "[]"],
                 ruby("Sketchup.send(:remove_const, :Material)\n#{code}")
  end

  # The bundle exports its entry point alone, and the stand-ins it loads offer their C
  # interface and nothing else: no C++ symbol (such as a standard container's code) that
  # another library could bind to instead.
  def test_the_bundle_and_the_platform_libraries_export_c_names_alone
    assert_equal ["Init_bin_Quillmark"], symbols(BUNDLE)
    deps, status = Open3.capture2("ldd", BUNDLE)
    assert status.success?
    libraries = deps.scan(%r{=> (\S*libquillmark_\w+\.so)}).flatten
    assert_equal %w[libquillmark_desktop.so libquillmark_sketchup_api.so],
                 libraries.map { |path| File.basename(path) }.sort
    libraries.each do |library|
      exported = symbols(library)
      refute_empty exported, library
      assert_empty exported.grep(/\A_Z/), "#{library} exports C++ symbols"
    end
  end

  def test_no_start_up_code_but_the_identity_transformation
    # Sanitizers register every instrumented object from a constructor of their own.
    skip "instrumented build (#{ENV['QUILLMARK_SANITIZE']})" unless ENV.fetch("QUILLMARK_SANITIZE", "").empty?

    # Every dynamic initialiser the compiler emits is a _GLOBAL__sub_I_<file> function
    # referenced from .init_array; only the transformation's file may have one.
    initialisers = symbols(BUNDLE, all: true).grep(/\A_GLOBAL__sub_I_/)
    assert_empty initialisers.reject { |name| name.include?("geom_transformation") }
    sections, status = Open3.capture2("readelf", "-W", "-S", BUNDLE)
    assert status.success?
    init_array = sections.lines.find { |line| line.include?(".init_array") }
    entries = init_array ? init_array.split[init_array.split.index(".init_array") + 4].to_i(16) / 8 : 0
    # One entry belongs to the C runtime (frame_dummy); the rest are ours.
    assert_operator entries, :<=, 1 + initialisers.size
  end
end
