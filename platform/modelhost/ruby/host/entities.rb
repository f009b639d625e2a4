require_relative "recorded"

module ModelHost
  class Entities
    include Observed

    def parent = _owner || _model
    def model = _model
    def ==(other) = other.is_a?(Entities) && _handle == other._handle
    alias eql? ==
    def hash = _handle.hash
    def deleted? = !valid?
    def at(index) = to_a[index]
    alias [] at
    def count(*arguments, &block) = arguments.empty? && !block ? length : super

    # Moves all of them as they stand; by a vector too.
    def transform_entities(by, *elements)
      _transform(Geom::Transformation.new(by), elements.flatten)
      true
    end

    # Each of so many elements by its own vector.
    def transform_by_vectors(elements, vectors)
      _model.history.edit { elements.zip(vectors) { |element, vector| transform_entities(vector, element) } }
      true
    end

    # Groups what is given; without anything an empty group.
    module Grouping
      def add_group(*elements)
        elements = elements.first.to_a if elements.size == 1 && !elements.first.is_a?(Entity)
        elements.empty? ? super() : _group(elements)
      end
    end
    prepend Grouping

    # What the host answers, and the model's observers for the root.
    module Erasing
      def clear!
        model = _model
        model._history&.tell(:model, :onEraseAll, model) if _owner.nil?
        super
        true
      end

      def erase_entities(*elements)
        super(elements.flatten)
        nil
      end

      def add_line(from, to) = super(from, to).first
      def add_edges(*points) = super(*(points.size == 1 ? points.first : points).map(&:to_a))
      def add_image(path, point, width, height = 0.0) = super(path, point.to_a, width, height)
    end
    prepend Erasing
  end
end
