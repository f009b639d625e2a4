require_relative "camera"
require_relative "history"

module ModelHost
  # The window on a model.
  class View
    include Observed

    attr_reader :model, :camera
    # In pixels.
    attr_accessor :vpwidth, :vpheight

    def initialize(model)
      @model = model
      @vpwidth, @vpheight = 1920, 1080
      @camera = camera_of(model.camera)
      @camera._view = self
    end

    def _model = @model
    def _observed = :view
    def center = [vpwidth / 2.0, vpheight / 2.0]
    def corner(index) = [index.odd? ? vpwidth : 0, index > 1 ? vpheight : 0]
    def field_of_view = camera.fov
    def field_of_view=(degrees)
      camera.fov = degrees
    end

    # A camera, or one and the seconds that it takes to get there.
    def camera=(camera)
      @camera._take(Array(camera).first)
    end

    def refresh = self
    def invalidate = self

    # Moves the camera back or forth until the model, or what is given, fills the view.
    def zoom_extents = zoom(@model)

    def zoom(what)
      return zoom_by(what) if what.is_a?(Numeric)
      box = Geom::BoundingBox.new
      Array(what).each { |thing| box.add(thing.bounds) }
      return self if box.empty?
      distance = [box.diagonal / 2, 1.0].max / Math.sin(camera.fov.degrees / 2)
      camera.set(box.center.offset(camera.direction.reverse, distance), box.center, camera.up)
      self
    end

    # What a camera tells that has changed.
    def _moved
      @model._set_camera(camera.eye, camera.target, camera.up, camera.fov)
      @model.history.tell_now(:view, :onViewChanged, self)
    end

    private

    def zoom_by(factor)
      back = camera.eye - camera.target
      back.length = back.length / factor
      camera.set(camera.target + back, camera.target, camera.up)
      self
    end

    def camera_of(known)
      return Sketchup::Camera.new([-1000, -1000, 750], [0, 0, 0], [0, 0, 1], true, 35.0) unless known
      Sketchup::Camera.new(known[:eye], known[:target], known[:up], true, known[:fov])
    end
  end
end
