require "irb"

# A Ruby console in a LiveSession whose host goes on while it waits for a line, all on the one thread that
# the host has.
class LiveConsole
  class Input < IRB::StdioInputMethod
    def initialize(session)
      super()
      @session = session
    end

    def gets
      print @prompt
      $stdout.flush
      @session.wait(0.05) until @session.ended? || @stdin.wait_readable(0)
      @line[@line_no += 1] = @stdin.gets unless @session.ended?
    end
  end

  def self.run(session)
    IRB.setup(nil, argv: [])
    IRB.conf[:PROMPT_MODE] = :SIMPLE
    IRB.conf[:USE_PAGER] = false
    IRB::Irb.new(IRB::WorkSpace.new(session.instance_eval { binding }), Input.new(session)).run
  end
end
