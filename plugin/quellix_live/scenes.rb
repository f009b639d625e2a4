module QuellixLive
  # The model's pages and its date, as the renderer asks for them.
  module Scenes
    module_function

    # 21 values a page: its name, camera (10), whether it shows shadows, date and time (6), sun (3).
    def table(model)
      model.pages.flat_map do |page|
        camera = page.use_camera? ? page.camera : model.active_view.camera
        info = page.use_shadow_info? ? page.shadow_info : model.shadow_info
        [page.name, *Camera.values(camera).flatten, info["DisplayShadows"] ? 1 : 0, *date(info), *sun(info)]
      end
    end

    # The direction towards the sun, year, month, day, hour, minute, second, and whether shadows show.
    def shadow(info) = [*sun(info), *date(info), info["DisplayShadows"] ? 1 : 0]

    # The host keeps the model's local time as if it were universal time.
    def date(info) = info["ShadowTime"].getutc.then { |time| [time.year, time.month, time.day, time.hour, time.min, time.sec] }

    # Sets date and time from six numbers.
    def set_date(info, numbers) = info["ShadowTime"] = Time.utc(*numbers.map(&:to_i))

    def sun(info) = info["SunDirection"].to_a.map(&:to_f)
  end
end
