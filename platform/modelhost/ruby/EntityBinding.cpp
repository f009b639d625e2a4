// What all entities and all drawing elements can do.
#include "Binding.h"

namespace modelhost_ruby {

namespace {

VALUE handle(VALUE self) {
  return ULL2NUM(reinterpret_cast<std::uintptr_t>(entityOf(self).ptr));
}

VALUE persistentId(VALUE self) {
  int64_t id = 0;
  check(SUEntityGetPersistentID(entityOf(self), &id), "no persistent id");
  return LL2NUM(id);
}

VALUE setPersistentId(VALUE self, VALUE value) {
  const long long id = NUM2LL(value);
  if (modelhost_set_persistent_id(entityOf(self), id) != SU_ERROR_NONE) {
    rb_raise(rb_eArgError, "%lld is not free", id);
  }
  return value;
}

VALUE entityId(VALUE self) {
  int32_t id = 0;
  check(SUEntityGetID(entityOf(self), &id), "no id");
  return INT2NUM(id);
}

// Asks without complaining about an entity that is gone.
void* handleOf(VALUE self) {
  int state = 0;
  const VALUE number = rb_protect([](VALUE object) { return handle(object); }, self, &state);
  if (state != 0) {
    rb_set_errinfo(Qnil);
    return nullptr;
  }
  return reinterpret_cast<void*>(NUM2ULL(number));
}

VALUE isValid(VALUE self) {
  return flagTo(handleOf(self) != nullptr);
}

VALUE isDeleted(VALUE self) {
  return flagTo(handleOf(self) == nullptr);
}

// What is gone stays the same thing, as a key too: no other gets its number.
VALUE equal(VALUE self, VALUE other) {
  if (!RTEST(rb_obj_is_kind_of(other, classes.entity))) return Qfalse;
  return flagTo(handleIn(self) == handleIn(other));
}

VALUE hashOf(VALUE self) {
  return rb_hash(ULL2NUM(reinterpret_cast<std::uintptr_t>(handleIn(self))));
}

VALUE model(VALUE self) {
  entityOf(self);
  return modelOf(self);
}

// get_attribute(dictionary, key, default = nil)
VALUE getAttribute(int argc, VALUE* argv, VALUE self) {
  rb_check_arity(argc, 2, 3);
  const char* name = StringValueCStr(argv[0]);
  const char* key = StringValueCStr(argv[1]);
  const VALUE value = readAttribute(findDictionary(self, name), key);
  return NIL_P(value) && argc > 2 ? argv[2] : value;
}

VALUE setAttribute(VALUE self, VALUE dictionary, VALUE keyValue, VALUE value) {
  const char* name = StringValueCStr(dictionary);
  const char* key = StringValueCStr(keyValue);
  SUAttributeDictionaryRef ref = SU_INVALID;
  check(SUEntityGetAttributeDictionary(entityOf(self), name, &ref), "no dictionary");
  writeAttribute(ref, key, value);
  return value;
}

VALUE deleteAttribute(VALUE self, VALUE dictionary, VALUE keyValue) {
  const char* name = StringValueCStr(dictionary);
  const char* key = StringValueCStr(keyValue);
  const SUAttributeDictionaryRef ref = findDictionary(self, name);
  return flagTo(SUIsValid(ref) && modelhost_delete_attribute(ref, key) == SU_ERROR_NONE);
}

VALUE isHidden(VALUE self) {
  bool hidden = false;
  check(SUDrawingElementGetHidden(elementOf(self), &hidden), "not known");
  return flagTo(hidden);
}

VALUE setHidden(VALUE self, VALUE value) {
  check(SUDrawingElementSetHidden(elementOf(self), flagFrom(value)), "it cannot be hidden");
  return value;
}

VALUE isVisible(VALUE self) {
  return flagTo(!RTEST(isHidden(self)));
}

VALUE setVisible(VALUE self, VALUE value) {
  setHidden(self, flagTo(!flagFrom(value)));
  return value;
}

VALUE material(VALUE self) {
  SUMaterialRef ref = SU_INVALID;
  if (SUDrawingElementGetMaterial(elementOf(self), &ref) != SU_ERROR_NONE) return Qnil;
  return wrap(classes.material, ref.ptr, modelOf(self));
}

VALUE setMaterial(VALUE self, VALUE value) {
  const SUMaterialRef ref = materialOrNone(value);
  check(SUDrawingElementSetMaterial(elementOf(self), ref), "it cannot be painted");
  return value;
}

VALUE layer(VALUE self) {
  SULayerRef ref = SU_INVALID;
  if (SUDrawingElementGetLayer(elementOf(self), &ref) != SU_ERROR_NONE) return Qnil;
  return wrap(classes.layer, ref.ptr, modelOf(self));
}

VALUE setLayer(VALUE self, VALUE value) {
  const auto ref = unwrapAs<SULayerRef>(value, classes.layer);
  check(SUDrawingElementSetLayer(elementOf(self), ref), "it cannot be put on the layer");
  return value;
}

VALUE setCastsShadows(VALUE self, VALUE value) {
  check(SUDrawingElementSetCastsShadows(elementOf(self), flagFrom(value)), "not possible");
  return value;
}

VALUE setReceivesShadows(VALUE self, VALUE value) {
  check(SUDrawingElementSetReceivesShadows(elementOf(self), flagFrom(value)), "not possible");
  return value;
}

VALUE bounds(VALUE self) {
  SUBoundingBox3D box{};
  check(SUDrawingElementGetBoundingBox(elementOf(self), &box), "no bounds");
  return boundsTo(box);
}

VALUE parent(VALUE self) {
  SUEntitiesRef ref = SU_INVALID;
  if (SUEntityGetParentEntities(entityOf(self), &ref) != SU_ERROR_NONE) return Qnil;
  return wrap(classes.entities, ref.ptr, modelOf(self));
}

VALUE erase(VALUE self) {
  SUEntityRef entity = entityOf(self);
  SUEntitiesRef entities = SU_INVALID;
  check(SUEntityGetParentEntities(entity, &entities), "it cannot be erased");
  check(SUEntitiesErase(entities, 1, &entity), "it cannot be erased");
  return Qnil;
}

}  // namespace

void defineEntity() {
  const VALUE entity = classes.entity;
  method<&handle>(entity, "handle");
  method<&persistentId>(entity, "persistent_id");
  method<&setPersistentId>(entity, "persistent_id=");
  method<&entityId>(entity, "entityID");
  method<&isValid>(entity, "valid?");
  method<&isDeleted>(entity, "deleted?");
  method<&equal>(entity, "==");
  method<&equal>(entity, "eql?");
  method<&hashOf>(entity, "hash");
  method<&model>(entity, "model");
  method<&parent>(entity, "parent");
  method<&getAttribute>(entity, "get_attribute");
  method<&setAttribute>(entity, "set_attribute");
  method<&deleteAttribute>(entity, "delete_attribute");
  const VALUE element = classes.drawingElement;
  method<&isHidden>(element, "hidden?");
  method<&setHidden>(element, "hidden=");
  method<&isVisible>(element, "visible?");
  method<&setVisible>(element, "visible=");
  method<&material>(element, "material");
  method<&setMaterial>(element, "material=");
  method<&layer>(element, "layer");
  method<&setLayer>(element, "layer=");
  method<&setCastsShadows>(element, "casts_shadows=");
  method<&setReceivesShadows>(element, "receives_shadows=");
  method<&bounds>(element, "bounds");
  method<&erase>(element, "erase!");
}

}  // namespace modelhost_ruby
