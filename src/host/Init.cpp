#include "host/Methods.h"

namespace {

constexpr int kSuVersion = 2027;

}  // namespace

// The interpreter calls this once, when it loads the library.
extern "C" {
RUBY_FUNC_EXPORTED void Init_Quellix() {
  const VALUE klass = rb_define_class("Quellix_SUInterface", rb_cObject);
  rb_define_const(klass, "SU_VERSION", INT2FIX(kSuVersion));

  rb_define_method(klass, "init_renderer", InitRenderer, 2);
  rb_define_method(klass, "init_reload", InitReload, 0);
  rb_define_method(klass, "prepare_renderer", PrepareRendering, 1);
  rb_define_method(klass, "do_rendering", SetCamera, 5);
  rb_define_method(klass, "do_rendering_without_progress", SetCameraWithoutProgress, 5);
  rb_define_method(klass, "do_rendering_with_background_settings", SetCameraAndBackgroundSettings,
                   6);
  rb_define_method(klass, "quit", Quit, 0);
  rb_define_method(klass, "set_background_settings", SetBackgroundSettings, 1);
  rb_define_method(klass, "set_camera_link", SetLinkCamera, 1);
  rb_define_method(klass, "show_message", ShowMessage, 1);
  rb_define_method(klass, "set_progress", SetProgress, 1);
  rb_define_method(klass, "set_model_name", SetModelName, 1);
  rb_define_method(klass, "is_alive", IsAlive, 0);
  rb_define_method(klass, "invalidate_material_cache", _InvalidateMaterialCache, 1);
  rb_define_method(klass, "invalidate_layer", _InvalidateLayerCache, 1);
  rb_define_method(klass, "init_children_map", _InitChildrenMap, 1);
  rb_define_method(klass, "invalidate_definition", _InvalidateDefinition, 1);
  rb_define_method(klass, "invalidate_geometry_cache", _InvalidateGeometryCache, 1);
  rb_define_method(klass, "update_instance_transform", _UpdateInstanceTransform, 2);
  rb_define_method(klass, "update_cache_info", _UpdateCacheInfo, 0);
  rb_define_method(klass, "poll_to_plugin", PollToPlugin, 0);
  rb_define_method(klass, "do_import", DoImport, 4);
  rb_define_method(klass, "reload_from_plugin", ReloadFromPlugin, 0);
  rb_define_method(klass, "clear_model_data_for_reload", ClearModelDataForReload, 0);
  rb_define_method(klass, "clear_reload_cache", ClearReloadCache, 0);
}
}
