#include <cstring>

#include "Binding.h"

namespace modelhost_ruby {

namespace {

SUMaterialRef materialOf(VALUE self) {
  return unwrapAs<SUMaterialRef>(self, classes.material);
}

VALUE name(VALUE self) {
  const SUMaterialRef material = materialOf(self);
  return readText([&](SUStringRef* s) { return SUMaterialGetName(material, s); }, "no name");
}

VALUE setName(VALUE self, VALUE value) {
  const char* text = StringValueCStr(value);
  if (SUMaterialSetName(materialOf(self), text) != SU_ERROR_NONE) {
    rb_raise(rb_eArgError, "another material is named %s", text);
  }
  return value;
}

VALUE color(VALUE self) {
  SUColor value{};
  check(SUMaterialGetColor(materialOf(self), &value), "no colour");
  return colorTo(value);
}

// On a textured material the texture takes on the colour.
VALUE setColor(VALUE self, VALUE value) {
  const SUColor to = colorFrom(value);
  const SUMaterialRef material = materialOf(self);
  check(SUMaterialSetColor(material, &to), "it cannot be coloured");
  SUTextureRef texture = SU_INVALID;
  if (SUMaterialGetTexture(material, &texture) == SU_ERROR_NONE) {
    SUMaterialSetType(material, SUMaterialType_ColorizedTexture);
  }
  return value;
}

VALUE alpha(VALUE self) {
  double opacity = 1;
  bool use = false;
  check(SUMaterialGetOpacity(materialOf(self), &opacity), "no opacity");
  check(SUMaterialGetUseOpacity(materialOf(self), &use), "no opacity");
  return rb_float_new(use ? opacity : 1.0);
}

VALUE setAlpha(VALUE self, VALUE value) {
  const double opacity = rb_num2dbl(value);
  if (SUMaterialSetOpacity(materialOf(self), opacity) != SU_ERROR_NONE) {
    rb_raise(rb_eArgError, "alpha is from 0 to 1");
  }
  SUMaterialSetUseOpacity(materialOf(self), opacity < 1);
  return value;
}

VALUE fetch(VALUE hash, const char* key) {
  return rb_hash_lookup(hash, ID2SYM(rb_intern(key)));
}

// {pixels: bytes, width:, height:, bits: 32, size: [w, h]}: rows from the bottom up, each pixel
// blue, green, red and, with 32 bits, alpha.
SUTextureRef textureFromPixels(VALUE hash) {
  VALUE bytes = fetch(hash, "pixels");
  StringValue(bytes);
  const VALUE bitsValue = fetch(hash, "bits");
  const size_t width = NUM2SIZET(fetch(hash, "width"));
  const size_t height = NUM2SIZET(fetch(hash, "height"));
  const size_t bits = NIL_P(bitsValue) ? 32 : NUM2SIZET(bitsValue);
  if (width > 32768 || height > 32768 || bits > 32 ||
      static_cast<size_t>(RSTRING_LEN(bytes)) != width * height * bits / 8) {
    rb_raise(rb_eArgError, "the pixels do not fill the picture");
  }
  SUImageRepRef rep = SU_INVALID;
  SUImageRepCreate(&rep);
  SUTextureRef texture = SU_INVALID;
  SUResult result = SUImageRepSetData(rep, width, height, bits, 0,
                                      reinterpret_cast<const SUByte*>(RSTRING_PTR(bytes)));
  if (result == SU_ERROR_NONE) result = SUTextureCreateFromImageRep(&texture, rep);
  SUImageRepRelease(&rep);
  if (result != SU_ERROR_NONE) rb_raise(rb_eArgError, "8, 24 or 32 bits make a picture");
  return texture;
}

struct TileSize {
  double width;
  double height;
};

// The size of one tile: a number, [w, h], or nil for one inch a pixel.
TileSize tileFrom(VALUE value) {
  if (NIL_P(value)) return {0, 0};
  TileSize tile{};
  if (RB_TYPE_P(value, T_ARRAY)) {
    tile = {rb_num2dbl(rb_ary_entry(value, 0)), rb_num2dbl(rb_ary_entry(value, 1))};
  } else {
    tile.width = tile.height = rb_num2dbl(value);
  }
  if (!(tile.width > 0 && tile.height > 0)) rb_raise(rb_eArgError, "the size is above 0");
  return tile;
}

// A path, [path, width, height], {file: path, size: [w, h]}, pixels as above, or nil for none. Both
// kinds of hash take use_alpha: whether the alpha of its pixels counts.
SUTextureRef textureFrom(VALUE value) {
  if (NIL_P(value)) return SU_INVALID;
  VALUE file = value;
  VALUE size = Qnil;
  if (RB_TYPE_P(value, T_ARRAY)) {
    file = rb_ary_entry(value, 0);
    if (RARRAY_LEN(value) > 1) size = rb_ary_subseq(value, 1, 2);
    if (!NIL_P(size) && RARRAY_LEN(size) == 1) size = rb_ary_entry(size, 0);
  } else if (RB_TYPE_P(value, T_HASH)) {
    file = fetch(value, "file");
    size = fetch(value, "size");
  }
  const TileSize tile = tileFrom(size);
  SUTextureRef texture = SU_INVALID;
  if (NIL_P(file)) {
    texture = textureFromPixels(value);
  } else {
    const char* path = StringValueCStr(file);
    if (SUTextureCreateFromFile(&texture, path, 1, 1) != SU_ERROR_NONE) {
      rb_raise(rb_eArgError, "%s cannot be read as a picture", path);
    }
    size_t width = 1;
    size_t height = 1;
    double s = 1;
    double t = 1;
    SUTextureGetDimensions(texture, &width, &height, &s, &t);
    SUTextureSetDimensions(texture, 1 / static_cast<double>(width),
                           1 / static_cast<double>(height));
  }
  if (tile.width > 0) SUTextureSetDimensions(texture, 1 / tile.width, 1 / tile.height);
  if (RB_TYPE_P(value, T_HASH) && !NIL_P(fetch(value, "use_alpha"))) {
    modelhost_texture_set_use_alpha(texture, RTEST(fetch(value, "use_alpha")));
  }
  return texture;
}

template <auto set>
VALUE setTexture(VALUE self, VALUE value) {
  const SUMaterialRef material = materialOf(self);
  check(set(material, textureFrom(value)), "it cannot have the texture");
  return value;
}

template <auto get>
VALUE hasTexture(VALUE self) {
  SUTextureRef texture = SU_INVALID;
  return flagTo(get(materialOf(self), &texture) == SU_ERROR_NONE);
}

// The number sets the measure and switches it on; nil switches it off.
template <auto enable, auto set>
VALUE setFactor(VALUE self, VALUE value) {
  const SUMaterialRef material = materialOf(self);
  if (!NIL_P(value)) check(set(material, rb_num2dbl(value)), "it cannot have this number");
  check(enable(material, !NIL_P(value)), "not possible");
  return value;
}

template <auto isEnabled, auto get>
VALUE factor(VALUE self) {
  bool enabled = false;
  double value = 0;
  check(isEnabled(materialOf(self), &enabled), "not known");
  check(get(materialOf(self), &value), "not known");
  return enabled ? rb_float_new(value) : Qnil;
}

VALUE colorizeDeltas(VALUE self) {
  double h = 0;
  double s = 0;
  double l = 0;
  check(SUMaterialGetColorizeDeltas(materialOf(self), &h, &s, &l), "no shifts");
  return rb_ary_new_from_args(3, rb_float_new(h), rb_float_new(s), rb_float_new(l));
}

VALUE setColorizeDeltas(VALUE self, VALUE value) {
  const SUPoint3D shifts = pointFrom(value);
  check(modelhost_material_set_colorize(materialOf(self), shifts.x, shifts.y, shifts.z),
        "no such shifts");
  return value;
}

VALUE setWorkflow(VALUE self, VALUE value) {
  VALUE text = rb_obj_as_string(value);
  const bool pbr = std::strcmp(StringValueCStr(text), "pbr") == 0;
  if (!pbr && std::strcmp(StringValueCStr(text), "classic") != 0) {
    rb_raise(rb_eArgError, "the workflow is :classic or :pbr");
  }
  check(modelhost_material_set_workflow(
            materialOf(self),
            pbr ? SUMaterialWorkflow_PBRMetallicRoughness : SUMaterialWorkflow_Classic),
        "not possible");
  return value;
}

VALUE workflow(VALUE self) {
  SUMaterialWorkflow value = SUMaterialWorkflow_Classic;
  check(SUMaterialGetWorkflow(materialOf(self), &value), "not known");
  return ID2SYM(rb_intern(value == SUMaterialWorkflow_Classic ? "classic" : "pbr"));
}

SUModelRef listModel(VALUE self) {
  return modelRefOf(modelOf(self));
}

VALUE allMaterials(VALUE self) {
  const SUModelRef model = listModel(self);
  size_t count = 0;
  check(SUModelGetNumMaterials(model, &count), "no materials");
  return readList<SUMaterialRef>(
      count,
      [&](size_t len, SUMaterialRef* out, size_t* got) {
        return SUModelGetMaterials(model, len, out, got);
      },
      modelOf(self));
}

// add(name): with a number behind the name when it is taken.
VALUE addMaterial(VALUE self, VALUE nameValue) {
  const SUModelRef model = listModel(self);
  VALUE wish = nameValue;
  StringValueCStr(wish);
  for (int n = 1; !NIL_P(rb_funcall(self, rb_intern("[]"), 1, wish)); ++n) {
    wish = rb_sprintf("%" PRIsVALUE "%d", nameValue, n);
  }
  SUMaterialRef ref = SU_INVALID;
  check(SUMaterialCreate(&ref), "no material can be made");
  SUMaterialSetName(ref, StringValueCStr(wish));
  check(SUModelAddMaterials(model, 1, &ref), "the material cannot be added");
  return wrap(classes.material, ref.ptr, modelOf(self));
}

VALUE removeMaterial(VALUE self, VALUE material) {
  listModel(self);
  check(modelhost_remove({materialOf(material).ptr}), "it cannot be removed");
  return Qnil;
}

}  // namespace

void defineMaterials() {
  const VALUE klass = classes.material;
  method<&name>(klass, "name");
  method<&setName>(klass, "name=");
  method<&color>(klass, "color");
  method<&setColor>(klass, "color=");
  method<&alpha>(klass, "alpha");
  method<&setAlpha>(klass, "alpha=");
  method<&setTexture<&SUMaterialSetTexture>>(klass, "texture=");
  method<&hasTexture<&SUMaterialGetTexture>>(klass, "texture?");
  method<&setTexture<&SUMaterialSetMetallicTexture>>(klass, "metallic_texture=");
  method<&setTexture<&SUMaterialSetRoughnessTexture>>(klass, "roughness_texture=");
  method<&setTexture<&SUMaterialSetNormalTexture>>(klass, "normal_texture=");
  method<&setFactor<&SUMaterialSetMetalnessEnabled, &SUMaterialSetMetallicFactor>>(klass,
                                                                                   "metallic=");
  method<&factor<&SUMaterialIsMetalnessEnabled, &SUMaterialGetMetallicFactor>>(klass, "metallic");
  method<&setFactor<&SUMaterialSetRoughnessEnabled, &SUMaterialSetRoughnessFactor>>(klass,
                                                                                    "roughness=");
  method<&factor<&SUMaterialIsRoughnessEnabled, &SUMaterialGetRoughnessFactor>>(klass, "roughness");
  method<&setFactor<&SUMaterialSetNormalEnabled, &SUMaterialSetNormalScale>>(klass,
                                                                             "normal_scale=");
  method<&factor<&SUMaterialIsNormalEnabled, &SUMaterialGetNormalScale>>(klass, "normal_scale");
  method<&colorizeDeltas>(klass, "colorize_deltas");
  method<&setColorizeDeltas>(klass, "colorize_deltas=");
  method<&workflow>(klass, "workflow");
  method<&setWorkflow>(klass, "workflow=");
  defineList(classes.materials);
  method<&allMaterials>(classes.materials, "to_a");
  method<&addMaterial>(classes.materials, "add");
  method<&removeMaterial>(classes.materials, "remove");
}

}  // namespace modelhost_ruby
