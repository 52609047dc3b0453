# frozen_string_literal: true

# The demo as a user runs it: with the desktop library named in QUILLMARK_DESKTOP_LIB
# (loaded before the bundle) and without it (found by name after the bundle loaded it).
# Either way the script must drive the instance the bundle calls, or no window becomes key.

require "minitest/autorun"
require "open3"
require "rbconfig"

class DemoTest < Minitest::Test
  DEMO = File.expand_path("../../../examples/demo.rb", __dir__)

  def run_demo(env)
    out, err, status = Open3.capture3(env, RbConfig.ruby, "-I", ENV.fetch("QUILLMARK_BUNDLE_DIR"), DEMO)
    assert status.success?, "demo failed (#{status}):\n#{err}"
    out.split("\n\n").map { |scenario| scenario.lines.map(&:chomp) }
  end

  def check(scenarios)
    assert_equal 2, scenarios.size
    scenarios.zip(%w[true false], ["#203 house.skp - main window", "none"], [1, 0]) do |lines, answer, key, made|
      assert_includes lines, "Quillmark.focus_on_sketchup_window => #{answer}"
      assert_includes lines, "Key window: #{key}"
      assert_includes lines, "Windows made key: #{made}; CF objects left over: 0"
    end
  end

  def test_with_the_library_path_given
    check(run_demo("QUILLMARK_DESKTOP_LIB" => ENV.fetch("QUILLMARK_DESKTOP_LIB")))
  end

  def test_with_the_library_found_through_the_bundle
    check(run_demo("QUILLMARK_DESKTOP_LIB" => nil))
  end
end
