module QuellixLive
  # What the link is doing.
  #
  # state     :exporting     an export is under way or has just been sent (`progress`)
  #           :in_step       the renderer shows the model as it is
  #           :waiting       something was edited and is not sent yet
  #           :renderer_gone the renderer has ended; LiveLink#restart starts another
  #           :error         `message` says what could not be done; the next export sends everything
  #           :stopped       the link was stopped
  # progress  0.0 when an export begins and 1.0 when all of it was sent, else nil: the host's thread
  #           belongs to the export meanwhile, which shows its steps in the renderer
  # message   a sentence, or nil
  Status = Struct.new(:state, :progress, :message) do
    def ==(other) = other.is_a?(Symbol) ? state == other : super

    def to_s = [state, progress, message].compact.join(" ").tr("_", " ")
  end
end
