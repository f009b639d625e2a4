#include "picture/GltfLoader.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <utility>

#include <glm/gtc/quaternion.hpp>
#include <glm/gtc/type_ptr.hpp>

#define TINYGLTF_NO_EXTERNAL_IMAGE
#include <tiny_gltf.h>

namespace kvpicture {

namespace {

constexpr float kFullSun = 3;

double Number(const tinygltf::Value& object, const char* name, double missing) {
  return object.IsObject() && object.Has(name) && object.Get(name).IsNumber()
             ? object.Get(name).GetNumberAsDouble()
             : missing;
}

glm::vec3 Color(const tinygltf::Value& object, const char* name, glm::vec3 missing) {
  if (!object.IsObject() || !object.Has(name) || object.Get(name).ArrayLen() < 3) return missing;
  const tinygltf::Value& list = object.Get(name);
  return {list.Get(0).GetNumberAsDouble(), list.Get(1).GetNumberAsDouble(),
          list.Get(2).GetNumberAsDouble()};
}

// Bounds-checked access to the elements of an accessor.
class Elements {
 public:
  Elements(const tinygltf::Model& file, int index) : accessor_(file.accessors.at(Checked(index))) {
    const auto& view = file.bufferViews.at(Checked(accessor_.bufferView));
    const auto& buffer = file.buffers.at(Checked(view.buffer));
    const int stride = accessor_.ByteStride(view);
    stride_ = Checked(stride);
    const std::size_t start = view.byteOffset + accessor_.byteOffset;
    const std::size_t size =
        Checked(tinygltf::GetComponentSizeInBytes(Checked32(accessor_.componentType))) *
        Checked(tinygltf::GetNumComponentsInType(Checked32(accessor_.type)));
    if (accessor_.count > 0 &&
        (start > buffer.data.size() || accessor_.count - 1 > buffer.data.size() / stride_ ||
         start + (accessor_.count - 1) * stride_ + size > buffer.data.size())) {
      throw std::runtime_error("an accessor ends outside of its buffer");
    }
    data_ = buffer.data.data() + start;
  }

  std::size_t Count() const { return accessor_.count; }

  template <class Vector>
  std::vector<Vector> Floats() const {
    if (accessor_.componentType != TINYGLTF_COMPONENT_TYPE_FLOAT ||
        tinygltf::GetNumComponentsInType(Checked32(accessor_.type)) != Vector::length()) {
      throw std::runtime_error("a vertex attribute has a type that is not read");
    }
    std::vector<Vector> values(Count());
    for (std::size_t i = 0; i < Count(); ++i) {
      std::memcpy(&values[i], data_ + i * stride_, sizeof(Vector));
    }
    return values;
  }

  std::vector<std::uint32_t> Indices(std::size_t vertexCount) const {
    std::vector<std::uint32_t> values(Count());
    for (std::size_t i = 0; i < Count(); ++i) {
      const unsigned char* at = data_ + i * stride_;
      switch (accessor_.componentType) {
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT:
          std::memcpy(&values[i], at, 4);
          break;
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT: {
          std::uint16_t value = 0;
          std::memcpy(&value, at, 2);
          values[i] = value;
          break;
        }
        default:
          values[i] = *at;
      }
      if (values[i] >= vertexCount) throw std::runtime_error("an index is out of range");
    }
    return values;
  }

 private:
  static std::size_t Checked(int value) {
    if (value < 0) throw std::runtime_error("a reference is missing");
    return static_cast<std::size_t>(value);
  }
  static std::uint32_t Checked32(int value) { return static_cast<std::uint32_t>(Checked(value)); }

  const tinygltf::Accessor& accessor_;
  const unsigned char* data_ = nullptr;
  std::size_t stride_ = 0;
};

class Loader {
 public:
  explicit Loader(const tinygltf::Model& file) : file_(file) {}

  Model Load() {
    for (const tinygltf::Image& image : file_.images) LoadImage(image);
    for (const tinygltf::Material& material : file_.materials) LoadSurface(material);
    model_.surfaces.emplace_back();  // of parts without one
    for (const tinygltf::Mesh& mesh : file_.meshes) LoadMesh(mesh);
    const int start = file_.defaultScene >= 0 ? file_.defaultScene : 0;
    if (file_.scenes.empty()) return std::move(model_);
    const tinygltf::Scene& scene = file_.scenes.at(static_cast<std::size_t>(start));
    if (scene.extras.Has("background")) {
      model_.background = Color(scene.extras, "background", glm::vec3(0.7f));
    }
    for (const int node : scene.nodes) LoadNode(node, glm::mat4(1), 0);
    return std::move(model_);
  }

