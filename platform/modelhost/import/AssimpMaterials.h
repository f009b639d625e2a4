// Materials of a file that assimp has read, made as they are needed.
#pragma once

#include <SketchUpAPI/model/defs.h>

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "pixels/Pixels.h"

struct aiMaterial;
struct aiScene;
struct aiTexture;

namespace modelhost {

class AssimpMaterials {
 public:
  // `path` is that of the file; pictures are looked for beside it.
  AssimpMaterials(const aiScene& scene, const std::string& path, SUModelRef model);

  SUMaterialRef get(unsigned index);
  std::size_t unreadable() const { return unreadable_; }

 private:
  struct Picture {
    std::shared_ptr<const Pixels> pixels;
    std::string fileName;
  };

  SUMaterialRef make(const aiMaterial& source);
  void readColors(const aiMaterial& source, SUMaterialRef material);
  void readPbr(const aiMaterial& source, SUMaterialRef material);
  SUTextureRef texture(const aiMaterial& source, int type, unsigned slot);
  const Picture& picture(const std::string& name);
  Picture read(const std::string& name) const;

  const aiScene& scene_;
  std::string folder_;
  SUModelRef model_;
  std::vector<SUMaterialRef> made_;
  std::map<std::string, Picture> pictures_;
  std::size_t unreadable_ = 0;
};

}  // namespace modelhost
