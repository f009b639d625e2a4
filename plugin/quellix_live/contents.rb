module QuellixLive
  # What is inside definitions, looked up once while the model stays as it is.
  class Contents
    DICTIONARY = "corvane_II"

    def self.light?(definition) = definition.get_attribute(DICTIONARY, "light-type", "").to_s != ""

    # A light, or turned to the camera: every export sends it, whatever the renderer holds.
    def self.sent_always?(definition) = light?(definition) || definition.behavior.always_face_camera?

    def initialize
      @sent_always = {}
    end

    # Whether the definition is sent with every export, or something inside it at any depth.
    def sent_always?(definition)
      @sent_always.fetch(definition) do
        @sent_always[definition] = Contents.sent_always?(definition) ||
                                   Contents.placed(definition.entities).any? { |nested| sent_always?(nested.definition) }
      end
    end

    # An instance or a group: what places a definition.
    def self.placed?(entity)
      (entity.is_a?(Sketchup::ComponentInstance) || entity.is_a?(Sketchup::Group)) && !entity.is_a?(Sketchup::Image)
    end

    def self.placed(entities) = entities.select { |entity| placed?(entity) }
  end
end
