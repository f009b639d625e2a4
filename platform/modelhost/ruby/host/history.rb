require_relative "observers"

module ModelHost
  # What happens to one model: who is told of it, and how it is taken back. The native side records what
  # it holds itself; pages, options and the like are recorded here, as blocks that take a change back and,
  # called again, make it anew.
  class History
    Operation = Struct.new(:name, :native, :flips)
    MOST_OPERATIONS = 100

    attr_reader :observers

    def initialize(model)
      @model = model._record
      @observers = Observers.new
      @done = []
      @undone = []
      @flips = []
      @told = []
      @depth = 0
      @modified = false
    end

    def paused? = !!@paused
    def modified? = @modified
    def saved = @modified = false

    # Runs the block, tells what it has changed and, outside of an operation, makes one of it.
    def edit
      @depth += 1
      yield
    ensure
      @depth -= 1
      settle if @depth.zero?
    end

    # Makes a change of what is kept in Ruby: the block is called now, and at each undo and redo.
    def apply(&flip)
      edit do
        flip.call
        @flips << flip unless @paused
      end
    end

    # Tells an observer when the present edit is done.
    def tell(subject, method, *arguments)
      @told << [subject, method, *arguments] unless @paused || !@observers.any?(subject)
    end

    # Tells of what cannot be undone, at once and outside of operations.
    def tell_now(subject, method, *arguments)
      @observers.call(subject, method, *arguments) unless @paused
    end

    # Changes that cannot be undone.
    def unrecorded
      yield
      deliver(@model._take_changes)
    end

    # `join` makes it part of the operation before; `join_next` does so with the one that follows.
    def start(name, join_next: false, join: false)
      commit if @open
      @open = name.to_s
      @join = join || @join_next
      @join_next = join_next
      call(:model, :onTransactionStart, @model)
      true
    end

    def commit
      return false unless @open
      changed = close_operation
      @open = nil
      call(:model, changed ? :onTransactionCommit : :onTransactionEmpty, @model)
      true
    end

    def abort
      return false unless @open
      @model._abort
      take_back(@flips)
      @flips = []
      @open = nil
      deliver(@model._take_changes, again: true)
      call(:model, :onTransactionAbort, @model)
      true
    end

    def undo
      commit
      operation = @done.pop or return false
      take_back(operation.flips)
      @model._undo if operation.native
      @undone << operation
      again(:onTransactionUndo)
    end

    def redo
      operation = @open ? nil : @undone.pop
      return false unless operation
      operation.flips.each(&:call)
      @model._redo if operation.native
      @done << operation
      again(:onTransactionRedo)
    end

    # While paused nobody is told and nothing is recorded; what could be undone is forgotten.
    def paused=(paused)
      [@done, @undone, @flips, @told].each(&:clear)
      @model._pause_recording(paused)
      @paused = paused
    end

    private

    def call(...) = @observers.call(...)

    def settle
      return if @paused
      changes = @model._take_changes
      return if changes.nil? && @told.empty? && @flips.empty?
      return deliver(changes) if @open
      tell_as_operation(changes)
    end

    def tell_as_operation(changes)
      start(own = +"")
      deliver(changes)
    ensure
      # An observer may have begun an operation of its own, which has ended this one.
      commit if @open.equal?(own)
    end

    def close_operation
      join = @join && @done.any?
      native = @model._commit(join && @done.last.native)
      return false if !native && @flips.empty?
      record(Operation.new(@open, native, @flips), join)
      @flips = []
      @modified = true
    end

    def record(operation, join)
      @undone.clear
      if join
        @done.last.native ||= operation.native
        @done.last.flips.concat(operation.flips)
      else
        @done << operation
        @done.shift if @done.size > MOST_OPERATIONS
      end
    end

    def take_back(flips) = flips.reverse_each(&:call)

    def again(event)
      @modified = true
      deliver(@model._take_changes, again: true)
      call(:model, event, @model)
      true
    end

    # `again`: what happened is an undo or a redo.
    def deliver(changes, again: false)
      told, @told = @told, []
      if changes && !@observers.empty?
        once(changes).each { |event, kind, entity, id, among| send(:"tell_#{kind}", event, entity, id, among, again) }
        changes.select { |event, _, _, _, among| event == :removed && among }.uniq { |change| change[4]._handle }
               .each { |change| call(change[4]._handle, :onEraseEntities, change[4]) }
      end
      told.each { |arguments| call(*arguments) }
    end

    # Each change once, with the faces that an edited edge bounds; what is new is not told as changed.
    def once(changes)
      changes = changes.flat_map { |change| [change, *faces_beside(change)] } if changes.any? { |c| edge?(c) }
      return changes if changes.size == 1
      added = changes.filter_map { |change| change[2]._handle if change[0] == :added }.to_h { |handle| [handle, true] }
      changes.uniq { |event, _, entity| [event, entity._handle] }
             .reject { |event, _, entity| event == :changed && added[entity._handle] }
    end

    def edge?(change) = change[0] == :changed && change[2].is_a?(Edge)

    def faces_beside(change)
      return [] unless edge?(change) && change[2].valid?
      change[2].faces.map { |face| [:changed, :element, face, face.entityID, change[4]] }
    end

    def tell_element(event, entity, id, among, _again)
      case event
      when :added then call(among._handle, :onElementAdded, among, entity)
      when :changed
        return unless entity.valid?
        call(among._handle, :onElementModified, among, entity)
        call(entity._handle, :onChangeEntity, entity)
      else
        call(among._handle, :onElementRemoved, among, id)
        erased(entity)
      end
      tell_placed(event, entity) if entity.is_a?(ComponentInstance)
    end

    # What observes the definition hears of its instances.
    def tell_placed(event, entity)
      return unless event == :added && entity.valid?
      definition = entity.definition
      call(definition._handle, :onComponentInstanceAdded, definition, entity)
    end

    def erased(entity) = call(entity._handle, :onEraseEntity, entity)

    # [of a new one, of a changed one, of a removed one]
    CALLS = {
      definition: [:definitions, %i[onComponentAdded onComponentPropertiesChanged onComponentRemoved]],
      material: [:materials, %i[onMaterialAdd onMaterialChange onMaterialRemove]],
      layer: [:layers, %i[onLayerAdded onLayerChanged onLayerRemoved]],
      folder: [:layers, %i[onLayerFolderAdded onLayerFolderChanged onLayerFolderRemoved]]
    }.freeze

    CALLS.each do |kind, (list, methods)|
      define_method(:"tell_#{kind}") do |event, entity, _id, _among, again|
        method = methods[%i[added changed removed].index(event)]
        method = :onMaterialUndoRedo if again && method == :onMaterialChange
        call(list, method, @model.public_send(list), entity)
        call(entity._handle, :onChangeEntity, entity) if event == :changed
        erased(entity) if event == :removed
      end
    end

    # Attributes of the model itself: its operations tell.
    def tell_dictionary(*) = nil
  end

  # Changes in the block call no observer and cannot be undone, nor what was done before them.
  def self.silently
    histories = Model.histories.reject(&:paused?)
    histories.each { |history| history.paused = true }
    yield
  ensure
    histories&.each { |history| history.paused = false }
  end
end
