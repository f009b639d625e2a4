# Rounds of random changes, each with the calls that a plug-in makes for it: before an export, in
# callbacks while it runs, and before the caches are promoted. After each round the renderer's scene is
# that of a fresh export of the same model.
#
# The rounds run twice with the same seed: with reloads, and with a fresh export a round. SEED sets the
# seed, ROUNDS how many.

require_relative "../ruby/helper"
require_relative "random_edits"

class RandomReload < LinkTest
  WATCHDOG_SECONDS = 36_000
  ROUNDS = Integer(ENV.fetch("ROUNDS", "60"))
  SEED = Integer(ENV.fetch("SEED", Random.new_seed.to_s)) % (1 << 32)
  SEPARATE_WALKS = ENV["QUELLIX_UNIFIED_SCAN"] == "0"

  # Takes the calls of who needs none.
  class Ignored
    %i[invalidate_definition invalidate_geometry_cache invalidate_layer invalidate_material_cache
       update_instance_transform clear_reload_cache].each { |name| define_method(name) { |*| nil } }
  end

  # The order of the points at which a callback comes in an export: with the first text, before the
  # scan; while meshes and materials are on their way; with the text of the lights; with the last.
  MOMENTS = [0, 1, 2, 3].freeze
  Planned = Struct.new(:moment, :simple)

  # Requests at rest ask for nothing, so the callbacks that count are those of an export.
  def callbacks
    texts = 0
    { on_reload: lambda { run_until([0, 2, 3][texts]) if @waiting; texts = (texts + 1) % 3; nil },
      suppress_autosync_once: -> { run_until(1) if @waiting; nil } }
  end

  # A request with each text, and with some of the commands.
  def script
    numbers = Random.new(SEED)
    at = 0
    [{ command: "SetMessage", repeat: "forever", request: 102 },
     *Array.new(ROUNDS * 4) { { at: at += numbers.rand(1..30), request: 116 } }]
  end

  # Changes planned up to that moment of the export under way.
  def run_until(moment)
    while @waiting.first&.moment.to_i <= moment && (planned = @waiting.shift)
      change(simple: planned.simple)
      @in_callbacks += 1
    end
  end

  # With separate walks the children map is the plug-in's to keep.
  def change(simple: false)
    link.init_children_map(@edits.model.handle) if SEPARATE_WALKS && @reloading
    @edits.edit(simple: simple)
  end

  def export(reload)
    @exports += 1
    link.do_import(@edits.model.handle, "a.skp", reload, @edits.pbr)
    link.init_children_map(@edits.model.handle) if SEPARATE_WALKS
    yield if block_given?
    link.update_cache_info
  end

  # Draws alike in both runs.
  def round
    draw = ->(n) { @plan.rand(n) }
    draw[4].times { change }
    @waiting = Array.new(draw[4]) { MOMENTS[draw[4]] }.sort.map { |moment| Planned.new(moment, moment == 1) }
    after = draw[3]
    around = @waiting.any? || after.positive?
    if @reloading
      export(true) do
        run_until(3)
        after.times { change }
      end
      @waiting = nil
      export(true) if around
    else
      run_until(3)
      after.times { change }
      @waiting = nil
      link.clear_reload_cache
      export(false)
    end
  end

  def begin_renderer
    @exports = 0
    ENV.delete("KVAPP_SCRIPT")
    @reloading ? start(*script, receiver: Receiver.new(callbacks)) : start
  end

  # The file of each round's scene, and what was done by then.
  def run_rounds(reloading)
    @reloading = reloading
    @plan = Random.new(SEED)
    @in_callbacks = 0
    @edits = RandomEdits.new(SEED, reloading ? link : Ignored.new)
    begin_renderer
    export(false)
    Array.new(ROUNDS) do |i|
      @edits.done << i
      # Another renderer knows nothing, and is told all.
      if (@plan.rand(100)).zero?
        finish
        begin_renderer
      end
      round
      File.join(out, "scene-#{@exports}.json")
    end
  ensure
    finish
  end

  def finish
    link.quit
    assert_equal 0, report["faultCount"], "#{report["faults"].first(3).inspect} (SEED=#{SEED})"
  end

  def test_each_round_ends_where_a_fresh_export_does
    ENV["KVAPP_SCENE_JSON"] = "1"
    ENV.delete("KVAPP_BYTES")
    reloaded = run_rounds(true)
    done, in_callbacks = @edits.done, @in_callbacks
    @edits.model.close
    fresh = run_rounds(false)
    assert_equal done, @edits.done, "both runs make the same changes"
    @edits.model.close
    meshes = reloaded.zip(fresh).each_with_index.map do |files, i|
      next JSON.parse(File.read(files[0]))["placements"].map { |placement| placement["mesh"]["id"] }.uniq.size if FileUtils.identical?(*files)
      made = done[(done.rindex(i - 2) || 0)..done.index(i + 1)]
      assert_same_scene JSON.parse(File.read(files[1])), JSON.parse(File.read(files[0])), "SEED=#{SEED}, round #{i}, after #{made.inspect}"
    end
    assert_operator in_callbacks, :>, ROUNDS, "changes in callbacks"
    # In a few rounds most of the model may happen to be hidden, in many it is not.
    typical = ROUNDS < 500 ? meshes.max : meshes.sort[ROUNDS / 2]
    assert_operator typical, :>, 6, "the scenes are worth comparing (SEED=#{SEED})"
    puts "rounds: #{ROUNDS}, changes: #{done.size - ROUNDS}, of them in callbacks: #{in_callbacks} (SEED=#{SEED})"
  end
end

require "minitest/autorun"
