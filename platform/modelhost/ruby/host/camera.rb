require_relative "geom"

module Sketchup
  # Where a view is seen from. That of a view is live: a change of it moves the view.
  class Camera
    attr_reader :eye, :target, :up, :fov, :height, :aspect_ratio
    attr_accessor :description

    def initialize(eye = [0, 0, 0], target = [0, 0, -1], up = [0, 1, 0], perspective = true, fov = 30.0)
      @perspective = perspective
      @fov = fov.to_f
      @height = 100.0
      @aspect_ratio = 0.0
      @description = ""
      place(eye, target, up)
    end

    # Whose camera it is, told of each change; nil for nobody's.
    attr_writer :_view

    def perspective? = @perspective
    def direction = (target - eye).normalize
    def xaxis = (direction * up).normalize
    def yaxis = xaxis * direction
    def zaxis = direction
    # The angle of view is the vertical one.
    def fov_is_height? = true

    def set(eye, target, up)
      place(eye, target, up)
      moved
    end

    { perspective: ->(value) { value ? true : false }, fov: ->(value) { value.to_f }, height: ->(value) { value.to_f },
      aspect_ratio: ->(value) { value.to_f } }.each do |name, take|
      define_method(:"#{name}=") do |value|
        instance_variable_set(:"@#{name}", take.call(value))
        moved
      end
    end

    def ==(other) = other.is_a?(Camera) && _values == other._values
    def _values = [eye, target, up].map(&:to_a) + [perspective?, fov, height, aspect_ratio]

    # As another one is.
    def _take(other)
      eye, target, up, *rest = other._values
      place(eye, target, up)
      @perspective, @fov, @height, @aspect_ratio = rest
      moved
    end

    # One that is nobody's.
    def _copy = Camera.new._take(self)

    private

    def place(eye, target, up)
      eye, target = Geom::Point3d.new(eye), Geom::Point3d.new(target)
      raise ArgumentError, "eye and target are one point" unless eye.distance(target) > 0
      @eye, @target = eye, target
      @up = Geom::Vector3d.new(up).normalize
    end

    def moved
      @_view&._moved
      self
    end
  end
end
