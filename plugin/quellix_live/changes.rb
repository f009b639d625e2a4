require "set"

module QuellixLive
  # What was edited since the last export, as the calls that tell the extension. Ids are persistent
  # ids. Each kind is told once, however often it was edited.
  class Changes
    # The keys of the colours that faces without paint have.
    FRONT_COLOR = 0xFFFFFFFF
    BACK_COLOR = 0xFFFFFFFE

    # What lies loose at the root belongs to this owner.
    LOOSE = 0
    LOW_BITS = 0xFFFFFFFF

    def initialize
      @everything = false
      @export = false
      @definitions = Set.new
      @owners = Set.new
      @materials = Set.new
      @layers = Set.new
      @moves = {}
    end

    # The content of a definition, whatever places it.
    def definition(id) = add(@definitions, id)
    # What a top-level instance or group shows.
    def owner(id) = add(@owners, id)
    def loose = add(@owners, LOOSE)
    def material(id) = add(@materials, id & LOW_BITS)
    # A layer that is shown now and was not, or the other way round.
    def layer(id) = add(@layers, id)
    # Something that every export sends, or that comes or goes at the top.
    def export = @export = true
    # A top-level instance or group is elsewhere, with all that it shows: 16 numbers, column after column.
    def move(id, matrix) = @moves[id] = matrix

    # Nothing of what the renderer holds can be relied on.
    def everything
      @everything = true
      @export = true
    end

    def everything? = @everything
    def export? = @export
    def empty? = !@export && @moves.empty?

    # Takes over what others found.
    def merge(other)
      everything if other.everything?
      export if other.export?
      tables.zip(other.tables) { |mine, theirs| mine.merge(theirs) }
      @moves.merge!(other.moves)
    end

    # Makes the calls. A definition's or an owner's id is taken in 32 bits by them; one that needs more
    # could stand for another.
    def report(link)
      if @everything || [*@definitions, *@owners].any? { |id| id > LOW_BITS }
        link.clear_reload_cache
      else
        @materials.each { |id| link.invalidate_material_cache(id) }
        @layers.each { |id| link.invalidate_layer(id) }
        @definitions.each { |id| link.invalidate_definition(id) }
        @owners.each { |id| link.invalidate_geometry_cache(id) }
        @moves.each { |id, matrix| link.update_instance_transform(id, matrix) unless @owners.include?(id) }
      end
    end

    protected

    attr_reader :moves

    def tables = [@definitions, @owners, @materials, @layers]

    private

    def add(table, id)
      table << id
      @export = true
    end
  end
end
