require_relative "attributes"
require_relative "history"
require_relative "pages"
require_relative "view"

module ModelHost
  class Model
    include Attributes
    include Observed

    LOAD_STATUS_SUCCESS = 1
    LOAD_STATUS_SUCCESS_MORE_RECENT = 2

    @histories = []

    class << self
      # Of all models that are watched.
      attr_reader :histories
    end

    # Made when it is first asked for; from then on all changes are recorded.
    def history = @history ||= History.new(self).tap { |made| Model.histories << made }
    def _history = @history
    # What is kept in Ruby: the current material and layer.
    def _state = @state ||= {}
    def _observed = :model

    # The instances and groups that the user is inside of, from the outside in; nil for none.
    attr_reader :active_path

    def active_path=(path)
      @active_path = path.to_a.empty? ? nil : path.to_a
      history.tell_now(:model, :onActivePathChanged, self)
    end

    # Leaves the innermost.
    def close_active
      return false unless active_path
      self.active_path = active_path[0...-1]
      true
    end

    def active_entities = active_path ? active_path.last.definition.entities : entities
    def active_view = @active_view ||= View.new(self)
    def pages = @pages ||= Pages.new(self)
    def shadow_info = @shadow_info ||= ShadowInfo.new(self)
    def guid = format("%016x", handle)
    def modified? = _history&.modified? || false
    def description = ""
    def valid?
      handle.positive?
    rescue RuntimeError
      false
    end

    def deleted? = !valid?

    def start_operation(name, _disable_ui = false, next_transparent = false, transparent = false)
      history.start(name, join_next: next_transparent, join: transparent)
    end

    def commit_operation = history.commit
    def abort_operation = history.abort

    def active_layer = _state[:layer] || layers[0]

    def active_layer=(layer)
      _state[:layer] = layer
      history.tell_now(:layers, :onCurrentLayerChanged, layers, layer)
    end

    # One id or several; nil stands for what there is not.
    def find_entity_by_persistent_id(*ids) = one_or_all(ids) { |id| _find_persistent_id(id) }
    def find_entity_by_id(*ids) = one_or_all(ids) { |id| _find_id(id) }

    # The file is not written: what is kept here lives as long as the process. Path and title are those
    # of the new file, and observers hear what they hear of a file that is written.
    def save(path = self.path, _version = nil)
      return false if path.to_s.empty?
      history.tell_now(:model, :onPreSaveModel, self)
      self._path = path
      history.saved
      history.tell_now(:model, :onSaveModel, self)
      history.tell_now(:model, :onPostSaveModel, self)
      true
    end

    def save_copy(path) = !path.to_s.empty?

    alias _release close

    # What the host adds to the binding's own.
    module HostNames
      def get_attribute(dictionary, key, default = nil)
        value = super(dictionary, key)
        value.nil? ? default : value
      end

      def name=(name)
        return super unless _history
        other = name
        _history.apply do
          now = self.name
          super(other)
          other = now
        end
      end

      # The active one makes room for a new one: the host has always one open.
      def close(_ignore_changes = false)
        return Sketchup.file_new && true if ModelHost.active.equal?(self)
        _close
        super()
      end
    end
    prepend HostNames

    # Tells that it goes.
    def _close
      return unless _history
      _history.tell_now(:model, :onDeleteModel, self)
      Model.histories.delete(_history)
    end

    private

    def one_or_all(ids)
      return yield(ids.first) if ids.size == 1 && !ids.first.is_a?(Array)
      ids.flatten.map { |id| yield id }
    end
  end
end
