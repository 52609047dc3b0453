# frozen_string_literal: true

# Quillmark hands keyboard focus back to the host's main document window: here with real
# AppKit windows (GNUstep's) on an X display.
#
#   DISPLAY=:N ruby -I <gnustep build>/lib examples/demo_gnustep.rb [screenshot folder]
#
# The Ruby process plays the host application: it opens a second document window, the main
# document window with a toolbar, a floating panel with a toolbar and a palette without one,
# each in front of the last; clicks the second document window, so that it is key; requires
# the bundle and asks it to focus
# the main window. With a folder given it writes the screen before and after into it, as
# PPM files. The desktop library is driven through Fiddle, in the very
# instance the bundle calls (QUILLMARK_DESKTOP_LIB names it, as in examples/demo.rb).

require "fiddle"
require "fiddle/import"
require "fileutils"
require_relative "../ext-cpp/platform/host_ruby/sketchup"

# The GNUstep desktop's control functions (desktop_gnustep_control.h).
module Desktop
  extend Fiddle::Importer

  PANEL = 1
  TOOLBAR = 2
  FLOATING_WINDOW_LEVEL = 2 # NSFloatingWindowLevel

  def self.load(library)
    dlload Fiddle.dlopen(library)
    extern "int desktop_gnustep_start()"
    extern "long desktop_gnustep_open_window(const char*, double, double, double, double, long, int)"
    extern "void desktop_gnustep_make_key(long)"
    extern "void desktop_gnustep_close_all()"
    extern "void desktop_gnustep_turn_run_loop(double)"
    extern "long desktop_gnustep_key_window_number()"
    extern "long desktop_gnustep_live_cf_objects()"
    extern "int desktop_gnustep_write_screenshot(const char*)"
  end
end

# The screen as a PPM file (scripts/demo.sh turns it into a PNG). Written by the library:
# GNUstep reaps child processes itself, so this interpreter could not wait for an xwd.
def screenshot(folder, name)
  return nil unless folder
  FileUtils.mkdir_p(folder)
  path = File.join(folder, "#{name}.ppm")
  Desktop.desktop_gnustep_write_screenshot(path) == 1 ? path : "(could not be written)"
end

# Lets AppKit hear back from the X server: focus changes arrive as events.
def settle
  Desktop.desktop_gnustep_turn_run_loop(0.5)
end

$stdout.sync = true
preloaded = ENV["QUILLMARK_DESKTOP_LIB"]
Desktop.load(preloaded) if preloaded
require "bin_Quillmark"
Desktop.load("libquillmark_desktop_gnustep.so") unless preloaded

abort "demo: no X display (DISPLAY=#{ENV['DISPLAY'].inspect})" unless Desktop.desktop_gnustep_start == 1
folder = ARGV[0]

# Back to front; positions in AppKit's screen coordinates (from the bottom left).
# Every title bar stays in sight, so the screenshots show which window is key.
layout = [
  ["garden.skp - second window", [480, 208, 520, 310], 0, Desktop::TOOLBAR],
  ["house.skp - main window", [120, 288, 440, 310], 0, Desktop::TOOLBAR],
  ["Layers - floating panel", [620, 28, 260, 140], Desktop::FLOATING_WINDOW_LEVEL,
   Desktop::PANEL | Desktop::TOOLBAR],
  ["Materials - palette", [20, 348, 200, 360], 0, Desktop::PANEL]
]
titles = {}
layout.each do |title, (x, y, width, height), level, flags|
  number = Desktop.desktop_gnustep_open_window(title, x, y, width, height, level, flags)
  raise "could not open #{title}" if number.zero?
  titles[number] = title
end
# Clicked through once, front to back, so that every title bar shows its window's real state
# (GNUstep draws a window that was never key with a key window's title bar), then the second
# document is clicked last.
titles.keys.reverse_each do |number|
  Desktop.desktop_gnustep_make_key(number)
  settle
end
Desktop.desktop_gnustep_make_key(titles.key("garden.skp - second window"))
settle

describe = lambda do |number|
  number.zero? ? "none" : "##{number} #{titles.fetch(number, '(a window of its own)')}"
end

puts "GNUstep windows of this process, front to back:"
layout.reverse_each do |title, _frame, level, flags|
  traits = [(flags & Desktop::PANEL).zero? ? "window" : "panel",
            (flags & Desktop::TOOLBAR).zero? ? "no toolbar" : "toolbar", "level #{level}"]
  puts format("  #%-3d %-28s %s", titles.key(title), title, traits.join(", "))
end
puts "[NSApp keyWindow] before: #{describe.call(Desktop.desktop_gnustep_key_window_number)}"
before = screenshot(folder, "before")

live_before = Desktop.desktop_gnustep_live_cf_objects
answer = Quillmark.focus_on_sketchup_window
settle
puts "Quillmark.focus_on_sketchup_window => #{answer.inspect}"
puts "[NSApp keyWindow] after: #{describe.call(Desktop.desktop_gnustep_key_window_number)}"
puts "Window-list objects left over: #{Desktop.desktop_gnustep_live_cf_objects - live_before}"
after = screenshot(folder, "after")
if folder
  puts "Screenshot before: #{before}"
  puts "Screenshot after:  #{after}"
end
Desktop.desktop_gnustep_close_all
settle
