module QuellixLive
  # What the renderer keeps in the model: in an attribute dictionary, saved with the file. Each change is
  # an operation, so that undo takes it back.
  class Settings
    DICTIONARY = "quellix_live"
    USE_PBR = "use_pbr"
    # Before names that the renderer gives, so that none stands for another setting.
    PREFIX = "renderer:"

    def initialize(model)
      @model = model
    end

    def use_pbr? = @model.get_attribute(DICTIONARY, USE_PBR, true)
    def use_pbr=(flag)
      change("Renderer materials") { @model.set_attribute(DICTIONARY, USE_PBR, flag) }
    end

    # An Array of Integers, the first of which counts bytes, or nil.
    def load(name) = @model.get_attribute(DICTIONARY, PREFIX + name)

    def save(name, words)
      change("Renderer settings") { @model.set_attribute(DICTIONARY, PREFIX + name, words) }
    end

    def remove(name)
      change("Renderer settings") { @model.delete_attribute(DICTIONARY, PREFIX + name) }
    end

    private

    def change(name)
      @model.start_operation(name, true)
      yield
      @model.commit_operation
    rescue StandardError
      @model.abort_operation
      raise
    end
  end
end