 private:
  void LoadImage(const tinygltf::Image& image) {
    Image loaded{image.width, image.height, image.image};
    if (image.component != 4 || image.bits != 8 ||
        loaded.rgba.size() !=
            static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height) * 4) {
      throw std::runtime_error("an image is not of 8 bits and four channels");
    }
    model_.images.push_back(std::move(loaded));
  }

  int ImageOf(int texture) const {
    return texture < 0 ? -1 : file_.textures.at(static_cast<std::size_t>(texture)).source;
  }

  void LoadSurface(const tinygltf::Material& material) {
    Surface surface;
    const auto& pbr = material.pbrMetallicRoughness;
    for (int i = 0; i < 4; ++i) {
      surface.baseColor[i] =
          static_cast<float>(pbr.baseColorFactor.at(static_cast<std::size_t>(i)));
    }
    surface.metallic = static_cast<float>(pbr.metallicFactor);
    surface.roughness = static_cast<float>(pbr.roughnessFactor);
    surface.baseImage = ImageOf(pbr.baseColorTexture.index);
    surface.metallicRoughnessImage = ImageOf(pbr.metallicRoughnessTexture.index);
    surface.normalImage = ImageOf(material.normalTexture.index);
    surface.normalScale = static_cast<float>(material.normalTexture.scale);
    surface.emissionImage = ImageOf(material.emissiveTexture.index);
    float strength = 1;
    const auto extension = material.extensions.find("KHR_materials_emissive_strength");
    if (extension != material.extensions.end()) {
      strength = static_cast<float>(Number(extension->second, "emissiveStrength", 1));
    }
    for (int i = 0; i < 3; ++i) {
      surface.emission[i] =
          static_cast<float>(material.emissiveFactor.at(static_cast<std::size_t>(i))) * strength;
    }
    surface.alphaCutoff = static_cast<float>(material.alphaCutoff);
    surface.alphaMode = material.alphaMode == "BLEND"  ? AlphaMode::Blend
                        : material.alphaMode == "MASK" ? AlphaMode::Mask
                                                       : AlphaMode::Opaque;
    surface.doubleSided = material.doubleSided;
    model_.surfaces.push_back(surface);
  }

  void LoadMesh(const tinygltf::Mesh& mesh) {
    std::vector<int> parts;
    for (const tinygltf::Primitive& primitive : mesh.primitives) {
      if (primitive.mode != -1 && primitive.mode != TINYGLTF_MODE_TRIANGLES) continue;
      parts.push_back(static_cast<int>(model_.parts.size()));
      LoadPart(primitive);
    }
    partsOfMesh_.push_back(std::move(parts));
  }

  void LoadPart(const tinygltf::Primitive& primitive) {
    Part part;
    part.positions = Elements(file_, primitive.attributes.at("POSITION")).Floats<glm::vec3>();
    const auto normal = primitive.attributes.find("NORMAL");
    if (normal != primitive.attributes.end()) {
      part.normals = Elements(file_, normal->second).Floats<glm::vec3>();
    }
    const auto uv = primitive.attributes.find("TEXCOORD_0");
    if (uv != primitive.attributes.end()) {
      part.uvs = Elements(file_, uv->second).Floats<glm::vec2>();
    }
    if (primitive.indices >= 0) {
      part.indices = Elements(file_, primitive.indices).Indices(part.positions.size());
    } else {
      for (std::uint32_t i = 0; i < part.positions.size(); ++i) part.indices.push_back(i);
    }
    part.indices.resize(part.indices.size() / 3 * 3);
    if (part.normals.size() != part.positions.size()) MakeNormals(part);
    if (part.uvs.size() != part.positions.size()) part.uvs.clear();
    part.surface =
        primitive.material >= 0 ? primitive.material : static_cast<int>(model_.surfaces.size()) - 1;
    part.low = glm::vec3(std::numeric_limits<float>::max());
    part.high = glm::vec3(std::numeric_limits<float>::lowest());
    for (const std::uint32_t index : part.indices) {
      part.low = glm::min(part.low, part.positions[index]);
      part.high = glm::max(part.high, part.positions[index]);
    }
    model_.parts.push_back(std::move(part));
  }

