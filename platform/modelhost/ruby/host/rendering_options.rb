require_relative "color"
require_relative "history"

module ModelHost
  class RenderingOptions
    include Observed

    alias _get []
    alias _set []=

    def _observed = :options
    def model = _model
    def each_pair(&block) = keys.map { |key| [key, self[key]] }.each(&block)
    alias each each_pair
    def length = keys.length
    alias size length

    # Colours as the host's.
    def [](key)
      value = _get(key)
      value.is_a?(Array) ? Sketchup::Color.new(value) : value
    end

    def []=(key, value)
      raise ArgumentError, "there is no rendering option #{key}" unless keys.include?(key)
      value = Sketchup::Color.new(value).to_a if _get(key).is_a?(Array)
      other = value
      _model.history.apply do
        now = _get(key)
        _set(key, other)
        other = now
        _model.history.tell(:options, :onRenderingOptionsChanged, self, keys.index(key))
      end
    end
  end
end
