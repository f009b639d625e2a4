module QuellixLive
  # The native extension, with the switches that a live link needs.
  module Extension
    NATIVE = File.join(__dir__, "native")

    # Whether owners of one definition in different paints get meshes of their own.
    def self.mesh_per_paint? = ENV["QUELLIX_MESH_PER_PAINT"] == "1"

    # Loads it from the plug-in's own folder where the package has put it, or else from the load path.
    # Switches are read when it is loaded, so they are set before.
    def self.load
      return if @loaded
      ENV["QUELLIX_MESH_PER_PAINT"] ||= "1"
      # The package's loader says what does not fit.
      packed = %w[quellix.rb Quellix.so].map { |name| File.join(NATIVE, name) }
      require packed.find { |file| File.file?(file) } || "Quellix"
      @loaded = true
    rescue LoadError => e
      raise Error, "the extension cannot be loaded: #{e.message.lines.first.chomp}"
    end
  end
end
