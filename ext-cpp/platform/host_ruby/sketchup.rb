# frozen_string_literal: true

# Stand-in for the host application's Ruby API: the modules, classes and constants the
# extension looks up when it loads, with switches for the host facts it reads (version,
# 64-bit flag). Load it before requiring the bundle.

# Switches for the simulated host. Change them before the bundle is required (or before
# the handle cache is filled again).
module HostStandin
  DEFAULT_VERSION = "17.2.2555"

  # Face point-classification constants, present from host version 9.
  FACE_POINT_CONSTANTS = {
    PointUnknown: 0, PointInside: 1, PointOnVertex: 2, PointOnEdge: 4,
    PointOnFace: 8, PointOutside: 16, PointNotOnPlane: 32
  }.freeze
  FACE_POINT_CONSTANTS_SINCE = 9

  class << self
    attr_reader :version, :is_64bit

    # The host version string, e.g. "8.0.4811" or "17.2.2555". Hosts older than 9 lack the
    # Sketchup::Face::Point* constants, so they come and go with the version.
    def version=(value)
      @version = value
      major = value.to_i
      FACE_POINT_CONSTANTS.each do |name, number|
        defined = Sketchup::Face.const_defined?(name, false)
        if major >= FACE_POINT_CONSTANTS_SINCE
          Sketchup::Face.const_set(name, number) unless defined
        elsif defined
          Sketchup::Face.send(:remove_const, name)
        end
      end
    end

    # What Sketchup.is_64bit? answers: true, any other value (a truthy non-true, say), or
    # :absent for a host that has no such method.
    def is_64bit=(value)
      @is_64bit = value
      singleton = Sketchup.singleton_class
      singleton.send(:remove_method, :is_64bit?) if singleton.instance_methods(false).include?(:is_64bit?)
      return if value == :absent

      singleton.send(:define_method, :is_64bit?) { HostStandin.is_64bit }
    end

    def reset
      self.version = DEFAULT_VERSION
      self.is_64bit = true
    end
  end
end

module Sketchup
  def self.version
    HostStandin.version
  end

  class Entity; end
  class Drawingelement < Entity; end
  class Group < Drawingelement; end
  class ComponentInstance < Drawingelement; end
  class ComponentDefinition < Drawingelement; end
  class Face < Drawingelement; end
  class Edge < Drawingelement; end
  class Text < Drawingelement; end
  class ConstructionPoint < Drawingelement; end
  class ConstructionLine < Drawingelement; end
  class Material < Entity; end
  class Entities
    include Enumerable
  end
  class Model; end
  class Camera; end
end

# The host's localisation helper; the extension only caches the class.
class LanguageHandler
  def initialize(file_name = nil)
    @file_name = file_name
    @strings = {}
  end

  def [](key)
    @strings.fetch(key, key)
  end
end

# OpenGL primitive constants, with OpenGL's own values.
GL_POINTS = 0x0000
GL_LINES = 0x0001
GL_LINE_LOOP = 0x0002
GL_LINE_STRIP = 0x0003
GL_TRIANGLES = 0x0004
GL_TRIANGLE_STRIP = 0x0005
GL_TRIANGLE_FAN = 0x0006
GL_QUADS = 0x0007
GL_QUAD_STRIP = 0x0008
GL_POLYGON = 0x0009

HostStandin.reset

%w[geom color entities].each do |part|
  path = File.join(__dir__, "#{part}.rb")
  require path if File.exist?(path)
end
