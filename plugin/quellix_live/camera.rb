module QuellixLive
  # The view as the renderer takes it: eye, target, up, the vertical field of view in degrees, and the
  # direction towards the sun, which is zero while the model shows no shadows.
  module Camera
    # A parallel projection is seen from afar through so narrow a view.
    NARROW_DEGREES = 1.0

    module_function

    # [eye, target, up, degrees], the vectors with three Floats each.
    def values(camera, aspect = 1.0)
      eye, target, up = [camera.eye, camera.target, camera.up].map(&:to_a)
      return [eye, target, up, vertical(camera, aspect)] if camera.perspective?
      distance = camera.height / 2.0 / Math.tan(NARROW_DEGREES.degrees / 2.0)
      back = camera.direction.to_a.zip(target).map { |step, from| from - step * distance }
      [back, target, up, NARROW_DEGREES]
    end

    # The sun that goes with it.
    def sun(shadow_info)
      shadow_info["DisplayShadows"] ? shadow_info["SunDirection"].to_a.map(&:to_f) : [0.0, 0.0, 0.0]
    end

    # What the camera methods of the link take.
    def arguments(model)
      view = model.active_view
      [*values(view.camera, view.vpwidth.fdiv([view.vpheight, 1].max)), sun(model.shadow_info)]
    end

    # A camera of the ten numbers that the renderer sends.
    def from(numbers)
      eye, target, up = numbers.first(9).each_slice(3).to_a
      Sketchup::Camera.new(eye, target, up, true, numbers[9])
    end

    # The ten floats of the background: the sky's colour, and nothing else that this link knows of.
    def background(model)
      options = model.rendering_options
      color = options[options["DrawHorizon"] ? "SkyColor" : "BackgroundColor"]
      [*color.to_a.first(3).map { |part| part / 255.0 }, *[0] * 7]
    end

    def vertical(camera, aspect)
      return camera.fov if !camera.respond_to?(:fov_is_height?) || camera.fov_is_height?
      (2 * Math.atan(Math.tan(camera.fov.degrees / 2) / aspect)).radians
    end
  end
end
