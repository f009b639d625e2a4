# frozen_string_literal: true

require "minitest/autorun"
require "tmpdir"
require "sketchup.rb"
require_relative "random_model"

# Undo, redo and abort of any edit give what was, and no edit goes unnoticed.
class UndoTest < Minitest::Test
  ROUNDS = Integer(ENV.fetch("UNDO_ROUNDS", "12"))
  SEED = Integer(ENV.fetch("UNDO_SEED", Random.rand(1 << 30).to_s))

  # Which parts of the model observers have heard of.
  class Ear
    attr_reader :parts

    def initialize
      @parts = []
    end

    def contents(entities) = @parts << [:contents, entities.parent.is_a?(Sketchup::Model) ? 0 : entities.parent.persistent_id]
    def onElementAdded(list, entity) = list.is_a?(Sketchup::Entities) ? contents(list) : @parts << [:pages]
    alias onElementModified onElementAdded
    alias onElementRemoved onElementAdded
    def onContentsModified(_) = @parts << [:pages]
    def onRenderingOptionsChanged(*) = @parts << [:options]
    def onShadowInfoChanged(*) = @parts << [:shadow]
    def onTransactionCommit(_) = @parts << [:model]

    { definitions: %i[onComponentAdded onComponentPropertiesChanged onComponentRemoved],
      materials: %i[onMaterialAdd onMaterialChange],
      layers: %i[onLayerAdded onLayerChanged onLayerFolderAdded onLayerFolderChanged onLayerFolderRemoved],
      # These take what was painted or lay there along.
      anything: %i[onMaterialRemove onLayerRemoved] }.each do |part, methods|
      methods.each { |method| define_method(method) { |*| @parts << [part] } }
    end

    def listen(model)
      [model, model.entities, model.definitions, model.materials, model.layers, model.pages,
       model.rendering_options, model.shadow_info].each { |subject| subject.add_observer(self) }
      follow(model)
    end

    def follow(model) = model.definitions.each { |definition| definition.entities.add_observer(self) }
  end

  def setup
    RandomModel::Editor.picture = File.join(Dir.mktmpdir, "picture.bmp")
    RandomModel.write_picture(RandomModel::Editor.picture)
    @kinds_seen = []
  end

  def teardown = FileUtils.rm_rf(File.dirname(RandomModel::Editor.picture))

  def dump = RandomModel.dump(@model)

  def assert_same(wanted, what)
    found = dump
    parts = (wanted.keys | found.keys).reject { |part| wanted[part] == found[part] }
    differing = parts.map { |part| [part, wanted[part], found[part]].map { |value| value.inspect[0, 1500] }.join("\n  ") }
    assert_empty parts, "#{what}, seed #{@seed}: #{differing.join("\n")}"
  end

  def each_round
    ROUNDS.times do |round|
      @seed = SEED + round
      Sketchup.file_new
      @model = Sketchup.active_model
      @editor = RandomModel::Editor.new(@model, @seed)
      yield round
    end
  end

  # Some edits in an operation of their own. True when there is something to undo.
  def operation(many)
    committed = false
    counter = Object.new
    counter.define_singleton_method(:onTransactionCommit) { |_| committed = true }
    @model.add_observer(counter)
    @model.start_operation("Some edits")
    kinds = Array.new(many) { @editor.edit }
    @model.commit_operation
    @model.remove_observer(counter)
    @kinds_seen |= kinds
    committed
  end

  def test_undo_and_redo_restore_the_model_value_for_value
    each_round do |round|
      states = [dump]
      # The first time more than the host remembers.
      (round.zero? ? 140 : 30).times { states << dump if operation(1 + @editor.random.rand(4)) }
      states = states.last(ModelHost::History::MOST_OPERATIONS + 1)
      at = states.size - 1
      60.times do
        if @editor.random.rand < 0.6
          assert_equal at.positive?, Sketchup.undo
          at -= 1 if at.positive?
        else
          assert_equal at < states.size - 1, @model.history.redo
          at += 1 if at < states.size - 1
        end
        assert_same states[at], "at #{at} of #{states.size}"
      end
      nil while Sketchup.undo
      assert_same states.first, "all undone"
      nil while @model.history.redo
      assert_same states.last, "all done again"
    end
    assert_empty RandomModel::Editor::KINDS - @kinds_seen, "never edited"
  end

  def test_abort_restores_the_model
    each_round do
      operation(15)
      20.times do
        before = dump
        held = @model.entities.to_a
        @model.start_operation("Given up")
        kinds = Array.new(3) { @editor.edit }
        @model.abort_operation
        assert_same before, "given up #{kinds.inspect}"
        assert(held.all?(&:valid?))
      end
      2.times { Sketchup.undo }
    end
  end

  def test_every_edit_is_told
    each_round do
      ear = Ear.new
      ear.listen(@model)
      before = dump
      80.times do
        ear.follow(@model)
        ear.parts.clear
        kind = @editor.edit
        after = dump
        heard = ear.parts.uniq
        # A definition's instances are told where they are; how textures lie, with their material.
        heard << [:definitions] if heard.any? { |part| part.first == :contents }
        changed = before.keys.select { |part| after.key?(part) && after[part] != before[part] }
        changed.reject! { |part| part.first == :contents } if heard.include?([:materials])
        unheard = changed - heard
        assert_empty unheard, "#{kind}, seed #{@seed}" unless heard.include?([:anything])
        before = after
      end
    end
  end
end
