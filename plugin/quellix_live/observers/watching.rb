module QuellixLive
  # What all observers share: they tell a ModelWatch, and what goes wrong meanwhile stays with it.
  module Watching
    # Defines a method of an observer; the block is called with the watch and the host's arguments.
    def tells(*names, &told)
      names.each do |name|
        define_method(name) do |*arguments|
          @watch.notice { instance_exec(@watch, *arguments, &told) }
        end
      end
    end

    # What the observers of one model are made with.
    module Constructor
      def initialize(watch) = @watch = watch
    end

    def self.extended(observer) = observer.include(Constructor)
  end
end
