require "modelhost"

module Geom
  # Lengths that differ by less are the same.
  TOLERANCE = 0.001

  # Three numbers; what points and vectors have in common.
  class Triple
    attr_accessor :x, :y, :z

    # Three numbers, or anything that has three.
    def initialize(x = 0.0, y = 0.0, z = 0.0)
      values = x.is_a?(Numeric) ? [x, y, z] : x.to_a
      @x, @y, @z = values.values_at(0, 1, 2).map { |value| (value || 0).to_f }
    end

    def to_a = [x, y, z]
    def [](index) = to_a[index]

    def []=(index, value)
      instance_variable_set(%i[@x @y @z].fetch(index), value.to_f)
    end

    def set!(x, y = 0.0, z = 0.0)
      initialize(x, y, z)
      self
    end

    def clone = self.class.new(x, y, z)
    def ==(other) = other.respond_to?(:to_a) && other.to_a.size == 3 && near?(other)
    def to_s = "(#{to_a.join(", ")})"
    def inspect = "#{self.class.name.split("::").last}(#{to_a.join(", ")})"

    # As the transformation makes it.
    def transform(by) = by * self
    def transform!(by) = set!(by * self)

    private

    def near?(other) = to_a.zip(other.to_a).all? { |a, b| (a - b).abs < TOLERANCE }
  end

  class Point3d < Triple
    def +(other) = Point3d.new(*to_a.zip(other.to_a).map(&:sum))

    # A vector from another point, or the point by a vector back.
    def -(other)
      difference = to_a.zip(other.to_a).map { |a, b| a - b }
      other.is_a?(Vector3d) ? Point3d.new(*difference) : Vector3d.new(*difference)
    end

    def distance(other) = (self - Point3d.new(other)).length
    def vector_to(other) = Point3d.new(other) - self

    def offset(vector, length = nil)
      by = Vector3d.new(vector)
      by.length = length if length
      self + by
    end

    def self.linear_combination(a, p, b, q) = new(*p.to_a.zip(q.to_a).map { |u, v| a * u + b * v })
  end

  class Vector3d < Triple
    def +(other) = Vector3d.new(*to_a.zip(other.to_a).map(&:sum))
    def -(other) = Vector3d.new(*to_a.zip(other.to_a).map { |a, b| a - b })
    def dot(other) = to_a.zip(other.to_a).sum { |a, b| a * b }
    def length = Math.sqrt(dot(self))
    def reverse = Vector3d.new(-x, -y, -z)
    def valid? = length > 0
    def unitvector? = (length - 1).abs < TOLERANCE
    def normalize = clone.normalize!

    def cross(other)
      a, b, c = other.to_a
      Vector3d.new(y * c - z * b, z * a - x * c, x * b - y * a)
    end

    # The product of two vectors; with a number there is none.
    alias * cross
    alias % dot

    def length=(to)
      factor = to / length
      set!(x * factor, y * factor, z * factor)
    end

    def normalize!
      self.length = 1.0 if valid?
      self
    end

    def angle_between(other) = Math.acos((self % other / (length * Vector3d.new(other).length)).clamp(-1.0, 1.0))
    def parallel?(other) = cross(other).length < TOLERANCE
    def perpendicular?(other) = dot(other).abs < TOLERANCE
    def samedirection?(other) = parallel?(other) && dot(other) > 0
  end

  # Grows with what is added to it; empty at first.
  class BoundingBox
    def initialize
      @points = []
    end

    def add(*points)
      points = points.first if points.size == 1 && points.first.is_a?(Array) && !points.first.first.is_a?(Numeric)
      points.each { |point| point.is_a?(BoundingBox) ? add_box(point) : @points << point.to_a.map(&:to_f) }
      @points = [fold(:min), fold(:max)] if @points.any?
      self
    end

    def empty? = @points.empty?
    def valid? = !empty?
    def min = Point3d.new(@points.first || [0, 0, 0])
    def max = Point3d.new(@points.last || [0, 0, 0])
    def center = Point3d.linear_combination(0.5, min, 0.5, max)
    def width = max.x - min.x
    def height = max.y - min.y
    def depth = max.z - min.z
    def diagonal = min.distance(max)
    def corner(n) = Point3d.new(*(0..2).map { |axis| (n[axis].zero? ? min : max)[axis] })
    def contains?(point) = point.to_a.each_with_index.all? { |v, axis| v.between?(min[axis], max[axis]) }
    def to_a = [min, max]
    def ==(other) = other.respond_to?(:to_a) && to_a == other.to_a

    private

    def add_box(box) = box.empty? ? self : add(box.min, box.max)
    def fold(by) = @points.transpose.map(&by)
  end

  Transformation = ModelHost::Transformation

  # The host's ways to make and to take apart a transformation.
  class Transformation
    class << self
      alias _new new
      alias _scaling scaling

      # Of 16 numbers, a point to move to, a factor, an origin with its z axis, or with its x and y
      # axes, three axes and an origin, or another transformation.
      def new(*arguments)
        first = arguments.first
        case arguments.size
        when 0 then _new
        when 1 then from_one(first)
        when 2 then axes(first, *plane_axes(arguments[1]))
        when 3 then axes(first, arguments[1], arguments[2], Vector3d.new(arguments[1]).cross(arguments[2]))
        when 4 then axes(arguments[3], *arguments.first(3))
        else raise ArgumentError, "a transformation is made of at most 4 things"
        end
      end

      def axes(origin, x, y, z) = _new([*x.to_a, 0, *y.to_a, 0, *z.to_a, 0, *origin.to_a, 1])

      def scaling(first, *factors)
        first.is_a?(Numeric) ? _scaling(first, *factors) : _scaling(first.to_a, *factors)
      end

      # `weight` from the first to the second, number by number.
      def interpolate(from, to, weight) = _new(from.to_a.zip(to.to_a).map { |a, b| a + (b - a) * weight })

      private

      def from_one(value)
        return scaling(value) if value.is_a?(Numeric)
        value.to_a.size == 16 ? _new(value.to_a) : translation(value)
      end

      def plane_axes(z)
        z = Vector3d.new(z).normalize
        x = Vector3d.new(0, 0, 1).cross(z)
        x = Vector3d.new(1, 0, 0) unless x.length > TOLERANCE
        x.normalize!
        [x, z.cross(x), z]
      end
    end

    alias _times *
    alias _origin origin

    def *(other)
      return _times(other) if other.is_a?(Transformation)
      return turn(other) if other.is_a?(Vector3d)
      return _times(other) if other.to_a.size == 16
      moved = _times(other.to_a)
      other.is_a?(Array) ? moved : Point3d.new(moved)
    end

    def origin = Point3d.new(_origin)
    def xaxis = axis(0)
    def yaxis = axis(4)
    def zaxis = axis(8)
    def clone = self.class.new(to_a)
    def identity? = to_a.each_with_index.all? { |value, i| (value - (i % 5 == 0 ? 1 : 0)).abs < 1e-12 }

    # Of one that does not flatten.
    def inverse
      a = to_a
      x, y, z = [0, 4, 8].map { |i| Vector3d.new(*a[i, 3]) }
      size = x.dot(y.cross(z))
      raise ArgumentError, "a transformation that flattens has no inverse" if size.zero?
      rows = [y.cross(z), z.cross(x), x.cross(y)].map { |v| v.to_a.map { |c| c * a[15] / size } }
      back = rows.map { |row| -row.zip(a[12, 3]).sum { |u, v| u * v } / a[15] }
      self.class.new([*rows.transpose.flat_map { |column| [*column, 0] }, *back, 1])
    end

    private

    def axis(first) = Vector3d.new(*to_a[first, 3])

    def turn(vector)
      a = to_a
      Vector3d.new(*(0..2).map { |r| a[r] * vector.x + a[r + 4] * vector.y + a[r + 8] * vector.z })
    end
  end
end

ORIGIN = Geom::Point3d.new(0, 0, 0)
X_AXIS = Geom::Vector3d.new(1, 0, 0)
Y_AXIS = Geom::Vector3d.new(0, 1, 0)
Z_AXIS = Geom::Vector3d.new(0, 0, 1)
IDENTITY = Geom::Transformation.new
