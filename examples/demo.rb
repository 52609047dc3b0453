# frozen_string_literal: true

# Quillmark hands keyboard focus back to the host's main document window.
#
#   ruby -I <build>/lib examples/demo.rb
#
# The Ruby process plays the host application: it loads the host's Ruby classes, lays out a
# simulated desktop with windows of its own and of other applications, requires the built
# bundle and asks it to focus the main window. The desktop is driven through Fiddle, in the
# very library instance the bundle calls. Set QUILLMARK_DESKTOP_LIB to the path of
# libquillmark_desktop.so to load it from there; otherwise it is found by name once the
# bundle has loaded it.

require "fiddle"
require "fiddle/import"
require_relative "../ext-cpp/platform/host_ruby/sketchup"

# The desktop stand-in's control functions (desktop_control.h).
module Desktop
  extend Fiddle::Importer

  ON_SCREEN = 1
  DESKTOP_ELEMENT = 2
  KNOWN_TO_APP = 4
  TOOLBAR = 8

  CALL_MAKE_KEY_WINDOW = 1

  def self.load(library)
    dlload Fiddle.dlopen(library)
    extern "void desktop_reset()"
    extern "int desktop_add_window(int, unsigned int, long, int)"
    extern "unsigned int desktop_key_window_number()"
    extern "long desktop_call_count(int)"
    extern "long desktop_live_cf_objects()"
  end
end

Window = Struct.new(:number, :name, :pid, :level, :flags) do
  def describe(own_pid)
    owner = pid == own_pid ? "this process" : "pid #{pid}"
    traits = []
    traits << "off screen" if (flags & Desktop::ON_SCREEN).zero?
    traits << "desktop element" if (flags & Desktop::DESKTOP_ELEMENT).nonzero?
    traits << "no window object" if (flags & Desktop::KNOWN_TO_APP).zero?
    traits << ((flags & Desktop::TOOLBAR).nonzero? ? "toolbar" : "no toolbar")
    format("  #%-4d %-30s %-14s level %-3d %s", number, name, owner, level, traits.join(", "))
  end
end

def lay_out(windows)
  Desktop.desktop_reset
  windows.each do |w|
    added = Desktop.desktop_add_window(w.pid, w.number, w.level, w.flags)
    raise "window number #{w.number} refused" unless added == 1
  end
end

def focus(title, windows)
  own_pid = Process.pid
  lay_out(windows)
  puts title
  puts "Desktop, front to back:"
  windows.each { |w| puts w.describe(own_pid) }

  live_before = Desktop.desktop_live_cf_objects
  answer = Quillmark.focus_on_sketchup_window
  key = Desktop.desktop_key_window_number
  key_window = windows.find { |w| w.number == key }

  puts "Quillmark.focus_on_sketchup_window => #{answer.inspect}"
  puts "Key window: #{key_window ? "##{key} #{key_window.name}" : 'none'}"
  puts "Windows made key: #{Desktop.desktop_call_count(Desktop::CALL_MAKE_KEY_WINDOW)}; " \
       "CF objects left over: #{Desktop.desktop_live_cf_objects - live_before}"
  puts
end

# Opening the library before the bundle makes the bundle bind to this very instance (the
# loader matches it by name); opening it by name afterwards finds the bundle's own copy.
preloaded = ENV["QUILLMARK_DESKTOP_LIB"]
Desktop.load(preloaded) if preloaded
require "bin_Quillmark"
Desktop.load("libquillmark_desktop.so") unless preloaded

pid = Process.pid
other = pid + 1
main = Desktop::ON_SCREEN | Desktop::KNOWN_TO_APP | Desktop::TOOLBAR

focus("A model open behind the host's palettes", [
  Window.new(201, "Materials palette", pid, 0, main & ~Desktop::TOOLBAR),
  Window.new(202, "Layers panel (floating)", pid, 3, main),
  Window.new(301, "Notes - document", other, 0, main),
  Window.new(203, "house.skp - main window", pid, 0, main),
  Window.new(204, "garden.skp - second window", pid, 0, main),
  Window.new(302, "Desktop picture", other, -1, Desktop::ON_SCREEN | Desktop::DESKTOP_ELEMENT)
])

focus("Only palettes on screen, the main window minimised", [
  Window.new(201, "Materials palette", pid, 0, main & ~Desktop::TOOLBAR),
  Window.new(202, "Layers panel (floating)", pid, 3, main),
  Window.new(203, "house.skp - main window", pid, 0, main & ~Desktop::ON_SCREEN),
  Window.new(301, "Notes - document", other, 0, main)
])
