require_relative "camera"
require_relative "shadow_info"

module ModelHost
  # A scene: what it keeps of the model's view, and which of that it shows again.
  class Page
    # What is kept, by the flag that chooses it.
    PARTS = { camera: 1, rendering_options: 2, shadow_info: 4, hidden: 16, hidden_layers: 32 }.freeze

    attr_reader :camera, :shadow_info, :rendering_options

    def initialize(pages, name, flags)
      @pages = pages
      @values = { name: name, description: "", label: name, transition_time: -1.0, delay_time: -1.0,
                  include_in_animation?: true }
      PARTS.each { |part, bit| @values[:"use_#{part}?"] = (flags & bit).positive? }
      @attributes = {}
      keep(flags)
    end

    def model = @pages.model
    def parent = @pages
    def valid? = @pages.include?(self)
    def deleted? = !valid?
    def layers = @hidden_layers.select(&:valid?)

    %i[name description label transition_time delay_time include_in_animation? use_camera? use_rendering_options?
       use_shadow_info? use_hidden? use_hidden_layers?].each do |key|
      define_method(key) { @values[key] }
      define_method(:"#{key.to_s.delete_suffix("?")}=") { |value| swap(@values, key, value) }
    end

    # Keeps what the model shows now of these parts.
    def update(flags = PAGE_USE_ALL)
      model.history.edit do
        former = snapshot
        keep(flags)
        other = snapshot
        restore(former)
        model.history.apply do
          other = snapshot.tap { restore(other) }
          @pages._changed
        end
      end
      true
    end

    def get_attribute(dictionary, key, default = nil) = @attributes.fetch([dictionary, key], default)
    def set_attribute(dictionary, key, value) = swap(@attributes, [dictionary, key], value)

    # Makes the model look as it says.
    def _show
      view, history = model.active_view, model.history
      view.camera = camera if use_camera?
      history.edit do
        model.shadow_info.set(shadow_info.to_h) if use_shadow_info?
        @rendering_options.each { |key, value| set_option(key, value) } if use_rendering_options?
        show_layers if use_hidden_layers?
      end
    end

    private

    def swap(values, key, value)
      other = value
      model.history.apply do
        other, values[key] = values[key], other
        @pages._changed
      end
    end

    def keep(flags)
      chosen = ->(part, now) { (flags & PARTS.fetch(part)).positive? || now.nil? }
      options = model.rendering_options
      @camera = model.active_view.camera._copy if chosen[:camera, @camera]
      @shadow_info = ShadowInfo.new(nil, model.shadow_info.to_h) if chosen[:shadow_info, @shadow_info]
      @rendering_options = options.each_pair.to_h if chosen[:rendering_options, @rendering_options]
      @hidden_layers = model.layers.reject(&:visible?) if chosen[:hidden_layers, @hidden_layers]
    end

    def snapshot = [@camera, @shadow_info, @rendering_options, @hidden_layers]
    def restore(parts) = (@camera, @shadow_info, @rendering_options, @hidden_layers = parts)

    def set_option(key, value)
      options = model.rendering_options
      options[key] = value unless options[key] == value
    end

    def show_layers
      model.layers.each do |layer|
        visible = !@hidden_layers.include?(layer)
        layer.visible = visible unless layer.visible? == visible
      end
    end
  end
end
