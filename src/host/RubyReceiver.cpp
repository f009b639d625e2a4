#include "host/RubyReceiver.h"

#include <algorithm>

#include "host/Arguments.h"
#include "host/ProtectedCall.h"

namespace quellix {

namespace {

constexpr long kValuesPerScene = 21;

VALUE Utf8String(const std::string& text) {
  return rb_utf8_str_new(text.data(), static_cast<long>(text.size()));
}

}  // namespace

// What follows runs inside ProtectedCall: it may raise at any Ruby call, so nothing in it may have
// a destructor that matters. Results go into objects of the caller, made large enough beforehand
// where a length is known, and else grown between two Ruby calls.

RubyReceiver::RubyReceiver(VALUE rubyObject) : object(rubyObject) {
  rb_gc_register_address(&object);
}

RubyReceiver::~RubyReceiver() {
  rb_gc_unregister_address(&object);
}

void RubyReceiver::OnReload() {
  ProtectedCall("on_reload", [&] { rb_funcall(object, rb_intern("on_reload"), 0); });
}

void RubyReceiver::OnCameraChangedByGui(const std::array<float, 10>& camera) {
  ProtectedCall("on_camera_changed_by_gui", [&] {
    const VALUE values = rb_ary_new_capa(static_cast<long>(camera.size()));
    for (const float value : camera) rb_ary_push(values, rb_float_new(value));
    rb_funcall(object, rb_intern("on_camera_changed_by_gui"), 1, values);
  });
}

void RubyReceiver::OnRendererQuit() {
  ProtectedCall("on_renderer_quit", [&] { rb_funcall(object, rb_intern("on_renderer_quit"), 0); });
}

void RubyReceiver::OnDatetimeUpdated(const std::array<std::int32_t, 6>& dateTime) {
  ProtectedCall("on_datetime_updated", [&] {
    const VALUE values = rb_ary_new_capa(static_cast<long>(dateTime.size()));
    for (const std::int32_t value : dateTime) rb_ary_push(values, rb_float_new(value));
    rb_funcall(object, rb_intern("on_datetime_updated"), 1, values);
  });
}

std::vector<SceneInfo> RubyReceiver::OnGetScenes(const Room& forScenes) {
  std::vector<SceneInfo> scenes;
  const bool answered = ProtectedCall("on_get_scenes", [&] {
    const VALUE list = rb_funcall(object, rb_intern("on_get_scenes"), 0);
    if (NIL_P(list)) return;
    Check_Type(list, T_ARRAY);
    const long count = RARRAY_LEN(list) / kValuesPerScene;
    if (count == 0 || !forScenes(static_cast<std::uint64_t>(count))) return;
    scenes.resize(static_cast<std::size_t>(count));
    for (long i = 0; i < count; ++i) {
      SceneInfo& scene = scenes[static_cast<std::size_t>(i)];
      long at = i * kValuesPerScene;
      VALUE name = Utf8Text(rb_ary_entry(list, at++));
      scene.name = StringValueCStr(name);
      for (float& value : scene.values) value = FloatAt(list, at++);
      scene.flag = rb_num2dbl(rb_ary_entry(list, at++)) > 0.0;
      for (std::int32_t& value : scene.integers) value = Int32At(list, at++);
      for (float& value : scene.lastValues) value = FloatAt(list, at++);
    }
  });
  if (!answered) scenes.clear();
  return scenes;
}

std::optional<std::array<float, 13>> RubyReceiver::OnRequestCameraInfo() {
  std::array<float, 13> camera{};
  const bool answered = ProtectedCall("on_request_camera_info", [&] {
    const VALUE list = rb_funcall(object, rb_intern("on_request_camera_info"), 0);
    RequireArray(list, static_cast<long>(camera.size()), "the result");
    for (long i = 0; i < 13; ++i) camera[static_cast<std::size_t>(i)] = FloatAt(list, i);
  });
  return answered ? std::optional(camera) : std::nullopt;
}

std::optional<ShadowInfo> RubyReceiver::OnRequestShadowInfo() {
  ShadowInfo shadow;
  const bool answered = ProtectedCall("on_request_shadow_info", [&] {
    const VALUE list = rb_funcall(object, rb_intern("on_request_shadow_info"), 0);
    RequireArray(list, 10, "the result");
    long at = 0;
    for (float& value : shadow.values) value = FloatAt(list, at++);
    for (std::int32_t& value : shadow.integers) value = Int32At(list, at++);
  });
  return answered ? std::optional(shadow) : std::nullopt;
}

std::optional<bool> RubyReceiver::ModelOutOfSync() {
  bool result = false;
  const bool answered = ProtectedCall("model_out_of_sync?", [&] {
    result = RTEST(rb_funcall(object, rb_intern("model_out_of_sync?"), 0));
  });
  return answered ? std::optional(result) : std::nullopt;
}

void RubyReceiver::SaveParameters(const std::string& name, const std::vector<std::int64_t>& words) {
  ProtectedCall("save_parameters", [&] {
    const VALUE list = rb_ary_new_capa(static_cast<long>(words.size()));
    for (const std::int64_t word : words) rb_ary_push(list, LL2NUM(word));
    rb_funcall(object, rb_intern("save_parameters"), 2, Utf8String(name), list);
  });
}

std::optional<std::vector<std::uint32_t>> RubyReceiver::LoadParameters(const std::string& name,
                                                                       const Room& forBytes) {
  std::vector<std::uint32_t> words;
  bool stored = false;
  const bool answered = ProtectedCall("load_parameters", [&] {
    const VALUE list = rb_funcall(object, rb_intern("load_parameters"), 1, Utf8String(name));
    if (NIL_P(list)) return;
    RequireArray(list, 1, "the result");
    const auto byteCount = static_cast<std::uint32_t>(Int32At(list, 0));
    RequireArray(list, 1 + (static_cast<long>(byteCount) + 3) / 4, "the result");
    if (!forBytes(byteCount)) return;
    words.resize(static_cast<std::size_t>(RARRAY_LEN(list)));
    for (std::size_t i = 0; i < words.size(); ++i) {
      words[i] = static_cast<std::uint32_t>(Int32At(list, static_cast<long>(i)));
    }
    stored = true;
  });
  return answered && stored ? std::optional(std::move(words)) : std::nullopt;
}

void RubyReceiver::RemoveAttribute(const std::string& name) {
  ProtectedCall("remove_attribute",
                [&] { rb_funcall(object, rb_intern("remove_attribute"), 1, Utf8String(name)); });
}

void RubyReceiver::SetUsePbr(bool usePbr) {
  ProtectedCall("set_use_pbr",
                [&] { rb_funcall(object, rb_intern("set_use_pbr"), 1, usePbr ? Qtrue : Qfalse); });
}

std::optional<bool> RubyReceiver::GetUsePbr() {
  bool result = false;
  const bool answered = ProtectedCall(
      "get_use_pbr", [&] { result = RTEST(rb_funcall(object, rb_intern("get_use_pbr"), 0)); });
  return answered ? std::optional(result) : std::nullopt;
}

std::optional<std::uint64_t> RubyReceiver::GetSuVersion() {
  std::uint64_t version = 0;
  const bool answered = ProtectedCall("get_su_version", [&] {
    version = UnsignedValue(rb_funcall(object, rb_intern("get_su_version"), 0));
  });
  return answered ? std::optional(version) : std::nullopt;
}

void RubyReceiver::SuppressAutosyncOnce() {
  ProtectedCall("suppress_autosync_once",
                [&] { rb_funcall(object, rb_intern("suppress_autosync_once"), 0); });
}

bool RubyReceiver::Interrupted() {
  return quellix::Interrupted();
}

}  // namespace quellix
