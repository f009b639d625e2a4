# Rounds of random edits that only the host's observers tell of. After each, the renderer's scene is that
# of a fresh export of the same model by a renderer of its own.
#
# SEED sets the seed, LIVE_ROUNDS how many rounds, EDITS how many edits each has. A seed that fails is shrunk to
# a short list of edits that still does, for SHRINK_SECONDS at most, and printed.

require_relative "../ruby/helper"
require_relative "machine"
require_relative "live_edits"
$LOAD_PATH.unshift(ENV.fetch("PLUGIN_DIR"))
require "quellix_live"
require "quellix_live/live_link"
require "delegate"

# Lets a test edit while the renderer asks something during an export.
module AskedByRenderer
  class << self
    attr_accessor :with_text, :between
  end

  def get_su_version
    AskedByRenderer.with_text&.call
    super
  end

  def model_out_of_sync?
    AskedByRenderer.between&.call
    super
  end
end

QuellixLive::Callbacks.prepend(AskedByRenderer)

class RandomLive < LinkTest
  WATCHDOG_SECONDS = 36_000
  ROUNDS = Integer(ENV.fetch("LIVE_ROUNDS", "50"))
  EDITS = Integer(ENV.fetch("EDITS", "200"))
  # After each round of many edits come so many of few, in which one edit does not hide what another missed.
  SMALL_ROUNDS = 6
  # Rounds of one model; further ones begin with another, of the next seed.
  MOST_ROUNDS = 50
  LIMIT = Float(ENV.fetch("SOAK_SECONDS", "3600"))
  SEED = Integer(ENV.fetch("SEED", Random.new_seed.to_s)) % (1 << 32)
  SHRINK_SECONDS = Integer(ENV.fetch("SHRINK_SECONDS", "120"))
  # Sent by the timer of a link, at other times than exports are.
  OWN_COMMANDS = %w[camera background].freeze

  # Counts exports, and moves that were sent since the last.
  class Counting < SimpleDelegator
    attr_reader :exports, :moves

    def forget = @exports = @moves = 0

    def do_import(...)
      @exports += 1
      @moves = 0
      super
    end

    def update_instance_transform(...)
      @moves += 1
      super
    end
  end

  # `edits` before the sync. `inside` are those of the export, as [moment, kind, number]: with its first
  # text, before the scan; while meshes are on their way; with the text of the lights; with the last.
  Round = Struct.new(:edits, :inside, :killed)

  def plan(seed, count)
    random = Random.new(seed)
    Array.new(count) do
      [Round.new(LiveEdits.draw(EDITS, random), inside(random), random.rand(25).zero?),
       *Array.new(SMALL_ROUNDS) { Round.new(LiveEdits.draw(random.rand(1..3), random, random.rand(5).zero? ? LiveEdits::ALL : LiveEdits::TOLD), [], false) }]
    end.flatten
  end

  def inside(random)
    edits = Array.new(random.rand(4)) do
      moment = random.rand(4)
      [moment, *LiveEdits.draw(1, random, moment == 1 ? LiveEdits::SIMPLE : LiveEdits::INSIDE).first]
    end
    edits.sort_by(&:first)
  end

  def setup
    super
    ENV["KVAPP_SCENE_JSON"] = "1"
    ENV.delete("KVAPP_BYTES")
    @counting = Counting.new(link)
    AskedByRenderer.between = -> { make_until(1) }
    AskedByRenderer.with_text = lambda do
      make_until([0, 2, 3][@texts]) if @texts < 3
      @texts += 1
    end
    @script = [{ command: "SetMessage", repeat: "forever", request: 115 },
               *Array.new(40) { |i| { command: "AppendMesh", nth: i * 3 + 1, request: 109 } }]
  end

  def teardown
    AskedByRenderer.between = AskedByRenderer.with_text = nil
    super
  end

  # Edits of the export under way, planned up to that moment of it.
  def make_until(moment)
    while @inside&.first && @inside.first[0] <= moment
      _, kind, number = @inside.shift
      @edits.make(kind, number)
      @made_inside += 1
    end
  end

  def scene(file) = JSON.parse(File.read(file)).except(*OWN_COMMANDS)

  # Points the renderers that are started from now on to a folder of their own, and to the script.
  def prepare_renderer(script)
    ENV["KVAPP_OUT"] = @out = File.join(@folder, "out-#{@starts = @starts.to_i + 1}")
    ENV["KVAPP_SCRIPT"] = File.join(@folder, "script.json")
    File.write(ENV["KVAPP_SCRIPT"], JSON.generate(script))
    @counting.forget
    @texts = 3
  end

  def kill_renderer
    pid = Machine.running_children.first
    Process.kill(:KILL, pid)
    sleep(0.005) while link.is_alive
    refute @live.sync
    assert_equal :renderer_gone, @live.status.state
  end

  # The file that shows what the renderer holds after each round.
  def play_live(rounds)
    @edits = LiveEdits.new
    @made_inside = 0
    prepare_renderer(@script)
    @live = QuellixLive.start(@edits.model, renderer: KVAPP_DIR, link: @counting)
    rounds.map do |round|
      round.edits.each { |edit| @edits.make(*edit) }
      @edits.finish
      if round.killed
        kill_renderer
        prepare_renderer(@script)
        @live.restart
      end
      @inside, @texts = round.inside.dup, 0
      sync
      make_until(3) # where there was nothing to export
      sync if @live.pending?
      show_moves if @counting.moves.positive?
      File.join(out, "scene-#{@counting.exports}.json")
    end
  ensure
    @live&.stop
  end

  # The renderer writes its scene at the end of an export, and moves alone need none.
  def show_moves
    @counting.do_import(@edits.model.handle, @edits.model.path, true, true)
    @counting.update_cache_info
  end

  def sync
    assert @live.sync, @live.status.to_s
  end

  # The same edits, each round's model exported with nothing in the caches.
  def play_fresh(rounds, only_last: false)
    @edits = LiveEdits.new
    prepare_renderer([])
    link.init_renderer(Receiver.new, KVAPP_DIR)
    rounds.each_with_index.map do |round, i|
      round.edits.each { |edit| @edits.make(*edit) }
      @edits.finish
      @inside = round.inside.dup
      make_until(3)
      next if only_last && i < rounds.size - 1
      link.clear_reload_cache
      link.do_import(@edits.model.handle, @edits.model.path, false, true)
      File.join(out, "scene-#{i + 1}.json")
    end
  ensure
    link.quit
  end

  # Whether the renderer ends with another scene than a fresh export's.
  def fails?(rounds)
    play_live(rounds)
    found = scene(File.join(out, "scene.json"))
    play_fresh(rounds, only_last: true)
    found != scene(File.join(out, "scene.json"))
  rescue StandardError, Minitest::Assertion
    true
  end

  # The shortest list that still fails, of those that leaving out ever smaller pieces leads to.
  def shrink(list, deadline)
    pieces = 2
    while list.size > 1 && Machine.now < deadline
      size = (list.size / pieces.to_f).ceil
      shorter = (0...list.size).step(size).lazy.map { |from| list[0, from] + list.drop(from + size) }
                               .find { |rest| Machine.now < deadline && yield(rest) }
      break if shorter.nil? && size == 1
      shorter ? (list, pieces = shorter, [pieces - 1, 2].max) : pieces *= 2
    end
    list
  end

  # What to do by hand to see the fault.
  def explain(rounds)
    deadline = Machine.now + SHRINK_SECONDS
    whole = rounds.map { |round| Round.new(round.edits, round.inside, false) }
    return "it comes only with renderers that were killed" unless fails?(whole)
    steps = whole.each_with_index.flat_map { |round, i| round.edits.map { |edit| [i, edit] } + round.inside.map { |edit| [i, :inside, edit] } }
    rebuild = lambda do |list|
      whole.each_index.map do |i|
        mine = list.select { |step| step[0] == i }
        Round.new(mine.reject { |step| step[1] == :inside }.map(&:last), mine.select { |step| step[1] == :inside }.map(&:last), false)
      end
    end
    left = shrink(steps, deadline) { |list| fails?(rebuild.call(list)) }
    left.map { |round, *edit| "round #{round}: #{edit.flatten.join(" ")}" }.join("\n")
  end

  def test_each_round_ends_where_a_fresh_export_does
    deadline = Machine.now + LIMIT
    done = { rounds: 0, edits: 0, inside: 0 }
    (0...ROUNDS).step(MOST_ROUNDS) do |first|
      break if Machine.now > deadline
      seed = SEED + first / MOST_ROUNDS
      rounds = plan(seed, [MOST_ROUNDS, ROUNDS - first].min)
      compare(rounds, seed)
      done[:rounds] += rounds.size
      done[:edits] += rounds.sum { |round| round.edits.size }
      done[:inside] += @made_inside
    end
    puts "#{done.map { |what, count| "#{what}: #{count}" }.join(", ")} (from SEED=#{SEED} on)"
  end

  def compare(rounds, seed)
    found = play_live(rounds)
    assert_operator @made_inside, :>=, rounds.sum { |round| round.inside.size } / 2, "edits inside exports"
    reports = Dir.glob("#{@folder}/out-*/report.json").map { |file| JSON.parse(File.read(file)) }
    reports.each { |told| assert_equal 0, told["faultCount"], "#{told["faults"].first(3).inspect} (SEED=#{seed})" }
    wanted = play_fresh(rounds)
    found.zip(wanted).each_with_index do |files, i|
      next assert(true) if FileUtils.identical?(*files)
      found_scene, wanted_scene = files.map { |file| scene(file) }
      next assert(true) if found_scene == wanted_scene
      assert_same_scene wanted_scene, found_scene, "SEED=#{seed}, round #{i}; the shortest list of edits:\n#{explain(rounds.first(i + 1))}"
    end
    FileUtils.rm_rf(Dir.glob("#{@folder}/out-*"))
  end
end

require "minitest/autorun"
