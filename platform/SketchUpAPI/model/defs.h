// Every handle kind of the model, and the number that names the kind of an entity.
#ifndef SKETCHUPAPI_MODEL_DEFS_H_
#define SKETCHUPAPI_MODEL_DEFS_H_

#include <SketchUpAPI/common.h>

DEFINE_SU_TYPE(SUModelRef)
DEFINE_SU_TYPE(SUEntitiesRef)
DEFINE_SU_TYPE(SUEntityRef)
DEFINE_SU_TYPE(SUDrawingElementRef)
DEFINE_SU_TYPE(SUVertexRef)
DEFINE_SU_TYPE(SUEdgeRef)
DEFINE_SU_TYPE(SULoopRef)
DEFINE_SU_TYPE(SUFaceRef)
DEFINE_SU_TYPE(SUOpeningRef)
DEFINE_SU_TYPE(SUComponentDefinitionRef)
DEFINE_SU_TYPE(SUComponentInstanceRef)
DEFINE_SU_TYPE(SUGroupRef)
DEFINE_SU_TYPE(SUImageRef)
DEFINE_SU_TYPE(SUImageRepRef)
DEFINE_SU_TYPE(SULayerRef)
DEFINE_SU_TYPE(SULayerFolderRef)
DEFINE_SU_TYPE(SUMaterialRef)
DEFINE_SU_TYPE(SUTextureRef)
DEFINE_SU_TYPE(SUTextureWriterRef)
DEFINE_SU_TYPE(SUUVHelperRef)
DEFINE_SU_TYPE(SUMeshHelperRef)
DEFINE_SU_TYPE(SUAttributeDictionaryRef)
DEFINE_SU_TYPE(SUTypedValueRef)
DEFINE_SU_TYPE(SURenderingOptionsRef)
DEFINE_SU_TYPE(SUGeometryInputRef)
DEFINE_SU_TYPE(SULoopInputRef)

// The kinds of entities; compare by name, the numbers are this host's own.
enum SURefType {
  SURefType_Unknown = 0,
  SURefType_AttributeDictionary,
  SURefType_ComponentDefinition,
  SURefType_ComponentInstance,
  SURefType_Edge,
  SURefType_Face,
  SURefType_Group,
  SURefType_Image,
  SURefType_Layer,
  SURefType_LayerFolder,
  SURefType_Loop,
  SURefType_Material,
  SURefType_Texture,
  SURefType_Vertex
};

#endif  // SKETCHUPAPI_MODEL_DEFS_H_