  static void MakeNormals(Part& part) {
    part.normals.assign(part.positions.size(), glm::vec3(0));
    for (std::size_t i = 0; i + 2 < part.indices.size(); i += 3) {
      const std::uint32_t* corner = &part.indices[i];
      const glm::vec3 origin = part.positions[corner[0]];
      const glm::vec3 normal =
          glm::cross(part.positions[corner[1]] - origin, part.positions[corner[2]] - origin);
      for (int k = 0; k < 3; ++k) part.normals[corner[k]] += normal;
    }
  }

  static glm::mat4 TransformOf(const tinygltf::Node& node) {
    if (node.matrix.size() == 16) return glm::mat4(glm::make_mat4(node.matrix.data()));
    glm::mat4 transform(1);
    if (node.translation.size() == 3) {
      transform[3] = glm::vec4(glm::vec3(glm::make_vec3(node.translation.data())), 1);
    }
    if (node.rotation.size() == 4) {
      transform *= glm::mat4_cast(
          glm::quat(static_cast<float>(node.rotation[3]), static_cast<float>(node.rotation[0]),
                    static_cast<float>(node.rotation[1]), static_cast<float>(node.rotation[2])));
    }
    if (node.scale.size() == 3) {
      for (int i = 0; i < 3; ++i) {
        transform[i] *= static_cast<float>(node.scale[static_cast<std::size_t>(i)]);
      }
    }
    return transform;
  }

  void LoadNode(int index, const glm::mat4& parent, int depth) {
    constexpr int kDeepest = 256;
    if (depth > kDeepest) throw std::runtime_error("the nodes are nested too deep");
    const tinygltf::Node& node = file_.nodes.at(static_cast<std::size_t>(index));
    const glm::mat4 transform = parent * TransformOf(node);
    if (node.mesh >= 0) {
      for (const int part : partsOfMesh_.at(static_cast<std::size_t>(node.mesh))) {
        if (!model_.parts[static_cast<std::size_t>(part)].indices.empty()) {
          model_.items.push_back({part, transform});
        }
      }
    }
    if (node.camera >= 0 && !model_.camera) LoadCamera(node.camera, transform);
    const auto extension = node.extensions.find("KHR_lights_punctual");
    if (extension != node.extensions.end()) {
      LoadLight(static_cast<std::size_t>(Number(extension->second, "light", 0)), transform);
    }
    for (const int child : node.children) LoadNode(child, transform, depth + 1);
  }

  void LoadCamera(int index, const glm::mat4& transform) {
    const tinygltf::Camera& camera = file_.cameras.at(static_cast<std::size_t>(index));
    if (camera.type != "perspective") return;
    Camera loaded;
    for (int i = 0; i < 3; ++i) {
      loaded.toWorld[i] = glm::vec4(glm::normalize(glm::vec3(transform[i])), 0);
    }
    loaded.toWorld[3] = transform[3];
    loaded.verticalView = static_cast<float>(camera.perspective.yfov);
    model_.camera = loaded;
  }

  void LoadLight(std::size_t index, const glm::mat4& transform) {
    const tinygltf::Light& light = file_.lights.at(index);
    glm::vec3 color(static_cast<float>(light.intensity));
    for (int i = 0; i < 3 && light.color.size() == 3; ++i) {
      color[i] *= static_cast<float>(light.color[static_cast<std::size_t>(i)]);
    }
    const glm::vec3 direction = glm::normalize(glm::vec3(transform * glm::vec4(0, 0, -1, 0)));
    if (light.type == "directional") {
      if (!model_.sun) model_.sun = Sun{-direction, color / kFullSun};
      return;
    }
    Lamp lamp{light.type == "spot", color, glm::vec3(transform[3]), direction, 1, -1};
    if (lamp.spot) {
      lamp.cosInner = static_cast<float>(std::cos(light.spot.innerConeAngle));
      lamp.cosOuter = static_cast<float>(std::cos(light.spot.outerConeAngle));
    }
    model_.lamps.push_back(lamp);
  }

  const tinygltf::Model& file_;
  Model model_;
  std::vector<std::vector<int>> partsOfMesh_;
};

}  // namespace

Model LoadGltf(const std::string& file) {
  tinygltf::TinyGLTF reader;
  tinygltf::Model contents;
  std::string error;
  std::string warning;
  if (!reader.LoadBinaryFromFile(&contents, &error, &warning, file)) {
    std::replace(error.begin(), error.end(), '\n', ' ');
    throw std::runtime_error(file + " cannot be read: " + error);
  }
  try {
    return Loader(contents).Load();
  } catch (const std::exception& trouble) {
    throw std::runtime_error(file + " is wrong: " + trouble.what());
  }
}

}  // namespace kvpicture
