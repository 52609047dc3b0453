# frozen_string_literal: true

# Stand-in for the host's Sketchup::Color: four channels red, green, blue, alpha, each an
# Integer from 0 to 255.
module Sketchup
  class Color
    NAMED = {
      "black" => [0, 0, 0], "white" => [255, 255, 255], "red" => [255, 0, 0],
      "lime" => [0, 255, 0], "green" => [0, 128, 0], "blue" => [0, 0, 255],
      "yellow" => [255, 255, 0], "cyan" => [0, 255, 255], "magenta" => [255, 0, 255],
      "gray" => [128, 128, 128], "silver" => [192, 192, 192], "maroon" => [128, 0, 0],
      "olive" => [128, 128, 0], "purple" => [128, 0, 128], "teal" => [0, 128, 128],
      "navy" => [0, 0, 128], "orange" => [255, 165, 0], "brown" => [165, 42, 42],
      "pink" => [255, 192, 203], "gold" => [255, 215, 0]
    }.freeze

    def self.names
      NAMED.keys
    end

    # Color.new                       opaque black
    # Color.new(r, g, b) / (r, g, b, a)
    # Color.new(color)                a copy
    # Color.new([r, g, b]) / ([r, g, b, a])
    # Color.new(integer)              0xBBGGRR, red in the low byte; opaque
    # Color.new("red") / ("#ff0000")  a colour name, any case, or a hex triple
    def initialize(*args)
      channels =
        case args.size
        when 0 then [0, 0, 0]
        when 1 then from_one(args[0])
        when 3, 4 then args
        else raise ArgumentError, "wrong number of arguments (given #{args.size}, expected 0, 1, 3 or 4)"
        end
      @red, @green, @blue = channels[0, 3].map { |c| channel(c) }
      @alpha = channels.size == 4 ? channel(channels[3]) : 255
    end

    attr_reader :red, :green, :blue, :alpha

    %i[red green blue alpha].each do |name|
      define_method(:"#{name}=") { |value| instance_variable_set(:"@#{name}", channel(value)) }
    end

    def to_a
      [@red, @green, @blue, @alpha]
    end

    def to_i
      @red | (@green << 8) | (@blue << 16)
    end

    def ==(other)
      other.is_a?(Color) && to_a == other.to_a
    end

    def inspect
      "Color(#{to_a.map { |c| c.to_s.rjust(3) }.join(', ')})"
    end
    alias to_s inspect

    private

    def from_one(arg)
      case arg
      when Color
        arg.to_a
      when Array
        raise ArgumentError, "Expected an Array of 3 or 4 numbers" unless [3, 4].include?(arg.size)

        arg
      when Integer
        [arg & 0xFF, (arg >> 8) & 0xFF, (arg >> 16) & 0xFF]
      when String
        from_text(arg)
      else
        raise TypeError, "Cannot convert #{arg.class} to Sketchup::Color"
      end
    end

    def from_text(text)
      return text[1, 6].scan(/../).map { |pair| pair.to_i(16) } if text =~ /\A#\h{6}\z/

      NAMED.fetch(text.downcase) { raise ArgumentError, "Unknown color name: #{text}" }
    end

    # Integers are clamped to the byte range; Floats are read as 0.0 to 1.0 fractions.
    def channel(value)
      case value
      when Integer then [[value, 0].max, 255].min
      when Float then ([[value, 0.0].max, 1.0].min * 255).round
      else raise TypeError, "no implicit conversion of #{value.nil? ? 'nil' : value.class} into Integer"
      end
    end
  end
end
