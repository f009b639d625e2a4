module ModelHost
  # The timers of the host's loop. There is no loop here: a caller runs them for a while, on its own
  # thread. Times are real.
  class Timers
    Timer = Struct.new(:id, :seconds, :repeat, :block, :due, :running)

    def initialize
      @timers = {}
      @last_id = 0
    end

    def start(seconds, repeat, block)
      raise ArgumentError, "a timer needs a block" unless block
      seconds = Float(seconds)
      raise ArgumentError, "a timer's interval is a number of seconds from 0 on" unless seconds >= 0 && seconds.finite?
      @last_id += 1
      @timers[@last_id] = Timer.new(@last_id, seconds, repeat, block, now + seconds, false)
      @last_id
    end

    def stop(id) = @timers.delete(id)

    def size = @timers.size

    # Runs what is due until so many seconds have gone by; with 0 what is due now, once.
    def run(seconds)
      ending = now + Float(seconds)
      run_due
      while (left = ending - now).positive?
        next_due = waiting.map(&:due).min
        sleep([left, next_due ? [next_due - now, 0].max : left].min)
        run_due
      end
      nil
    end

    private

    def now = Process.clock_gettime(Process::CLOCK_MONOTONIC)

    # One that runs at this moment, further up on this stack, is not run inside itself.
    def waiting = @timers.values.reject(&:running)

    def run_due
      moment = now
      waiting.select { |timer| timer.due <= moment }.sort_by { |timer| [timer.due, timer.id] }.each do |timer|
        # An earlier one may have stopped it, or run it in a loop of its own.
        run_one(timer) if @timers[timer.id] && !timer.running && timer.due <= moment
      end
    end

    def run_one(timer)
      timer.repeat ? timer.due = now + timer.seconds : @timers.delete(timer.id)
      timer.running = true
      timer.block.call
    rescue StandardError => e
      warn "Error: #{e.full_message(highlight: false)}"
    ensure
      timer.running = false
    end
  end

  TIMERS = Timers.new
  private_constant :TIMERS

  def self.timers = TIMERS
  def self.run_timers(seconds = 0) = TIMERS.run(seconds)
end
