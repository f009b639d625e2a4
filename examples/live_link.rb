# The main job of the link, as a plug-in does it: start the renderer, export a model, give it a camera
# and a background, answer its requests, report an edit and reload, close it.
#
#   ruby live_link.rb [MODEL]
#
# MODEL is any file that the stand-in host reads; without it the sample house is exported.
# `make demo` sets the folders below and runs this.

require "fileutils"
require "json"

EXTENSION_DIR, MODELHOST_DIR, KVAPP_DIR = %w[EXTENSION_DIR MODELHOST_DIR KVAPP_DIR].map do |name|
  ENV.fetch(name) { abort "live_link: #{name} is not set; `make env` prints it" }
end
OUT_DIR = ENV.fetch("OUT_DIR", File.join(Dir.pwd, "out"))
DRAWN = ENV["KVAPP_PICTURE"] != "0"
PICTURE_SECONDS = 250

SAMPLE = File.join(__dir__, "house.json")
SUN = [0.45, -0.65, 0.75].freeze

$LOAD_PATH.unshift(EXTENSION_DIR, MODELHOST_DIR)
begin
  require "modelhost"
  require "Quellix"
rescue LoadError => e
  abort "live_link: #{e.message.lines.first.chomp}; is the project built?"
end

# What a plug-in answers when the renderer asks. A real one asks its host; this one keeps little.
class PluginCallbacks
  def initialize(model)
    @model = model
    @parameters = {}
    @use_pbr = false
  end

  def on_reload = puts("the renderer wants a reload")
  def on_camera_changed_by_gui(camera) = puts("the camera moved to #{camera.first(3)}")
  def on_renderer_quit = puts("the renderer quits")
  def on_datetime_updated(date) = puts("the date is now #{date}")
  def on_get_scenes = []
  def on_request_camera_info = (camera_of(@model) || [[0, -1, 0], [0, 0, 0], [0, 0, 1], 35.0, SUN]).flatten
  def on_request_shadow_info = [*SUN, 2027, 6, 21, 14, 0, 0, 1]
  def model_out_of_sync? = false
  def save_parameters(name, words) = @parameters[name] = words
  def load_parameters(name) = @parameters[name]
  def remove_attribute(name) = @parameters.delete(name)
  def set_use_pbr(flag) = @use_pbr = flag
  def get_use_pbr = @use_pbr
  def get_su_version = Quellix_SUInterface::SU_VERSION
  def suppress_autosync_once = nil
end

# The camera that a model file brings, as the camera methods take it: eye, target, up, field of view in
# degrees, sun. Nothing when it brings none: the picture then shows the model from afar.
def camera_of(model)
  camera = model.camera
  camera && [camera[:eye], camera[:target], camera[:up], camera[:fov], SUN]
end

# What a user does and the plug-in reports: a material in another colour, which is sent again with what
# shows it, and something at the root in another place, for which its new transformation is enough.
def edit(link, model)
  moved = [*model.entities.instances, *model.entities.groups].first
  painted = moved&.material || model.materials.to_a.first
  if painted
    painted.color = [150, 44, 38]
    link.invalidate_material_cache(painted.persistent_id & 0xFFFFFFFF)
  end
  return unless moved
  moved.transform!(ModelHost::Transformation.translation([10, 0, 0]))
  link.update_instance_transform(moved.persistent_id, moved.transformation.to_a)
end

# The renderer gets what was reported and keeps the rest. Returns how long it took.
def export(link, model, path, reload)
  began = Process.clock_gettime(Process::CLOCK_MONOTONIC)
  link.init_reload if reload
  link.prepare_renderer(reload)
  link.do_import(model.handle, path, reload, true)
  link.update_cache_info
  Process.clock_gettime(Process::CLOCK_MONOTONIC) - began
end

# The renderer draws after it has let us go. A picture that cannot be drawn is in its report.
def picture_comes?(report_file)
  picture = File.join(OUT_DIR, "picture.png")
  deadline = Process.clock_gettime(Process::CLOCK_MONOTONIC) + PICTURE_SECONDS
  until File.exist?(picture)
    return false if Process.clock_gettime(Process::CLOCK_MONOTONIC) > deadline
    return false unless JSON.parse(File.read(report_file, encoding: "UTF-8"))["outputTroubles"].empty?
    sleep 0.05
  end
  true
end

def megabytes(bytes) = format("%.2f MB", bytes / 1048576.0)
def milliseconds(seconds) = format("%.1f ms", seconds * 1000)

def print_report(report, first_seconds, reload_seconds)
  first, reload = report["exports"]
  puts "materials   #{report["materials"]}"
  puts "meshes      #{report["meshes"]}"
  puts "placements  #{report["placements"]}"
  puts "vertices    #{report["vertices"]}"
  puts "triangles   #{report["triangles"]}"
  puts "sent        #{megabytes(first["bytes"])} in #{milliseconds(first_seconds)}"
  puts "reload      #{megabytes(reload["bytes"])} in #{milliseconds(reload_seconds)}, " \
       "materials sent: #{reload["materialsSent"]}, meshes sent: #{reload["meshesSent"]}"
  puts "picture     #{File.join(OUT_DIR, "picture.png")}" if DRAWN
  puts "scene       #{File.join(OUT_DIR, "scene.glb")}"
  report["faults"].each { |fault| warn "fault: command #{fault["command"]} #{fault["name"]}: #{fault["text"]}" }
end

path = ARGV.first || SAMPLE
begin
  model = ModelHost.load(path)
rescue RuntimeError => e
  abort "live_link: #{e.message}"
end
warn "live_link: #{model.warning}" if model.warning
camera = camera_of(model)

FileUtils.mkdir_p(OUT_DIR)
%w[picture.png scene.glb report.json].each { |name| FileUtils.rm_f(File.join(OUT_DIR, name)) }
ENV["KVAPP_OUT"] = OUT_DIR

link = Quellix_SUInterface.new
unless link.init_renderer(PluginCallbacks.new(model), KVAPP_DIR)
  abort "live_link: the renderer did not start; is #{File.join(KVAPP_DIR, "KvApp", "KvApp.exe")} there?"
end

first_seconds = export(link, model, path, false)
link.do_rendering(*camera) if camera
link.set_background_settings([0.62, 0.75, 0.90, 0, 0, 0, 0, 0, 0, 0])
10.times do
  link.poll_to_plugin
  sleep 0.01
end
edit(link, model)
reload_seconds = export(link, model, path, true)
abort "live_link: the renderer has ended before the picture was drawn" unless link.is_alive
link.quit

report_file = File.join(OUT_DIR, "report.json")
abort "live_link: the renderer wrote no report to #{OUT_DIR}" unless File.exist?(report_file)
report = JSON.parse(File.read(report_file, encoding: "UTF-8"))
print_report(report, first_seconds, reload_seconds)
abort "live_link: the renderer drew no picture" if DRAWN && !picture_comes?(report_file)
exit report["faults"].empty?
