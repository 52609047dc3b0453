# frozen_string_literal: true

# Stand-in for the host's Geom module: the value classes the bridge reads and makes, with
# the host's constructors, readers and the conversions to and from plain Arrays.
module Geom
  # Host numbers are read as Floats; anything that is not Numeric is refused the way the
  # host's own argument conversion refuses it.
  def self.float(value)
    unless value.is_a?(Numeric)
      raise TypeError, "no implicit conversion to float from #{value.nil? ? 'nil' : value.class}"
    end

    value.to_f
  end

  # The three coordinates of anything the host accepts where a point or vector is expected:
  # a Point3d, a Vector3d, or an Array of 2 or 3 numbers (z defaults to 0).
  def self.coordinates(value)
    case value
    when Point3d, Vector3d
      value.to_a
    when Array
      unless value.size == 2 || value.size == 3
        raise ArgumentError, "Cannot convert argument to Geom::Point3d"
      end

      x, y, z = value
      [float(x), float(y), z.nil? ? 0.0 : float(z)]
    else
      raise TypeError, "Cannot convert argument to Geom::Point3d"
    end
  end

  # Shared shape of Point3d and Vector3d: three Float coordinates.
  module Triple
    def initialize(*args)
      case args.size
      when 0 then @x = @y = @z = 0.0
      when 1 then @x, @y, @z = Geom.coordinates(args[0])
      when 2, 3 then @x, @y, @z = Geom.coordinates(args)
      else raise ArgumentError, "wrong number of arguments (given #{args.size}, expected 0..3)"
      end
    end

    attr_reader :x, :y, :z

    def x=(value)
      @x = Geom.float(value)
    end

    def y=(value)
      @y = Geom.float(value)
    end

    def z=(value)
      @z = Geom.float(value)
    end

    def [](index)
      to_a.fetch(index) { raise IndexError, "index #{index} out of range" }
    end

    def to_a
      [@x, @y, @z]
    end

    def ==(other)
      other.is_a?(Triple) || other.is_a?(Array) ? to_a == Geom.coordinates(other) : false
    end

    def inspect
      "#{self.class.name.split('::').last}(#{@x}, #{@y}, #{@z})"
    end
    alias to_s inspect
  end

  class Point3d
    include Triple

    def +(other)
      Point3d.new(to_a.zip(Geom.coordinates(other)).map { |a, b| a + b })
    end

    def -(other)
      diff = to_a.zip(Geom.coordinates(other)).map { |a, b| a - b }
      other.is_a?(Point3d) ? Vector3d.new(diff) : Point3d.new(diff)
    end
  end

  class Vector3d
    include Triple

    def length
      Math.sqrt(@x * @x + @y * @y + @z * @z)
    end
  end

  # A 4x4 matrix kept as the host keeps it: 16 Floats, column after column, so elements 12,
  # 13 and 14 are the translation and element 15 the weight of the origin column.
  class Transformation
    IDENTITY_ARRAY = [1.0, 0.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0,
                      0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 0.0, 1.0].freeze

    # Transformation.new                  identity
    # Transformation.new(transformation)  a copy
    # Transformation.new(array)           16 numbers, column-major
    # Transformation.new(point)           a translation (Point3d, Vector3d or 3 numbers)
    # Transformation.new(scale)           a uniform scaling, kept in the weight as the host does
    def initialize(*args)
      case args.size
      when 0
        @values = IDENTITY_ARRAY.dup
      when 1
        @values = from_one(args[0])
      else
        raise ArgumentError, "wrong number of arguments (given #{args.size}, expected 0..1)"
      end
    end

    def self.translation(vector)
      new(Geom.coordinates(vector))
    end

    # Transformation.scaling(s) or Transformation.scaling(sx, sy, sz): scale factors on the
    # diagonal, weight 1.
    def self.scaling(*factors)
      factors = factors * 3 if factors.size == 1
      raise ArgumentError, "Expected 1 or 3 scale factors" unless factors.size == 3

      values = IDENTITY_ARRAY.dup
      factors.each_with_index { |f, i| values[i * 5] = Geom.float(f) }
      new(values)
    end

    def to_a
      @values.dup
    end

    def origin
      w = @values[15]
      Point3d.new(@values[12] / w, @values[13] / w, @values[14] / w)
    end

    def xaxis
      Vector3d.new(@values[0, 3])
    end

    def yaxis
      Vector3d.new(@values[4, 3])
    end

    def zaxis
      Vector3d.new(@values[8, 3])
    end

    def identity?
      @values == IDENTITY_ARRAY
    end

    def ==(other)
      other.is_a?(Transformation) && to_a == other.to_a
    end

    def inspect
      "Transformation(#{@values.join(', ')})"
    end

    private

    def from_one(arg)
      case arg
      when Transformation
        arg.to_a
      when Numeric
        scale = Geom.float(arg)
        raise ArgumentError, "Scale cannot be zero" if scale.zero?

        values = IDENTITY_ARRAY.dup
        values[15] = 1.0 / scale
        values
      when Array
        return arg.map { |v| Geom.float(v) } if arg.size == 16
        return translation_values(Geom.coordinates(arg)) if arg.size == 2 || arg.size == 3

        raise ArgumentError, "Expected an Array of 16 numbers or a point"
      when Point3d, Vector3d
        translation_values(arg.to_a)
      else
        raise TypeError, "Cannot convert #{arg.class} to Geom::Transformation"
      end
    end

    def translation_values(offset)
      values = IDENTITY_ARRAY.dup
      values[12, 3] = offset
      values
    end
  end

  # An axis-aligned box that starts empty and grows to hold every point added. An empty box
  # reports the host's sentinel corners: min at +1e30, max at -1e30 on every axis.
  class BoundingBox
    EMPTY_MIN = 1.0e30
    EMPTY_MAX = -1.0e30

    def initialize
      clear
    end

    def clear
      @min = [EMPTY_MIN] * 3
      @max = [EMPTY_MAX] * 3
      self
    end

    def empty?
      (0..2).any? { |i| @max[i] < @min[i] }
    end
    alias valid_empty? empty?

    def valid?
      !empty?
    end

    # add(point, ...), add([point, ...]) or add(bounding_box, ...); answers self.
    def add(*items)
      items = items[0] if items.size == 1 && items[0].is_a?(Array) && !items[0][0].is_a?(Numeric)
      items.each do |item|
        if item.is_a?(BoundingBox)
          next if item.empty?

          grow(item.min.to_a)
          grow(item.max.to_a)
        else
          grow(Geom.coordinates(item))
        end
      end
      self
    end

    def min
      Point3d.new(@min)
    end

    def max
      Point3d.new(@max)
    end

    def center
      return Point3d.new if empty?

      Point3d.new((0..2).map { |i| (@min[i] + @max[i]) / 2.0 })
    end

    def contains?(point)
      c = Geom.coordinates(point)
      (0..2).all? { |i| c[i] >= @min[i] && c[i] <= @max[i] }
    end

    private

    def grow(coordinates)
      coordinates.each_with_index do |c, i|
        @min[i] = c if c < @min[i]
        @max[i] = c if c > @max[i]
      end
    end
  end

  # Points and polygons by 1-based index, as the host numbers them; a negative index in a
  # polygon marks a hidden edge.
  class PolygonMesh
    def initialize(_point_capacity = 0, _polygon_capacity = 0)
      @points = []
      @polygons = []
    end

    # Answers the index of the point, reusing an equal one already in the mesh.
    def add_point(point)
      coordinates = Geom.coordinates(point)
      found = @points.index(coordinates)
      return found + 1 if found

      @points << coordinates
      @points.size
    end

    def point_index(point)
      found = @points.index(Geom.coordinates(point))
      found ? found + 1 : 0
    end

    # add_polygon(point, point, point, ...) or add_polygon(index, index, index, ...), or
    # either kind in one Array; answers the polygon's index.
    def add_polygon(*items)
      items = items[0] if items.size == 1 && items[0].is_a?(Array)
      raise ArgumentError, "A polygon needs at least 3 points" if items.size < 3

      @polygons << items.map { |item| item.is_a?(Integer) ? item : add_point(item) }
      @polygons.size
    end

    def count_points
      @points.size
    end

    def count_polygons
      @polygons.size
    end

    def point_at(index)
      coordinates = @points[index.abs - 1]
      coordinates && index != 0 ? Point3d.new(coordinates) : nil
    end

    def points
      @points.map { |c| Point3d.new(c) }
    end

    def polygon_at(index)
      polygon = @polygons[index - 1]
      polygon && index > 0 ? polygon.dup : nil
    end

    def polygons
      @polygons.map(&:dup)
    end

    def polygon_points_at(index)
      polygon = polygon_at(index)
      polygon && polygon.map { |i| point_at(i) }
    end
  end
end
