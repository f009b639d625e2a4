require_relative "attributes"
require_relative "geom"
require_relative "recorded"

# Entities one by one: faces, edges, instances and groups.
module ModelHost
  class Entity
    include Attributes
    include Observed

    def typename = self.class.name.split("::").last
  end

  # What the host answers where the binding has plain values.
  module HostValues
    module Parent
      # The definition that holds it, or the model.
      def parent
        entities = _among
        entities ? entities.parent : _model
      end
    end

    module Ends
      def start = Vertex.new(Geom::Point3d.new(super))
      def end = Vertex.new(Geom::Point3d.new(super))
    end

    module Bounds
      def bounds
        low, high = super
        box = Geom::BoundingBox.new
        low == high ? box : box.add(low, high)
      end
    end

    module Painted
      def material=(paint)
        super(_use(paint))
      end

      # A material, by its name too; observers of materials hear that its use has changed.
      def _use(paint)
        paint = _model.materials[paint] if paint.is_a?(String)
        _model._history&.tell(:materials, :onMaterialRefChange, _model.materials, paint) if paint
        paint
      end
    end

    module FaceValues
      def normal = Geom::Vector3d.new(super)

      def back_material=(paint)
        super(_use(paint))
      end

      # The host pairs points with points; only their u and v count.
      def position_material(paint, pairs, front = true)
        super(_use(paint), pairs.each_with_index.map { |pair, i| i.odd? ? pair.to_a.first(2) : pair.to_a }, front)
      end
    end
  end

  Entity.prepend(HostValues::Parent)
  Edge.prepend(HostValues::Ends)
  DrawingElement.prepend(HostValues::Bounds, HostValues::Painted)
  Entities.prepend(HostValues::Bounds)
  Model.prepend(HostValues::Bounds)
  Face.prepend(HostValues::FaceValues)

  # A corner as the host gives it.
  Vertex = Struct.new(:position) do
    def to_a = position.to_a
    def ==(other) = position == (other.is_a?(Vertex) ? other.position : other)
  end

  class Face
    def vertices = [points, *holes].flatten(1).map { |point| Vertex.new(Geom::Point3d.new(point)) }
    def outer_loop = Loop.new(points)
    def loops = [points, *holes].map { |outline| Loop.new(outline) }
    Loop = Struct.new(:points) do
      def vertices = points.map { |point| Vertex.new(Geom::Point3d.new(point)) }
    end
  end

  class Edge
    def vertices = [self.start, self.end]
    def length = self.start.position.distance(self.end)
  end

  class ComponentInstance
    # As `transformation=`, but nothing that can be undone.
    def move!(to)
      to = Geom::Transformation.new(to)
      history = _model._history
      history ? history.unrecorded { _move(to) } : _move(to)
      self
    end

    # What it places takes its place; what was added is given back.
    def explode
      entities = _among
      before = entities.to_a
      model = _model
      model.history.edit do
        _explode
        model.history.tell(:model, :onExplode, model)
      end
      entities.to_a - before
    end

    def guid = format("%016x", persistent_id)
  end

  class Image
    def width = dimensions[0]
    def height = dimensions[1]
    def origin = transformation.origin
  end

  class Group
    # Another group of the same definition beside it.
    def copy
      _model.history.edit do
        twin = _among.add_instance(definition, transformation)
        twin.name = name
        _dress(twin)
      end
    end

    # A component in its place.
    def to_component
      _model.history.edit do
        component = _model.definitions.add(name.empty? ? "Component" : name)
        component.entities.add_instance(definition).explode
        instance = _dress(_among.add_instance(component, transformation))
        erase!
        instance
      end
    end

    def _dress(other)
      other.material = material
      other.layer = layer
      other.hidden = hidden?
      other
    end
  end
end
