# What the host loads when the extension is switched on.
unless file_loaded?(__FILE__)
  QuellixLive::Plugin.new
  file_loaded(__FILE__)
end
