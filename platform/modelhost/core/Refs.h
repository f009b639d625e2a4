// Which object each kind of handle stands for, and the way from one to the other.
#pragma once

#include <SketchUpAPI/model/defs.h>
#include <SketchUpAPI/unicodestring.h>

#include "core/HandleTable.h"

namespace modelhost {

class Model;
class Entities;
class Entity;
class DrawingElement;
class Vertex;
class Edge;
class Loop;
class Face;
class Definition;
class Instance;
class Group;
class Image;
class Layer;
class LayerFolder;
class Material;
class Texture;
class Dictionary;
class String;
class TypedValue;
class RenderingOptions;
class ImageRep;
class TextureWriter;
class UvHelper;
class MeshHelper;
class Opening;
class GeometryInput;
class LoopInput;

constexpr std::uint32_t kInstanceKinds =
    bitOf(Kind::Instance) | bitOf(Kind::Group) | bitOf(Kind::Image);
constexpr std::uint32_t kDrawingElementKinds =
    kInstanceKinds | bitOf(Kind::Edge) | bitOf(Kind::Face) | bitOf(Kind::Definition);
constexpr std::uint32_t kEntityKinds = kDrawingElementKinds | bitOf(Kind::Vertex) |
                                       bitOf(Kind::Loop) | bitOf(Kind::Layer) |
                                       bitOf(Kind::LayerFolder) | bitOf(Kind::Material) |
                                       bitOf(Kind::Texture) | bitOf(Kind::Dictionary);

template <class Ref>
struct RefTraits;

template <class ObjectType, std::uint32_t kindBits>
struct RefTraitsOf {
  using Type = ObjectType;
  static constexpr std::uint32_t kKinds = kindBits;
};

#define MODELHOST_REF(ref, type, kinds) \
  template <>                           \
  struct RefTraits<ref> : RefTraitsOf<type, kinds> {}
MODELHOST_REF(SUModelRef, Model, bitOf(Kind::Model));
MODELHOST_REF(SUEntitiesRef, Entities, bitOf(Kind::Entities));
MODELHOST_REF(SUEntityRef, Entity, kEntityKinds);
MODELHOST_REF(SUDrawingElementRef, DrawingElement, kDrawingElementKinds);
MODELHOST_REF(SUVertexRef, Vertex, bitOf(Kind::Vertex));
MODELHOST_REF(SUEdgeRef, Edge, bitOf(Kind::Edge));
MODELHOST_REF(SULoopRef, Loop, bitOf(Kind::Loop));
MODELHOST_REF(SUFaceRef, Face, bitOf(Kind::Face));
MODELHOST_REF(SUComponentDefinitionRef, Definition, bitOf(Kind::Definition));
MODELHOST_REF(SUComponentInstanceRef, Instance, kInstanceKinds);
MODELHOST_REF(SUGroupRef, Group, bitOf(Kind::Group));
MODELHOST_REF(SUImageRef, Image, bitOf(Kind::Image));
MODELHOST_REF(SULayerRef, Layer, bitOf(Kind::Layer));
MODELHOST_REF(SULayerFolderRef, LayerFolder, bitOf(Kind::LayerFolder));
MODELHOST_REF(SUMaterialRef, Material, bitOf(Kind::Material));
MODELHOST_REF(SUTextureRef, Texture, bitOf(Kind::Texture));
MODELHOST_REF(SUAttributeDictionaryRef, Dictionary, bitOf(Kind::Dictionary));
MODELHOST_REF(SUStringRef, String, bitOf(Kind::String));
MODELHOST_REF(SUTypedValueRef, TypedValue, bitOf(Kind::TypedValue));
MODELHOST_REF(SURenderingOptionsRef, RenderingOptions, bitOf(Kind::RenderingOptions));
MODELHOST_REF(SUImageRepRef, ImageRep, bitOf(Kind::ImageRep));
MODELHOST_REF(SUTextureWriterRef, TextureWriter, bitOf(Kind::TextureWriter));
MODELHOST_REF(SUUVHelperRef, UvHelper, bitOf(Kind::UvHelper));
MODELHOST_REF(SUMeshHelperRef, MeshHelper, bitOf(Kind::MeshHelper));
MODELHOST_REF(SUOpeningRef, Opening, bitOf(Kind::Opening));
MODELHOST_REF(SUGeometryInputRef, GeometryInput, bitOf(Kind::GeometryInput));
MODELHOST_REF(SULoopInputRef, LoopInput, bitOf(Kind::LoopInput));
#undef MODELHOST_REF

// The object behind a handle; null when the handle is null, released, foreign or garbage.
template <class Ref>
auto* find(Ref ref) noexcept {
  using Traits = RefTraits<Ref>;
  return static_cast<typename Traits::Type*>(HandleTable::instance().find(ref.ptr, Traits::kKinds));
}

template <class Ref>
Ref refOf(const Object* object) noexcept {
  return Ref{object != nullptr ? object->handle() : nullptr};
}

// A thing that may be released under the one that refers to it: then it reads as none.
template <class Ref>
class Link {
 public:
  using Type = typename RefTraits<Ref>::Type;

  Link() = default;
  Link(const Type* to) : ref_(refOf<Ref>(to)) {}
  Link(Ref ref) : ref_(ref) {}
  Type* get() const { return find(ref_); }

 private:
  Ref ref_ = SU_INVALID;
};

// The same handle as another kind; null when the object is not of that kind.
template <class To, class From>
To convert(From ref) noexcept {
  return To{find(To{ref.ptr}) != nullptr && find(ref) != nullptr ? ref.ptr : nullptr};
}

}  // namespace modelhost
