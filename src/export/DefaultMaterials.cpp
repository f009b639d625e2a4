#include "export/DefaultMaterials.h"

#include "cw/Model.h"
#include "cw/TypedValue.h"
#include "export/ReloadCaches.h"

namespace quellix {

namespace {

// The host's colour for one side of unpainted faces; black when it cannot be read.
SUColor FaceColor(SUModelRef su_model, const char* option) {
  SUColor color{0, 0, 0, 255};
  SUTypedValueGetColor(CW::Model(su_model).rendering_option(option).ref(), &color);
  return color;
}

void EnsureDefaultMaterial(SkpImporter& importer, std::uint32_t index, std::uint32_t materialId,
                           const char* option, const char* name) {
  ReloadCaches& caches = ReloadCaches::Instance();
  if (caches.UseCachedMaterial(index, materialId, 0, 0.0f, importer.cachedMaterialRefs)) return;

  const SUColor color = FaceColor(importer.model, option);
  const float channels[3] = {static_cast<float>(color.red) / 255.0f,
                             static_cast<float>(color.green) / 255.0f,
                             static_cast<float>(color.blue) / 255.0f};
  ClassicMaterialRecord record;
  record.index = index;
  for (int i = 0; i < 3; ++i) {
    record.ambientColor[i] = channels[i] * 0.3f;
    record.diffuseColor[i] = channels[i];
    record.specularColor[i] = 0.5f;
  }
  record.name = name;
  record.materialType = "Default";
  record.key = MaterialKey(0, materialId);
  importer.link.AppendMaterial(record);
  caches.RecordMaterial(record.key);
}

}  // namespace

void EnsureDefaultMaterials(SkpImporter& importer) {
  EnsureDefaultMaterial(importer, kDefaultFrontIndex, kDefaultFrontMaterialId, "FaceFrontColor",
                        "DefaultFaceFrontColor");
  EnsureDefaultMaterial(importer, kDefaultBackIndex, kDefaultBackMaterialId, "FaceBackColor",
                        "DefaultFaceBackColor");
}

}  // namespace quellix
