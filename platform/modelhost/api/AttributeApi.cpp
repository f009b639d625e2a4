#include <SketchUpAPI/model/attribute_dictionary.h>
#include <SketchUpAPI/model/rendering_options.h>

#include "core/Args.h"
#include "model/Model.h"

using namespace modelhost;

SUEntityRef SUAttributeDictionaryToEntity(SUAttributeDictionaryRef dictionary) {
  MODELHOST_CALL_INFALLIBLE(SUAttributeDictionaryToEntity);
  return convert<SUEntityRef>(dictionary);
}

SUAttributeDictionaryRef SUAttributeDictionaryFromEntity(SUEntityRef entity) {
  MODELHOST_CALL_INFALLIBLE(SUAttributeDictionaryFromEntity);
  return convert<SUAttributeDictionaryRef>(entity);
}

SUResult SUAttributeDictionaryCreate(SUAttributeDictionaryRef* out_dictionary, const char* name) {
  MODELHOST_CALL(SUAttributeDictionaryCreate);
  if (name == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  return create(out_dictionary, name);
}

SUResult SUAttributeDictionaryRelease(SUAttributeDictionaryRef* dictionary) {
  MODELHOST_CALL(SUAttributeDictionaryRelease);
  return releaseIf(dictionary, [](const Dictionary& d) { return d.owner == nullptr; });
}

SUResult SUAttributeDictionaryGetName(SUAttributeDictionaryRef dictionary, SUStringRef* name) {
  MODELHOST_CALL(SUAttributeDictionaryGetName);
  return giveText(dictionary, name, [](const Dictionary& d) -> std::string_view { return d.name; });
}

SUResult SUAttributeDictionaryGetNumKeys(SUAttributeDictionaryRef dictionary, size_t* count) {
  MODELHOST_CALL(SUAttributeDictionaryGetNumKeys);
  return give(dictionary, count, [](const Dictionary& d) { return d.entries.size(); });
}

namespace {

// The keys of a list of pairs, into strings that the caller has created.
template <class Map>
SUResult putKeys(const Map& map, size_t len, SUStringRef keys[], size_t* count) {
  if (keys == nullptr || count == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  *count = 0;
  for (const auto& entry : map) {
    if (*count == len) break;
    if (const SUResult put = putText(entry.first, &keys[*count]); put != SU_ERROR_NONE) return put;
    ++*count;
  }
  return SU_ERROR_NONE;
}

const Value* valueAt(const RenderingOptions& options, const char* key) {
  const auto at = options.values.find(key);
  return at == options.values.end() ? nullptr : &at->second;
}

}  // namespace

SUResult SUAttributeDictionaryGetKeys(SUAttributeDictionaryRef dictionary, size_t len,
                                      SUStringRef keys[], size_t* count) {
  MODELHOST_CALL(SUAttributeDictionaryGetKeys);
  const Dictionary* d = find(dictionary);
  return d == nullptr ? SU_ERROR_INVALID_INPUT : putKeys(d->entries, len, keys, count);
}

SUResult SUAttributeDictionaryGetValue(SUAttributeDictionaryRef dictionary, const char* key,
                                       SUTypedValueRef* value) {
  MODELHOST_CALL(SUAttributeDictionaryGetValue);
  const Dictionary* d = find(dictionary);
  if (d == nullptr) return SU_ERROR_INVALID_INPUT;
  if (key == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  return putValue(d->find(key), value);
}

SUResult SUAttributeDictionarySetValue(SUAttributeDictionaryRef dictionary, const char* key,
                                       SUTypedValueRef value) {
  MODELHOST_CALL(SUAttributeDictionarySetValue);
  const TypedValue* v = find(value);
  if (v == nullptr) return SU_ERROR_INVALID_INPUT;
  return changeFrom(dictionary, key, [&](Dictionary& d, char) { d.set(key, v->value()); });
}

SUResult SURenderingOptionsGetNumKeys(SURenderingOptionsRef options, size_t* count) {
  MODELHOST_CALL(SURenderingOptionsGetNumKeys);
  return give(options, count, [](const RenderingOptions& o) { return o.values.size(); });
}

SUResult SURenderingOptionsGetKeys(SURenderingOptionsRef options, size_t len, SUStringRef keys[],
                                   size_t* count) {
  MODELHOST_CALL(SURenderingOptionsGetKeys);
  const RenderingOptions* o = find(options);
  return o == nullptr ? SU_ERROR_INVALID_INPUT : putKeys(o->values, len, keys, count);
}

SUResult SURenderingOptionsGetValue(SURenderingOptionsRef options, const char* key,
                                    SUTypedValueRef* value) {
  MODELHOST_CALL(SURenderingOptionsGetValue);
  const RenderingOptions* o = find(options);
  if (o == nullptr) return SU_ERROR_INVALID_INPUT;
  if (key == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  return putValue(valueAt(*o, key), value);
}

SUResult SURenderingOptionsSetValue(SURenderingOptionsRef options, const char* key,
                                    SUTypedValueRef value) {
  MODELHOST_CALL(SURenderingOptionsSetValue);
  const TypedValue* v = find(value);
  if (v == nullptr) return SU_ERROR_INVALID_INPUT;
  return changeFrom(options, key, [&](RenderingOptions& o, char) { o.values[key] = v->value(); });
}
