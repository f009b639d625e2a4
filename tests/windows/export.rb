# Exports the sample house, whole and then as a reload: what was sent is in the digest file that the
# environment names.

$LOAD_PATH.unshift(ENV.fetch("EXTENSION_DIR"), ENV.fetch("MODELHOST_DIR"))
require "modelhost"
require "Quellix"

sample = File.expand_path("../../examples/house.json", __dir__)
model = ModelHost.load(sample)
link = Quellix_SUInterface.new
link.init_renderer(Object.new, ENV.fetch("KVAPP_DIR")) or abort "the renderer did not start"
[false, true].each do |reload|
  link.prepare_renderer(reload)
  link.do_import(model.handle, sample, reload, true)
  link.update_cache_info
end
link.quit
