// Any format that assimp reads. Its scene is taken as it is, without post-processing: polygons
// stay polygons, and a mesh that several nodes show becomes one component placed several times.
#include <SketchUpAPI/model/component_definition.h>
#include <SketchUpAPI/model/component_instance.h>
#include <SketchUpAPI/model/entities.h>
#include <SketchUpAPI/model/group.h>
#include <SketchUpAPI/model/model.h>
#include <assimp/scene.h>

#include <assimp/Importer.hpp>

#include <algorithm>
#include <map>
#include <unordered_set>
#include <vector>

#include "core/Refs.h"
#include "core/Texts.h"
#include "import/AssimpMaterials.h"
#include "import/AssimpUnits.h"
#include "import/Load.h"
#include "import/PolygonMesh.h"
#include "model/Model.h"

namespace modelhost {

namespace {

constexpr int kMaxDepth = 200;

SUTransformation toTransformation(const aiMatrix4x4& m) {
  SUTransformation t{};
  for (unsigned row = 0; row < 4; ++row) {
    for (unsigned column = 0; column < 4; ++column) {
      t.values[column * 4 + row] = static_cast<double>(m[row][column]);
    }
  }
  return t;
}

std::string nameOf(const aiString& name) {
  return asUtf8({name.C_Str(), name.length});
}

class SceneReader {
 public:
  SceneReader(const aiScene& scene, const std::string& path, SUModelRef model)
      : scene_(scene), model_(model), materials_(scene, path, model) {}

  void run() {
    count(*scene_.mRootNode, 0);
    SUEntitiesRef root = SU_INVALID;
    SUModelGetEntities(model_, &root);
    if (shown_.contains(scene_.mRootNode)) walk(*scene_.mRootNode, root, toHost_);
  }

  void setConversion(const SUTransformation& toHost) { toHost_ = toHost; }

  std::string leftOut() const {
    std::string text = report_.text();
    addCount(text, points_, "mesh of loose points", "meshes of loose points");
    addCount(text, placements_, "node whose place is not finite",
             "nodes whose place is not finite");
    addCount(text, materials_.unreadable(), "texture that could not be read",
             "textures that could not be read");
    return text;
  }

 private:
  using MeshKey = std::vector<unsigned>;

  static MeshKey meshesOf(const aiNode& node) {
    return {node.mMeshes, node.mMeshes + node.mNumMeshes};
  }

  // How often each set of meshes is shown, and which nodes show anything at all.
  bool count(const aiNode& node, int depth) {
    if (depth > kMaxDepth) {
      throw ImportError("its nodes are nested deeper than " + std::to_string(kMaxDepth));
    }
    bool shows = node.mNumMeshes > 0;
    if (shows) ++uses_[meshesOf(node)];
    for (unsigned i = 0; i < node.mNumChildren; ++i) {
      // A damaged file may leave assimp with children that are not there.
      if (node.mChildren[i] == nullptr) continue;
      shows = count(*node.mChildren[i], depth + 1) || shows;
    }
    if (shows) shown_.insert(&node);
    return shows;
  }

  // Adds what a node shows to `into`; `above` is a placement that has no group of its own.
  void walk(const aiNode& node, SUEntitiesRef into, const SUTransformation& above) {
    const SUTransformation placed = product(above, toTransformation(node.mTransformation));
    if (!isFinite(placed)) {
      ++placements_;
      return;
    }
    const bool alone = node.mNumMeshes > 0 && shownChildren(node) == 0;
    if (alone && uses_[meshesOf(node)] > 1) {
      placeComponent(node, into, placed);
      return;
    }
    // A root that only holds others needs no group around everything.
    if (&node == scene_.mRootNode && node.mNumMeshes == 0) {
      walkChildren(node, into, placed);
      return;
    }
    SUGroupRef group = SU_INVALID;
    SUGroupCreate(&group);
    SUEntitiesAddGroup(into, group);
    SUGroupSetName(group, nameOf(node.mName).c_str());
    SUGroupSetTransform(group, &placed);
    SUEntitiesRef inside = SU_INVALID;
    SUGroupGetEntities(group, &inside);
    if (node.mNumMeshes > 0) {
      if (uses_[meshesOf(node)] > 1) {
        placeComponent(node, inside, identity());
      } else {
        fill(meshesOf(node), inside);
      }
    }
    walkChildren(node, inside, identity());
  }

  void walkChildren(const aiNode& node, SUEntitiesRef into, const SUTransformation& above) {
    for (unsigned i = 0; i < node.mNumChildren; ++i) {
      if (shown_.contains(node.mChildren[i])) walk(*node.mChildren[i], into, above);
    }
  }

