module Sketchup
  # Four parts from 0 to 255.
  class Color
    NAMES = { "black" => 0x000000, "white" => 0xffffff, "red" => 0xff0000, "lime" => 0x00ff00, "green" => 0x008000,
              "blue" => 0x0000ff, "yellow" => 0xffff00, "gray" => 0x808080 }.freeze

    attr_accessor :red, :green, :blue, :alpha

    # Of three or four parts, a list of them, 0xrrggbb, "#rrggbb" or one of some names.
    def initialize(*parts)
      parts = parts.first.to_a if parts.size == 1 && parts.first.respond_to?(:to_a)
      parts = bytes(parts.first) if parts.size == 1
      raise ArgumentError, "a colour has 3 or 4 parts" unless parts.empty? || [3, 4].include?(parts.size)
      parts = parts.map { |part| part.is_a?(Float) ? (part * 255).round : part }
      @red, @green, @blue, @alpha = *parts, *[0, 0, 0, 255].drop(parts.size)
    end

    def to_a = [red, green, blue, alpha]
    def to_i = red | green << 8 | blue << 16
    def [](index) = to_a[index]
    def ==(other) = other.respond_to?(:to_a) && to_a == other.to_a
    alias eql? ==
    def hash = to_a.hash
    def to_s = "Color(#{to_a.join(", ")})"
    alias inspect to_s

    private

    def bytes(value)
      number = NAMES[value.to_s.downcase] || (value.is_a?(Integer) ? value : Integer(value.to_s.delete_prefix("#"), 16))
      [number >> 16 & 255, number >> 8 & 255, number & 255]
    end
  end
end
