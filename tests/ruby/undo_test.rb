# An export after undo sends what the one before the edits sent: the same commands, byte for byte.

require_relative "helper"
require "sketchup.rb"
require_relative "../modelhost/random_model"

class UndoneExportTest < LinkTest
  SEED = Integer(ENV.fetch("UNDO_SEED", Random.rand(1 << 30).to_s))
  ROUNDS = 6

  def setup
    super
    ENV["KVAPP_SCENE_JSON"] = "1"
    Sketchup.file_new
    @model = Sketchup.active_model
    RandomModel::Editor.picture = File.join(@folder, "picture.bmp")
    RandomModel.write_picture(RandomModel::Editor.picture)
  end

  # The scene of a renderer of its own, and what it was sent, in no order: materials and meshes are made
  # on several threads.
  def sent
    start
    link.prepare_renderer(false)
    link.do_import(@model.handle, "", false, true)
    link.quit
    link.clear_reload_cache
    assert_equal 0, report["faultCount"], report["faults"].inspect
    lines = commands.reject { |line| line["name"] == "SetProgress" }
    [JSON.parse(File.read(File.join(out, "scene-1.json"))), lines.map { |line| line.values_at("name", "message", "digest") }.sort]
  end

  def test_what_is_sent_after_undo_is_what_was_sent_before
    editor = RandomModel::Editor.new(@model, SEED)
    80.times { editor.edit }
    changed = ROUNDS.times.count do |round|
      what = "seed #{SEED}, round #{round}"
      before = sent
      @model.start_operation("Edits")
      10.times { editor.edit }
      @model.commit_operation
      between = sent
      assert Sketchup.undo
      after = sent
      assert_same_scene before.first, after.first, what
      assert_equal before.last, after.last, what
      between.last != before.last
    end
    assert_operator changed, :>, ROUNDS / 2
  end
end

require "minitest/autorun"
