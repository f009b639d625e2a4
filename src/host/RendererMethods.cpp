// The methods that start, steer and stop the renderer.

#include "host/Methods.h"

#include <string>

#include "host/Arguments.h"
#include "host/Guard.h"
#include "host/Session.h"
#include "support/ModelName.h"

using quellix::BackgroundValues;
using quellix::CameraValues;
using quellix::Guarded;
using quellix::IpcInterface;
using quellix::Session;

namespace {

Session& TheSession() {
  return Session::Instance();
}

// Whether a view goes to the renderer: when its camera follows the host's, or when it must have one
// at all.
bool WantsView(IpcInterface& link) {
  return link.GetLinkCamera() || TheSession().forceCameraSend;
}

// Sends a command that takes no more than one plain value.
template <class Command>
VALUE SendSimply(Command command) {
  return Guarded([command] {
    if (IpcInterface* link = TheSession().Link()) command(*link);
    return Qnil;
  });
}

VALUE SendCamera(const CameraValues& camera, bool withProgress) {
  return Guarded([camera, withProgress] {
    IpcInterface* link = TheSession().Link();
    if (link == nullptr || !WantsView(*link)) return Qnil;
    TheSession().forceCameraSend = false;
    link->SetCamera(camera, withProgress);
    return Qnil;
  });
}

}  // namespace

extern "C" {

VALUE InitRenderer(VALUE, VALUE receiver, VALUE directory) {
  if (rb_thread_current() != rb_thread_main()) {
    rb_raise(rb_eRuntimeError, "init_renderer is for the host's main thread");
  }
  VALUE text = quellix::PathText(directory);
  const char* path = StringValueCStr(text);
  const VALUE started = Guarded([receiver, path] {
    IpcInterface& link = TheSession().Open(receiver);
    if (!link.LaunchApp(path)) return Qfalse;
    TheSession().forceCameraSend = true;
    return Qtrue;
  });
  RB_GC_GUARD(text);
  return started;
}

VALUE InitReload(VALUE) {
  TheSession().forceCameraSend = false;
  return Qnil;
}

VALUE PrepareRendering(VALUE, VALUE reload) {
  const bool isReload = reload == Qtrue;
  return SendSimply([isReload](IpcInterface& link) { link.PrepareRendering(isReload); });
}

VALUE SetCamera(VALUE, VALUE vector1, VALUE vector2, VALUE vector3, VALUE scalar, VALUE vector4) {
  if (TheSession().Link() == nullptr) return Qnil;
  return SendCamera(quellix::ReadCamera(vector1, vector2, vector3, scalar, vector4), true);
}

VALUE SetCameraWithoutProgress(VALUE, VALUE vector1, VALUE vector2, VALUE vector3, VALUE scalar,
                               VALUE vector4) {
  if (TheSession().Link() == nullptr) return Qnil;
  return SendCamera(quellix::ReadCamera(vector1, vector2, vector3, scalar, vector4), false);
}

VALUE SetCameraAndBackgroundSettings(VALUE, VALUE vector1, VALUE vector2, VALUE vector3,
                                     VALUE scalar, VALUE vector4, VALUE settings) {
  if (TheSession().Link() == nullptr) return Qnil;
  const CameraValues camera = quellix::ReadCamera(vector1, vector2, vector3, scalar, vector4);
  const BackgroundValues background = quellix::ReadBackground(settings);
  return Guarded([&camera, &background] {
    IpcInterface* link = TheSession().Link();
    if (link == nullptr || !WantsView(*link)) return Qnil;
    TheSession().forceCameraSend = false;
    link->SetCameraAndBackgroundSettings(camera, background);
    return Qnil;
  });
}

VALUE SetBackgroundSettings(VALUE, VALUE settings) {
  if (TheSession().Link() == nullptr) return Qnil;
  const BackgroundValues background = quellix::ReadBackground(settings);
  return SendSimply([&background](IpcInterface& link) {
    if (WantsView(link)) link.SetBackgroundSettings(background);
  });
}

VALUE SetLinkCamera(VALUE, VALUE linked) {
  const bool isLinked = RTEST(linked);
  return SendSimply([isLinked](IpcInterface& link) { link.SetLinkCamera(isLinked); });
}

VALUE ShowMessage(VALUE, VALUE message) {
  if (TheSession().Link() == nullptr) return Qnil;
  VALUE text = quellix::Utf8Text(message);
  // Up to the first NUL; the text may lack one of its own.
  const char* bytes = StringValuePtr(text);
  const auto length = static_cast<std::size_t>(RSTRING_LEN(text));
  const VALUE result = SendSimply([bytes, length](IpcInterface& link) {
    const std::string whole(bytes, length);
    link.SetMessage(whole.c_str());
  });
  RB_GC_GUARD(text);
  return result;
}

VALUE SetProgress(VALUE, VALUE fraction) {
  if (TheSession().Link() == nullptr) return Qnil;
  const float value = quellix::FloatValue(fraction);
  return SendSimply([value](IpcInterface& link) { link.SetProgress(value); });
}

VALUE SetModelName(VALUE, VALUE path) {
  if (TheSession().Link() == nullptr) return Qnil;
  VALUE text = quellix::Utf8Text(path);
  const char* bytes = StringValueCStr(text);
  const VALUE result =
      SendSimply([bytes](IpcInterface& link) { link.SetModelName(quellix::ModelNameOf(bytes)); });
  RB_GC_GUARD(text);
  return result;
}

VALUE IsAlive(VALUE) {
  return Guarded([] {
    const IpcInterface* link = TheSession().Link();
    return link != nullptr && link->IsAlive() ? Qtrue : Qfalse;
  });
}

VALUE Quit(VALUE) {
  return Guarded([] {
    TheSession().Close();
    return Qnil;
  });
}

VALUE PollToPlugin(VALUE) {
  return SendSimply([](IpcInterface& link) { link.PollToPlugin(); });
}

VALUE ReloadFromPlugin(VALUE) {
  return SendSimply([](IpcInterface& link) { link.ReloadFromPlugin(); });
}

VALUE ClearModelDataForReload(VALUE) {
  return SendSimply([](IpcInterface& link) { link.ClearModelDataForReload(); });
}

}  // extern "C"
