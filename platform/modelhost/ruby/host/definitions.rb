require_relative "recorded"

module ModelHost
  class ComponentDefinition
    def group? = _type == :group
    def image? = _type == :image
    def internal? = true
    def count_instances = instances.size
    def count_used_instances = instances.size
    def guid = format("%016x", persistent_id)
  end

  # Those of groups and images are in the list too.
  class Definitions
    include Observed

    module All
      def to_a = _model._definitions
      def length = _model._count_definitions
      alias size length
    end
    prepend All

    def at(index) = self[index]
    def count(*arguments, &block) = arguments.empty? && !block ? length : super
    def _observed = :definitions

    def unique_name(wish)
      taken = map(&:name)
      return wish unless taken.include?(wish)
      (1..).lazy.map { |n| "#{wish}##{n}" }.find { |name| !taken.include?(name) }
    end

    # Takes out what is placed nowhere, until nothing is left to take.
    def purge_unused
      while (unused = reject { |definition| definition.image? || definition.group? || definition.instances.any? }).any?
        unused.each { |definition| remove(definition) }
      end
      self
    end
  end
end
