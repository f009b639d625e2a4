# What the Ruby tests ask of the system that they run on.
module TestSystem
  WINDOWS = RUBY_PLATFORM.match?(/mingw|mswin/)

  module_function

  # Shared-memory objects are files on either system.
  def link_objects
    folder = WINDOWS ? "#{ENV.fetch("ProgramData").tr("\\", "/")}/boost_interprocess/*" : "/dev/shm"
    Dir.glob("#{folder}/Qlx_{Mem,Lock}*").map { |path| File.basename(path) }
  end

  # What a message box says that comes up during the block; its button is pressed.
  def message_box_of
    reader = IO.popen(ENV.fetch("ANSWER_MESSAGE_BOX"))
    yield
    reader.read.delete("\r")
  ensure
    reader.close
  end
end
