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

  # Runs code in a new interpreter that can require the bundle; answers its standard
  # output, failing on a non-zero exit.
  def ruby(code)
    out, err, status = Open3.capture3(RbConfig.ruby, "-I", BUNDLE_DIR, "-e", code)
    assert status.success?, "child failed (#{status}):\n#{err}"
    out
  end

  def with_host(code)
    ruby("require #{HOST.dump}\n#{code}")
  end

  def test_loaded_module_offers_one_function_of_arity_zero
    out = with_host(<<-RUBY)
      require "bin_Quillmark"
      p Quillmark.singleton_methods
      p Quillmark.method(:focus_on_sketchup_window).arity
      p Quillmark.private_instance_methods(false)
      begin
        Quillmark.focus_on_sketchup_window(1)
      rescue ArgumentError => e
        puts e.message
      end
      # The interpreter's own wording for the same mistake, which differs between versions.
      def no_arguments; end
      begin
        no_arguments(1)
      rescue ArgumentError => e
        puts e.message
      end
    RUBY
    lines = out.lines.map(&:chomp)
    assert_equal ["[:focus_on_sketchup_window]", "0", "[:focus_on_sketchup_window]"], lines[0, 3]
    assert_match(/\A\S.*1.*0/, lines[3])
    assert_equal lines[4], lines[3]
  end

  def test_requiring_twice_loads_once
    out = with_host('p require("bin_Quillmark"), require("bin_Quillmark")')
    assert_equal "true\nfalse\n", out
  end

  def test_without_the_host_the_load_raises_name_error_and_leaves_the_module_empty
    out = ruby(<<-RUBY)
      begin
        require "bin_Quillmark"
        puts "loaded"
      rescue NameError => e
        puts e.class, e.message
      end
      p defined?(Quillmark)
      p Quillmark.singleton_methods + Quillmark.private_instance_methods(false)
    RUBY
    assert_equal ["NameError", "uninitialized constant Sketchup", '"constant"', "[]"],
                 out.lines.map(&:chomp)
  end

  def test_a_missing_host_class_fails_the_load_before_the_function_is_defined
    out = with_host(<<-RUBY)
      Sketchup.send(:remove_const, :Material)
      begin
        require "bin_Quillmark"
      rescue NameError => e
        puts e.message
      end
      p Quillmark.respond_to?(:focus_on_sketchup_window)
    RUBY
    assert_equal "uninitialized constant Sketchup::Material\nfalse\n", out
  end

  def test_the_function_answers_without_a_window_of_this_process
    # The desktop stand-in starts with no window at all.
    assert_equal "false\n", with_host('require "bin_Quillmark"; p Quillmark.focus_on_sketchup_window')
  end

  def test_the_bundle_exports_its_init_function_alone
    out, status = Open3.capture2("nm", "-D", "--defined-only", BUNDLE)
    assert status.success?
    exported = out.lines.map { |line| line.split.last }
    assert_equal ["Init_bin_Quillmark"], exported
  end

  # The stand-ins the bundle loads offer their C interface and nothing else: no C++ symbol
  # (such as a standard container's code) that another library could bind to instead.
  def test_the_platform_libraries_export_c_names_alone
    deps, status = Open3.capture2("ldd", BUNDLE)
    assert status.success?
    libraries = deps.scan(%r{=> (\S*libquillmark_\w+\.so)}).flatten
    assert_equal %w[libquillmark_desktop.so libquillmark_sketchup_api.so],
                 libraries.map { |path| File.basename(path) }.sort
    libraries.each do |library|
      out, status = Open3.capture2("nm", "-D", "--defined-only", library)
      assert status.success?
      exported = out.lines.map { |line| line.split.last }
      refute_empty exported, library
      assert_empty exported.grep(/\A_Z/), "#{library} exports C++ symbols"
    end
  end

  def test_no_start_up_code_but_the_identity_transformation
    # Sanitizers register every instrumented object from a constructor of their own.
    skip "instrumented build (#{ENV['QUILLMARK_SANITIZE']})" unless ENV.fetch("QUILLMARK_SANITIZE", "").empty?

    # Every dynamic initialiser the compiler emits is a _GLOBAL__sub_I_<file> function
    # referenced from .init_array; only the transformation's file may have one.
    out, status = Open3.capture2("nm", BUNDLE)
    assert status.success?
    initialisers = out.lines.map { |line| line.split.last }.grep(/\A_GLOBAL__sub_I_/)
    assert_empty initialisers.reject { |name| name.include?("geom_transformation") }

    sections, status = Open3.capture2("readelf", "-W", "-S", BUNDLE)
    assert status.success?
    init_array = sections.lines.find { |line| line.include?(".init_array") }
    entries = init_array ? init_array.split[init_array.split.index(".init_array") + 4].to_i(16) / 8 : 0
    # One entry belongs to the C runtime (frame_dummy); the rest are ours.
    assert_operator entries, :<=, 1 + initialisers.size
  end
end
