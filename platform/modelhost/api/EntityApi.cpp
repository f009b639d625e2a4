#include <SketchUpAPI/model/drawing_element.h>
#include <SketchUpAPI/model/entity.h>

#include "core/Args.h"
#include "model/Model.h"

using namespace modelhost;

namespace {

Entities* parentOf(const Entity& entity) {
  if ((kDrawingElementKinds & bitOf(entity.kind())) != 0) {
    return static_cast<const DrawingElement&>(entity).parent;
  }
  if (entity.kind() == Kind::Loop) return static_cast<const Loop&>(entity).face->parent;
  if (entity.kind() == Kind::Vertex) {
    const auto& edges = static_cast<const Vertex&>(entity).edges;
    return edges.empty() ? nullptr : edges.front()->parent;
  }
  return nullptr;
}

}  // namespace

SURefType modelhost::typeOf(Kind kind) {
  switch (kind) {
    case Kind::Vertex:
      return SURefType_Vertex;
    case Kind::Edge:
      return SURefType_Edge;
    case Kind::Loop:
      return SURefType_Loop;
    case Kind::Face:
      return SURefType_Face;
    case Kind::Definition:
      return SURefType_ComponentDefinition;
    case Kind::Instance:
      return SURefType_ComponentInstance;
    case Kind::Group:
      return SURefType_Group;
    case Kind::Image:
      return SURefType_Image;
    case Kind::Layer:
      return SURefType_Layer;
    case Kind::LayerFolder:
      return SURefType_LayerFolder;
    case Kind::Material:
      return SURefType_Material;
    case Kind::Texture:
      return SURefType_Texture;
    case Kind::Dictionary:
      return SURefType_AttributeDictionary;
    default:
      return SURefType_Unknown;
  }
}

SURefType SUEntityGetType(SUEntityRef entity) {
  MODELHOST_CALL_INFALLIBLE(SUEntityGetType);
  const Entity* e = find(entity);
  return e == nullptr ? SURefType_Unknown : typeOf(e->kind());
}

SURefType SUDrawingElementGetType(SUDrawingElementRef element) {
  MODELHOST_CALL_INFALLIBLE(SUDrawingElementGetType);
  const DrawingElement* e = find(element);
  return e == nullptr ? SURefType_Unknown : typeOf(e->kind());
}

SUResult SUEntityGetID(SUEntityRef entity, int32_t* id) {
  MODELHOST_CALL(SUEntityGetID);
  return give(entity, id, [](const Entity& e) { return e.id(); });
}

SUResult SUEntityGetPersistentID(SUEntityRef entity, int64_t* id) {
  MODELHOST_CALL(SUEntityGetPersistentID);
  return give(entity, id, [](const Entity& e) { return e.persistentId(); });
}

SUResult SUEntityGetModel(SUEntityRef entity, SUModelRef* model) {
  MODELHOST_CALL(SUEntityGetModel);
  return giveRef(entity, model, [](const Entity& e) { return e.model(); });
}

SUResult SUEntityGetParentEntities(SUEntityRef entity, SUEntitiesRef* entities) {
  MODELHOST_CALL(SUEntityGetParentEntities);
  return giveRef(entity, entities, [](const Entity& e) { return parentOf(e); });
}

SUResult SUEntityGetNumAttributeDictionaries(SUEntityRef entity, size_t* count) {
  MODELHOST_CALL(SUEntityGetNumAttributeDictionaries);
  return give(entity, count, [](const Entity& e) { return e.dictionaries().size(); });
}

SUResult SUEntityGetAttributeDictionaries(SUEntityRef entity, size_t len,
                                          SUAttributeDictionaryRef dictionaries[], size_t* count) {
  MODELHOST_CALL(SUEntityGetAttributeDictionaries);
  return giveList(entity, len, dictionaries, count,
                  [](const Entity& e) -> const Dictionaries& { return e.dictionaries(); });
}

SUResult SUEntityGetAttributeDictionary(SUEntityRef entity, const char* name,
                                        SUAttributeDictionaryRef* dictionary) {
  MODELHOST_CALL(SUEntityGetAttributeDictionary);
  if (name == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  return giveRef(entity, dictionary, [&](Entity& e) { return &e.dictionary(name); });
}

SUResult SUEntityAddAttributeDictionary(SUEntityRef entity, SUAttributeDictionaryRef dictionary) {
  MODELHOST_CALL(SUEntityAddAttributeDictionary);
  Dictionary* d = find(dictionary);
  if (d == nullptr || d->owner != nullptr) return SU_ERROR_INVALID_INPUT;
  return change(entity, [&](Entity& e) { e.addDictionary(std::unique_ptr<Dictionary>(d)); });
}
