module ModelHost
  # One dictionary of an entity or of the model.
  class AttributeDictionary
    def self.of(owner, name, create)
      dictionary = new(owner, name)
      dictionary if create || dictionary.keys.any?
    end

    attr_reader :name, :parent

    def initialize(parent, name)
      @parent = parent
      @name = name
    end

    def keys = @parent._attribute_keys(@name)
    def values = keys.map { |key| self[key] }
    def [](key) = @parent.get_attribute(@name, key)
    def []=(key, value)
      @parent.set_attribute(@name, key, value)
    end
    def delete_key(key) = self[key].tap { @parent.delete_attribute(@name, key) }
    def each_pair = keys.each { |key| yield key, self[key] }
    alias each each_pair
    def length = keys.length
    alias size length
  end

  # What has attributes: entities and the model.
  module Attributes
    # Nil when there is none of that name.
    def attribute_dictionary(name, create = false) = AttributeDictionary.of(self, name, create)

    # Nil when there is none at all.
    def attribute_dictionaries
      found = _dictionary_names.filter_map { |name| attribute_dictionary(name) }
      found if found.any?
    end
  end
end
