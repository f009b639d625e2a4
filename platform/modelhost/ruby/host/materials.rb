require_relative "color"
require_relative "recorded"

module ModelHost
  # Takes the host's colours.
  module Colored
    def color=(value)
      super(_plain(value))
    end

    def _plain(value) = value.nil? || value.is_a?(Array) ? value : Sketchup::Color.new(value).to_a
  end

  class Material
    module HostColor
      include Colored

      def color = Sketchup::Color.new(super)
    end
    prepend HostColor

    def display_name = name
    # The host's plain and textured materials, and those whose texture takes their colour.
    def materialType = texture.nil? ? 0 : 1
    def use_alpha? = alpha < 1
    def texture = _texture && Texture.new(self)
    def owner_type = 0
  end

  Edge.prepend(Colored)

  # The texture that a material has at the moment.
  class Texture
    attr_reader :material

    def initialize(material)
      @material = material
    end

    def filename = @material._texture[0]
    def width = @material._texture[1]
    def height = @material._texture[2]
    def image_width = @material._texture[3]
    def image_height = @material._texture[4]
    def valid? = @material.valid? && !@material._texture.nil?

    # A number or [width, height].
    def size=(size)
      width, height = size
      @material._set_texture_size(width, height || width.to_f * image_height / image_width)
    end
  end

  class Materials
    include Observed

    def _observed = :materials
    def model = _model
    def parent = _model
    def at(key) = self[key]
    def count(*arguments, &block) = arguments.empty? && !block ? length : super
    # The material that is painted with next.
    def current = _model._state[:material]

    def current=(material)
      _model._state[:material] = material
      _model._history&.tell_now(:materials, :onMaterialSetCurrent, self, material)
    end

    def unique_name(wish)
      return wish unless self[wish]
      (1..).lazy.map { |n| "#{wish}#{n}" }.find { |name| self[name].nil? }
    end
  end
end
