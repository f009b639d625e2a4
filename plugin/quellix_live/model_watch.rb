module QuellixLive
  # Watches one model: gathers what its observers tell and makes Changes of it when asked.
  #
  # An observer does as little as it can; what an edit came to is worked out by `settle`, once for all of
  # them.
  class ModelWatch
    attr_reader :model
    # Whether an operation of the host is under way.
    attr_accessor :operation
    # When the host last told anything, in seconds of the monotonic clock.
    attr_reader :active_at

    # `owner` is told of what is not the model's content: view_changed, options_changed, saved, closed,
    # observer_failed(error).
    def initialize(model, owner, per_paint:)
      @model = model
      @owner = owner
      @memory = ModelMemory.new(model, per_paint: per_paint)
      @observed = []
      @contents = {}
      @operation = false
      forget
      attach
    end

    # Ends watching; the model may be gone.
    def detach
      @observed.each do |subject, observer|
        subject.remove_observer(observer)
      rescue StandardError
        nil
      end
      @observed.clear
      @contents.clear
    end

    # Something was edited that `settle` has not given out.
    def pending? = @pending

    # What was edited since the last call. Entities that the user is inside of wait until he has left:
    # the host gives their transformations differently meanwhile.
    def settle
      changes, path = @changes, Array(@model.active_path)
      inside, touched = @touched.values.partition { |entity| path.include?(entity) }
      kinds, layers, options, relearn = @kinds, @layers_changed, @options_changed, @relearn
      forget
      inside.each { |entity| @touched[entity.entityID] = entity }
      return learn_anew(changes) if relearn
      @memory.compare_owners(touched, changes, Contents.new)
      @memory.compare_definitions(kinds.keys, changes)
      @memory.compare_layers(changes) if layers
      @memory.compare_colors(changes) if options
      follow_new
      changes
    end

    # Calls the block for an observer. What is raised there is kept from the host, and all that may have
    # been missed is sent.
    def notice
      @active_at = Process.clock_gettime(Process::CLOCK_MONOTONIC)
      yield
    rescue StandardError => e
      relearn
      @owner.observer_failed(e)
    end

    def touch(entity)
      return loose unless Contents.placed?(entity)
      @touched[entity.entityID] = entity
      follow(entity.definition)
      @pending = true
    end

    def remove(entity_id)
      if @memory.owner?(entity_id)
        @touched.delete(entity_id)
        change { |changes| @memory.forget_owner(entity_id, changes) }
      elsif !@touched.delete(entity_id)
        loose
      end
    end

    def edit(definition_id, entity = nil)
      follow(entity.definition) if Contents.placed?(entity)
      change { |changes| changes.definition(definition_id) }
    end

    def loose = change(&:loose)
    def everything = change(&:everything)
    def export = change(&:export)

    def kind(definition)
      @kinds[definition] = true
      @pending = true
    end

    def add_material(material) = @memory.add_material(material)
    def material(material) = change { |changes| changes.material(material.persistent_id) }
    def remove_material(material) = change { |changes| @memory.remove_material(material, changes) }

    def layers
      @layers_changed = @pending = true
    end

    def options
      @options_changed = @pending = true
      @owner.options_changed
    end

    # The model is not what was known, in ways that nobody told.
    def relearn
      @relearn = @pending = true
    end

    # The user is inside of other entities now, or of none.
    def path_changed = @pending ||= @touched.any?

    def view = @owner.view_changed
    def saved = @owner.saved
    def closed = @owner.closed

    # Watches a definition's content, once.
    def follow(definition)
      return if @contents.key?(definition)
      @contents[definition] = ContentObserver.new(self, definition.persistent_id)
      observe(definition.entities, @contents[definition])
    end

    def unfollow(definition) = @contents.delete(definition)

    private

    def forget
      @changes = Changes.new
      @touched = {}
      @kinds = {}
      @pending = @layers_changed = @options_changed = @relearn = false
      @active_at ||= 0.0
    end

    def change
      yield @changes
      @pending = true
    end

    def learn_anew(changes)
      @memory.learn
      follow_new
      changes.everything
      changes
    end

    # Not every host tells of each definition that it makes for a group.
    def follow_new
      return if @model.definitions.length == @contents.length
      @contents.keep_if { |definition, _| definition.valid? }
      @model.definitions.each { |definition| follow(definition) }
    end

    def attach
      observe(@model, ModelWatcher.new(self))
      observe(@model.entities, RootObserver.new(self))
      observe(@model.definitions, DefinitionsWatcher.new(self))
      observe(@model.materials, MaterialsWatcher.new(self))
      observe(@model.layers, LayersWatcher.new(self))
      observe(@model.rendering_options, RenderingWatcher.new(self))
      observe(@model.shadow_info, ShadowWatcher.new(self))
      observe(@model.active_view, ViewWatcher.new(self))
      @model.definitions.each { |definition| follow(definition) }
    end

    def observe(subject, observer)
      subject.add_observer(observer)
      @observed << [subject, observer]
    end
  end
end
