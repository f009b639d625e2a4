# What the system knows about this process, and a helper that kills a renderer at a chosen moment.

module Machine
  module_function

  def now = Process.clock_gettime(Process::CLOCK_MONOTONIC)

  def threads = Dir.children("/proc/self/task").size

  # What the open descriptors stand for; numbers of pipes and sockets are left out, and so are the
  # processes that the link has closed and keeps until they have ended.
  def descriptors
    Dir.children("/proc/self/fd").filter_map do |number|
      File.readlink("/proc/self/fd/#{number}").sub(/\[\d+\]/, "[]")
    rescue Errno::ENOENT
      nil
    end.grep_v(/pidfd/).sort
  end

  # Mappings of the link's objects.
  def mappings = File.readlines("/proc/self/maps").grep(/Qlx_/)

  def children
    Dir.glob("/proc/self/task/*/children").flat_map { |file| File.read(file).split.map(&:to_i) }
  end

  # Without those that have ended: the link takes their entries out with its next start.
  def running_children
    children.reject { |pid| File.read("/proc/#{pid}/stat")[/\) (\w)/, 1] == "Z" rescue true }
  end

  def resident_kib = File.read("/proc/self/status")[/VmRSS:\s+(\d+)/, 1].to_i
end

# A process of its own, since a method of the extension keeps this one's other Ruby threads waiting.
class Killer
  attr_reader :pid

  def initialize
    orders, @orders = IO.pipe
    @reports, reports = IO.pipe
    @pid = fork do
      @orders.close
      @reports.close
      obey(orders, reports)
      exit!(0)
    end
    orders.close
    reports.close
  end

  # Sends the signal after that many seconds; `wait` then tells when it was sent.
  def aim(pid, delay, signal = "KILL")
    @orders.puts("#{pid} #{delay} #{signal}")
    @orders.flush
  end

  def wait = @reports.gets.to_f

  def stop
    @orders.close
    Process.wait(@pid)
  end

  private

  def obey(orders, reports)
    trap("INT", "IGNORE")
    while (line = orders.gets)
      pid, delay, signal = line.split
      sleep(delay.to_f)
      begin
        Process.kill(signal, pid.to_i)
      rescue Errno::ESRCH
        nil # it has ended by itself
      end
      reports.puts(Machine.now)
      reports.flush
    end
  end
end