  std::size_t shownChildren(const aiNode& node) const {
    return static_cast<std::size_t>(
        std::count_if(node.mChildren, node.mChildren + node.mNumChildren,
                      [&](const aiNode* child) { return shown_.contains(child); }));
  }

  void placeComponent(const aiNode& node, SUEntitiesRef into, const SUTransformation& placed) {
    const auto [at, isNew] = components_.try_emplace(meshesOf(node));
    if (isNew) {
      at->second = SUComponentDefinitionRef(SU_INVALID);
      SUComponentDefinitionCreate(&at->second);
      const aiMesh& first = *scene_.mMeshes[node.mMeshes[0]];
      const aiString& name = first.mName.length > 0 ? first.mName : node.mName;
      SUComponentDefinitionSetName(at->second, nameOf(name).c_str());
      SUModelAddComponentDefinitions(model_, 1, &at->second);
      SUEntitiesRef entities = SU_INVALID;
      SUComponentDefinitionGetEntities(at->second, &entities);
      fill(at->first, entities);
    }
    SUComponentInstanceRef instance = SU_INVALID;
    SUComponentDefinitionCreateInstance(at->second, &instance);
    SUComponentInstanceSetName(instance, nameOf(node.mName).c_str());
    SUComponentInstanceSetTransform(instance, &placed);
    SUEntitiesAddInstance(into, instance, nullptr);
  }

  // All meshes of a node together, so that edges between its materials are shared too.
  void fill(const MeshKey& meshes, SUEntitiesRef entities) {
    PolygonMesh polygons;
    for (const unsigned index : meshes) append(*scene_.mMeshes[index], polygons);
    addPolygons(entities, polygons, report_);
  }

  void append(const aiMesh& mesh, PolygonMesh& out) {
    const auto base = static_cast<std::uint32_t>(out.points.size());
    for (unsigned i = 0; i < mesh.mNumVertices; ++i) {
      const aiVector3D& v = mesh.mVertices[i];
      out.points.push_back(
          {static_cast<double>(v.x), static_cast<double>(v.y), static_cast<double>(v.z)});
    }
    const SUMaterialRef material = materials_.get(mesh.mMaterialIndex);
    bool points = false;
    for (unsigned i = 0; i < mesh.mNumFaces; ++i) {
      const aiFace& face = mesh.mFaces[i];
      if (face.mNumIndices == 1) points = true;
      if (face.mNumIndices == 2) {
        out.lines.emplace_back(base + face.mIndices[0], base + face.mIndices[1]);
      }
      if (face.mNumIndices >= 3) appendFace(mesh, face, base, material, out);
    }
    if (points) ++points_;
  }

  static void appendFace(const aiMesh& mesh, const aiFace& face, std::uint32_t base,
                         SUMaterialRef material, PolygonMesh& out) {
    Polygon& polygon = out.polygons.emplace_back();
    // Files say nothing about backs; a face that is turned the wrong way must not look unpainted.
    polygon.front = material;
    polygon.back = material;
    for (unsigned k = 0; k < face.mNumIndices; ++k) {
      const unsigned index = face.mIndices[k];
      polygon.corners.push_back(base + index);
      if (mesh.HasTextureCoords(0)) {
        const aiVector3D& uv = mesh.mTextureCoords[0][index];
        polygon.uvs.push_back({static_cast<double>(uv.x), static_cast<double>(uv.y)});
      }
      if (mesh.HasNormals()) {
        const aiVector3D& n = mesh.mNormals[index];
        polygon.normals.push_back(
            {static_cast<double>(n.x), static_cast<double>(n.y), static_cast<double>(n.z)});
      }
    }
  }

  const aiScene& scene_;
  SUModelRef model_;
  AssimpMaterials materials_;
  SUTransformation toHost_ = identity();
  std::map<MeshKey, int> uses_;
  std::unordered_set<const aiNode*> shown_;
  std::map<MeshKey, SUComponentDefinitionRef> components_;
  MeshReport report_;
  std::size_t points_ = 0;
  std::size_t placements_ = 0;
};

}  // namespace

std::string importWithAssimp(const std::string& path, SUModelRef model) {
  Assimp::Importer importer;
  const aiScene* scene = importer.ReadFile(path, 0);
  if (scene == nullptr || scene->mRootNode == nullptr) {
    std::string why = importer.GetErrorString();
    std::replace(why.begin(), why.end(), '\n', ' ');
    throw ImportError(path + ": " + (why.empty() ? "nothing in it can be read" : why));
  }
  try {
    SceneReader reader(*scene, path, model);
    reader.setConversion(conversionOf(*scene, path));
    reader.run();
    const std::string left = reader.leftOut();
    return left.empty() ? left : path + ": left out " + left;
  } catch (const ImportError& error) {
    throw ImportError(path + ": " + error.what());
  }
}

}  // namespace modelhost
