require_relative "geom"
require_relative "history"

module ModelHost
  # Date, time and place of a model, and how its shadows look. The time is the place's own, kept as if
  # it were universal time.
  class ShadowInfo
    include Observed

    DEFAULTS = {
      "City" => "Boulder (CO)", "Country" => "USA", "Latitude" => 40.018309, "Longitude" => -105.242139,
      "TZOffset" => -7.0, "NorthAngle" => 0.0, "DisplayShadows" => false, "DisplayOnAllFaces" => true,
      "DisplayOnGroundPlane" => true, "DisplayNorth" => false, "UseSunForAllShading" => false, "Light" => 80,
      "Dark" => 45, "EdgesCastShadows" => false, "ShadowTime_time_t" => Time.utc(2026, 11, 8, 13, 30).to_i
    }.freeze
    WORKED_OUT = %w[ShadowTime SunDirection DayOfYear].freeze

    # What an observer is told that has changed.
    TIME_OR_PLACE = 0
    SHOWN = 1
    LOOK = 2

    # `model` is nil for those of a page, which are nobody's.
    def initialize(model, values = DEFAULTS)
      @model = model
      @values = values.dup
    end

    def _model = @model
    def model = @model
    def _observed = :shadow
    def keys = @values.keys + WORKED_OUT
    def values = keys.map { |key| self[key] }
    def each_pair(&block) = keys.map { |key| [key, self[key]] }.each(&block)
    alias each each_pair
    def length = keys.length
    alias size length
    # What others are made of.
    def to_h = @values.dup

    def [](key)
      case key
      when "ShadowTime" then time
      when "SunDirection" then sun_direction
      when "DayOfYear" then time.yday
      else @values[key]
      end
    end

    def []=(key, value)
      key, value = "ShadowTime_time_t", value.to_i if key == "ShadowTime"
      raise ArgumentError, "#{key} cannot be set" unless @values.key?(key)
      set(key => value)
    end

    # Several at once: one change for each that differs.
    def set(values)
      values.each do |key, value|
        next if @values[key] == value
        next @values[key] = value unless @model
        other = value
        @model.history.apply do
          other, @values[key] = @values[key], other
          @model.history.tell(:shadow, :onShadowInfoChanged, self, kind(key))
        end
      end
    end

    private

    def time = Time.at(@values["ShadowTime_time_t"]).utc

    def kind(key)
      return TIME_OR_PLACE if %w[City Country Latitude Longitude TZOffset NorthAngle ShadowTime_time_t].include?(key)
      key == "DisplayShadows" ? SHOWN : LOOK
    end

    # From the model towards the sun, by the declination and the equation of time to a few minutes of
    # arc; x is east and y north, turned by the angle of north.
    def sun_direction
      latitude, north = @values.values_at("Latitude", "NorthAngle").map(&:degrees)
      around = 2 * Math::PI * (time.yday - 81) / 364.0
      declination = 23.45.degrees * Math.sin(2 * Math::PI * (284 + time.yday) / 365.0)
      late = (9.87 * Math.sin(2 * around) - 7.53 * Math.cos(around) - 1.5 * Math.sin(around)) / 60
      hours = time.hour + time.min / 60.0 + time.sec / 3600.0 - @values["TZOffset"]
      turn = (hours + late - 12) * 15.degrees + @values["Longitude"].degrees
      east = -Math.cos(declination) * Math.sin(turn)
      up_north = Math.sin(declination) * Math.cos(latitude) - Math.cos(declination) * Math.sin(latitude) * Math.cos(turn)
      up = Math.sin(declination) * Math.sin(latitude) + Math.cos(declination) * Math.cos(latitude) * Math.cos(turn)
      Geom::Vector3d.new(east * Math.cos(north) + up_north * Math.sin(north),
                         up_north * Math.cos(north) - east * Math.sin(north), up)
    end
  end
end
