require "modelhost"

module Sketchup
  # What a plug-in derives its observers from. They have no methods: an observer is told what it has a
  # method for.
  %w[App Definition Definitions Entities Entity Instance Layers Materials Model Options OptionsProvider Pages
     RenderingOptions Selection ShadowInfo Tools View].each { |name| const_set("#{name}Observer", Class.new) }
end

module ModelHost
  # Who is told of what, by what it is about. An observer's error is printed and stops nobody.
  class Observers
    def initialize
      @lists = {}
    end

    def add(subject, observer)
      list = (@lists[subject] ||= [])
      return false if list.any? { |other| other.equal?(observer) }
      list << observer
      true
    end

    def remove(subject, observer)
      list = @lists[subject] or return false
      found = list.reject! { |other| other.equal?(observer) }
      @lists.delete(subject) if list.empty?
      !found.nil?
    end

    def any?(subject) = @lists.key?(subject)
    def empty? = @lists.empty?

    def call(subject, method, *arguments)
      @lists[subject]&.dup&.each do |observer|
        observer.public_send(method, *arguments) if observer.respond_to?(method)
      rescue StandardError, ScriptError => e
        warn "Error: #{e.inspect}\n#{Array(e.backtrace).join("\n")}"
      end
    end
  end

  # For what can be observed; `_observed` says by what name.
  module Observed
    def add_observer(observer) = _model.history.observers.add(_observed, observer)
    def remove_observer(observer) = _model.history.observers.remove(_observed, observer)
    # Unless it says otherwise: the number of its handle.
    def _observed = _handle
  end
end
