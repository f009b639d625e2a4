module QuellixLive
  # What a plug-in can only learn from the process of the host.
  module Host
    module_function

    # The number that `do_import` takes for the host's active model. The model stays the host's: it is
    # never released, and the number is asked for again before each export, since another may be open.
    def model_handle(model)
      raise Error, "there is no model" if model.nil?
      unless defined?(::Sketchup) && ::Sketchup.active_model == model
        raise Error, "the model is not the host's active one, so its handle must be given"
      end
      active_model_handle
    end

    # The host's API in this process: the library that the extension is linked with.
    def library
      return QuellixLoader::HOST_LIBRARY if defined?(QuellixLoader)
      RUBY_PLATFORM.match?(/mswin|mingw/) ? "SketchUpAPI.dll" : "libSketchUpAPI.so"
    end

    def active_model_handle
      Extension.load
      require "fiddle"
      function = Fiddle::Function.new(Fiddle::Handle.new(library)["SUApplicationGetActiveModel"],
                                      [Fiddle::TYPE_VOIDP], Fiddle::TYPE_INT)
      # A handle is a struct of one pointer, a result an enumeration in which 0 is success.
      place = [0].pack("J")
      result = function.call(place)
      raise Error, "the host's API gives no active model (result #{result})" unless result.zero?
      place.unpack1("J")
    rescue LoadError
      raise Error, "this Ruby has no Fiddle, so the model's handle must be given"
    rescue Fiddle::DLError => e
      raise Error, "the host's API, #{library}, cannot be asked for the active model: #{e.message.lines.first.chomp}"
    end
  end
end
