module QuellixLive
  # Answers the renderer. Called by the extension, on the host's thread, while the link polls or while a
  # command waits; what needs more than that is left to the link's next tick.
  class Callbacks
    # The link: model, settings, sync_soon, renderer_quit, camera_from_renderer, sun_from_renderer,
    # pending?, skip_once.
    def initialize(link)
      @link = link
    end

    def on_reload = @link.sync_soon
    def on_renderer_quit = @link.renderer_quit
    def on_camera_changed_by_gui(numbers) = @link.camera_from_renderer { |model| model.active_view.camera = Camera.from(numbers) }
    def on_datetime_updated(numbers) = @link.camera_from_renderer { |model| Scenes.set_date(model.shadow_info, numbers) }
    def on_get_scenes = Scenes.table(@link.model)
    # The numbers of a camera, with the sun.
    def on_request_camera_info = Camera.arguments(@link.model).flatten
    def on_request_shadow_info = Scenes.shadow(@link.model.shadow_info)
    def model_out_of_sync? = @link.pending?
    def save_parameters(name, words) = @link.settings.save(name, words)
    def load_parameters(name) = @link.settings.load(name)
    def remove_attribute(name) = @link.settings.remove(name)
    def set_use_pbr(flag) = @link.use_pbr = flag
    def get_use_pbr = @link.use_pbr?
    def get_su_version = Quellix_SUInterface::SU_VERSION
    def suppress_autosync_once = @link.skip_once
  end
end
