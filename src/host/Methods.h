#pragma once

#include "host/RubyHeaders.h"

// The Ruby methods, as functions of their receiver (not used) and their arguments. They carry their
// names as symbols of the library. Each converts all its arguments to plain values first, while no
// C++ object is alive, since a Ruby error leaves a method without running destructors.

extern "C" {

RUBY_FUNC_EXPORTED VALUE InitRenderer(VALUE self, VALUE receiver, VALUE directory);
RUBY_FUNC_EXPORTED VALUE InitReload(VALUE self);
RUBY_FUNC_EXPORTED VALUE PrepareRendering(VALUE self, VALUE reload);
RUBY_FUNC_EXPORTED VALUE SetCamera(VALUE self, VALUE vector1, VALUE vector2, VALUE vector3,
                                   VALUE scalar, VALUE vector4);
RUBY_FUNC_EXPORTED VALUE SetCameraWithoutProgress(VALUE self, VALUE vector1, VALUE vector2,
                                                  VALUE vector3, VALUE scalar, VALUE vector4);
RUBY_FUNC_EXPORTED VALUE SetCameraAndBackgroundSettings(VALUE self, VALUE vector1, VALUE vector2,
                                                        VALUE vector3, VALUE scalar, VALUE vector4,
                                                        VALUE settings);
RUBY_FUNC_EXPORTED VALUE Quit(VALUE self);
RUBY_FUNC_EXPORTED VALUE SetBackgroundSettings(VALUE self, VALUE settings);
RUBY_FUNC_EXPORTED VALUE SetLinkCamera(VALUE self, VALUE linked);
RUBY_FUNC_EXPORTED VALUE ShowMessage(VALUE self, VALUE text);
RUBY_FUNC_EXPORTED VALUE SetProgress(VALUE self, VALUE fraction);
RUBY_FUNC_EXPORTED VALUE SetModelName(VALUE self, VALUE path);
RUBY_FUNC_EXPORTED VALUE IsAlive(VALUE self);
RUBY_FUNC_EXPORTED VALUE PollToPlugin(VALUE self);
RUBY_FUNC_EXPORTED VALUE ReloadFromPlugin(VALUE self);
RUBY_FUNC_EXPORTED VALUE ClearModelDataForReload(VALUE self);

RUBY_FUNC_EXPORTED VALUE DoImport(VALUE self, VALUE model, VALUE path, VALUE reload, VALUE usePbr);

RUBY_FUNC_EXPORTED VALUE _InvalidateMaterialCache(VALUE self, VALUE materialId);
RUBY_FUNC_EXPORTED VALUE _InvalidateLayerCache(VALUE self, VALUE layerId);
RUBY_FUNC_EXPORTED VALUE _InitChildrenMap(VALUE self, VALUE model);
RUBY_FUNC_EXPORTED VALUE _InvalidateDefinition(VALUE self, VALUE definitionId);
RUBY_FUNC_EXPORTED VALUE _InvalidateGeometryCache(VALUE self, VALUE ownerId);
RUBY_FUNC_EXPORTED VALUE _UpdateInstanceTransform(VALUE self, VALUE ownerId, VALUE transform);
RUBY_FUNC_EXPORTED VALUE _UpdateCacheInfo(VALUE self);
RUBY_FUNC_EXPORTED VALUE ClearReloadCache(VALUE self);

}  // extern "C"
