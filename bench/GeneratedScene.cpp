#include "GeneratedScene.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace bench {

namespace {

constexpr double kCell = 10.0;
constexpr double kFold = 3.0;
constexpr double kPi = 3.14159265358979323846;
constexpr std::size_t kTexturePixels = 64;

void Check(SUResult result, const char* what) {
  if (result != SU_ERROR_NONE) {
    throw std::runtime_error(std::string("the scene cannot be built: ") + what + " gave " +
                             std::to_string(static_cast<int>(result)));
  }
}

// Geometry of one entities collection, filled in at once.
class Input {
 public:
  Input() { Check(SUGeometryInputCreate(&su_input), "SUGeometryInputCreate"); }
  ~Input() { SUGeometryInputRelease(&su_input); }
  Input(const Input&) = delete;
  Input& operator=(const Input&) = delete;

  std::size_t Vertex(const SUPoint3D& point) {
    points.push_back(point);
    return points.size() - 1;
  }
  const SUPoint3D& At(std::size_t vertex) const { return points[vertex]; }

  // `smooth(from, to)` decides of each edge.
  template <class Smooth>
  std::size_t Face(const std::vector<std::size_t>& outline, Smooth smooth) {
    SULoopInputRef su_loop = Loop(outline, smooth);
    std::size_t face = 0;
    Check(SUGeometryInputAddFace(su_input, &su_loop, &face), "SUGeometryInputAddFace");
    return face;
  }
  template <class Smooth>
  void Hole(std::size_t face, const std::vector<std::size_t>& outline, Smooth smooth) {
    SULoopInputRef su_loop = Loop(outline, smooth);
    Check(SUGeometryInputFaceAddInnerLoop(su_input, face, &su_loop),
          "SUGeometryInputFaceAddInnerLoop");
  }
  void Paint(std::size_t face, bool front, SUMaterialRef su_material) {
    SUMaterialInput input{};
    input.material = su_material;
    Check((front ? SUGeometryInputFaceSetFrontMaterial : SUGeometryInputFaceSetBackMaterial)(
              su_input, face, &input),
          "SUGeometryInputFaceSetMaterial");
  }
  void Fill(SUEntitiesRef su_entities) {
    Check(SUGeometryInputSetVertices(su_input, points.size(), points.data()),
          "SUGeometryInputSetVertices");
    Check(SUEntitiesFill(su_entities, su_input, false), "SUEntitiesFill");
  }

 private:
  template <class Smooth>
  SULoopInputRef Loop(const std::vector<std::size_t>& outline, Smooth smooth) {
    SULoopInputRef su_loop = SU_INVALID;
    Check(SULoopInputCreate(&su_loop), "SULoopInputCreate");
    for (const std::size_t vertex : outline) {
      Check(SULoopInputAddVertexIndex(su_loop, vertex), "SULoopInputAddVertexIndex");
    }
    for (std::size_t i = 0; i < outline.size(); ++i) {
      if (!smooth(outline[i], outline[(i + 1) % outline.size()])) continue;
      Check(SULoopInputEdgeSetSmooth(su_loop, i, true), "SULoopInputEdgeSetSmooth");
    }
    return su_loop;
  }

  SUGeometryInputRef su_input = SU_INVALID;
  std::vector<SUPoint3D> points;
};

SUMaterialRef AddMaterial(SUModelRef su_model, std::size_t number, bool textured) {
  SUMaterialRef su_material = SU_INVALID;
  Check(SUMaterialCreate(&su_material), "SUMaterialCreate");
  Check(SUMaterialSetName(su_material, ("material " + std::to_string(number)).c_str()),
        "SUMaterialSetName");
  Check(SUModelAddMaterials(su_model, 1, &su_material), "SUModelAddMaterials");
  const SUColor color = {static_cast<SUByte>(40 * number), 120, 90, 255};
  Check(SUMaterialSetColor(su_material, &color), "SUMaterialSetColor");
  if (!textured) return su_material;
  std::vector<SUByte> pixels(kTexturePixels * kTexturePixels * 4);
  for (std::size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<SUByte>(i * (number + 3));
  SUImageRepRef su_rep = SU_INVALID;
  Check(SUImageRepCreate(&su_rep), "SUImageRepCreate");
  Check(SUImageRepSetData(su_rep, kTexturePixels, kTexturePixels, 32, 0, pixels.data()),
        "SUImageRepSetData");
  SUTextureRef su_texture = SU_INVALID;
  Check(SUTextureCreateFromImageRep(&su_texture, su_rep), "SUTextureCreateFromImageRep");
  SUImageRepRelease(&su_rep);
  Check(SUMaterialSetTexture(su_material, su_texture), "SUMaterialSetTexture");
  return su_material;
}

// A folded wall: columns of vertical cells, each of which becomes one face.
class Wall {
 public:
  Wall(std::size_t faceCount, std::uint32_t seed, const std::vector<SUMaterialRef>& su_materials)
      : faces(faceCount),
        columns(std::max<std::size_t>(
            1, static_cast<std::size_t>(std::sqrt(static_cast<double>(faceCount))))),
        materials(su_materials),
        random(seed) {}

  void Build(SUEntitiesRef su_entities) {
    const std::size_t rows = (faces + columns - 1) / columns;
    for (std::size_t row = 0; row <= rows; ++row) {
      for (std::size_t column = 0; column <= columns; ++column) {
        input.Vertex({static_cast<double>(column) * kCell, column % 4 < 2 ? 0.0 : kFold,
                      static_cast<double>(row) * kCell});
      }
    }
    for (std::size_t cell = 0; cell < faces; ++cell) {
      AddCell(cell / columns * (columns + 1) + cell % columns);
    }
    input.Fill(su_entities);
  }

 private:
  std::uint32_t Below(std::uint32_t limit) { return static_cast<std::uint32_t>(random()) % limit; }
  // The same from both sides.
  bool Smooth(std::size_t a, std::size_t b) const {
    const std::uint64_t key = std::min(a, b) * 0x9e3779b97f4a7c15u + std::max(a, b);
    return ((key ^ key >> 29) * 0xbf58476d1ce4e5b9u >> 40 & 1) != 0;
  }
  // A point of the cell whose lower left corner is `corner`; u and v from 0 to 1.
  std::size_t Inside(std::size_t corner, double u, double v) {
    const SUPoint3D& a = input.At(corner);
    const SUPoint3D& b = input.At(corner + 1);
    return input.Vertex({a.x + u * (b.x - a.x), a.y + u * (b.y - a.y), a.z + v * kCell});
  }

  void AddCell(std::size_t corner) {
    const auto smooth = [this](std::size_t a, std::size_t b) { return Smooth(a, b); };
    const std::size_t above = corner + columns + 1;
    std::vector<std::size_t> outline = {corner, corner + 1, above + 1};
    const std::uint32_t kind = Below(10);
    if (kind >= 7 && kind < 9) AddTop(corner, outline);
    outline.push_back(above);
    const std::size_t face = input.Face(outline, smooth);
    if (kind == 9) {
      const std::uint32_t holes = 1 + Below(4);
      for (std::uint32_t hole = 0; hole < holes; ++hole) {
        const double u = hole % 2 == 0 ? 0.1 : 0.6;
        const double v = hole / 2 == 0 ? 0.1 : 0.6;
        input.Hole(face,
                   {Inside(corner, u, v), Inside(corner, u, v + 0.3),
                    Inside(corner, u + 0.3, v + 0.3), Inside(corner, u + 0.3, v)},
                   smooth);
      }
    }
    if (Below(10) < 6)
      input.Paint(face, true, materials[Below(static_cast<std::uint32_t>(materials.size()))]);
    if (Below(10) < 2)
      input.Paint(face, false, materials[Below(static_cast<std::uint32_t>(materials.size()))]);
  }

  // One to eight corners along the upper side, in an arch or a zigzag.
  void AddTop(std::size_t corner, std::vector<std::size_t>& outline) {
    const std::uint32_t count = 1 + Below(8);
    const bool arch = Below(2) == 0;
    for (std::uint32_t i = 1; i <= count; ++i) {
      const double t = static_cast<double>(i) / (count + 1);
      const double v = arch ? 1.0 + 0.3 * std::sin(kPi * t) : i % 2 == 0 ? 0.9 : 0.6;
      outline.push_back(Inside(corner, 1.0 - t, v));
    }
  }

  const std::size_t faces;
  const std::size_t columns;
  const std::vector<SUMaterialRef>& materials;
  std::mt19937 random;
  Input input;
};

SUEntitiesRef RootOf(SUModelRef su_model) {
  SUEntitiesRef su_root = SU_INVALID;
  Check(SUModelGetEntities(su_model, &su_root), "SUModelGetEntities");
  return su_root;
}

SUModelRef NewModel() {
  SUModelRef su_model = SU_INVALID;
  Check(SUModelCreate(&su_model), "SUModelCreate");
  return su_model;
}

void Place(SUComponentDefinitionRef su_definition, SUEntitiesRef su_root, std::size_t number) {
  SUComponentInstanceRef su_instance = SU_INVALID;
  Check(SUComponentDefinitionCreateInstance(su_definition, &su_instance),
        "SUComponentDefinitionCreateInstance");
  const double angle = 0.1 * static_cast<double>(number % 63);
  const SUTransformation transform = {{std::cos(angle), std::sin(angle), 0, 0, -std::sin(angle),
                                       std::cos(angle), 0, 0, 0, 0, 1, 0,
                                       1000.0 * static_cast<double>(number % 100),
                                       1000.0 * static_cast<double>(number / 100), 0, 1}};
  Check(SUComponentInstanceSetTransform(su_instance, &transform),
        "SUComponentInstanceSetTransform");
  Check(SUEntitiesAddInstance(su_root, su_instance, nullptr), "SUEntitiesAddInstance");
}

void FillLargeFace(SUEntitiesRef su_entities, std::size_t corners, std::size_t holes) {
  Input input;
  const auto hard = [](std::size_t, std::size_t) { return false; };
  std::vector<std::size_t> outline = {input.Vertex({0, -100, 0})};
  const double width = static_cast<double>(corners);
  outline.push_back(input.Vertex({width, -100, 0}));
  for (std::size_t i = 2; i < corners; ++i) {
    outline.push_back(input.Vertex({width - static_cast<double>(i), i % 2 == 0 ? 5.0 : 1.0, 0}));
  }
  const std::size_t face = input.Face(outline, hard);
  for (std::size_t i = 0; i < holes; ++i) {
    const double x = width * 0.9 * static_cast<double>(i + 1) / static_cast<double>(holes + 1);
    const double y = -90.0 + static_cast<double>(i % 37) * 2;
    input.Hole(face,
               {input.Vertex({x, y, 0}), input.Vertex({x, y + 1, 0}),
                input.Vertex({x + 1, y + 1, 0}), input.Vertex({x + 1, y, 0})},
               hard);
  }
  input.Fill(su_entities);
}

}  // namespace

SUModelRef BuildScene(const SceneSize& size) {
  const SUModelRef su_model = NewModel();
  std::vector<SUMaterialRef> su_materials;
  for (std::size_t i = 0; i < size.materials; ++i) {
    su_materials.push_back(AddMaterial(su_model, i, size.textured && i < size.texturedMaterials));
  }
  std::vector<SUComponentDefinitionRef> su_definitions;
  for (std::size_t i = 0; i < size.definitions; ++i) {
    SUComponentDefinitionRef su_definition = SU_INVALID;
    Check(SUComponentDefinitionCreate(&su_definition), "SUComponentDefinitionCreate");
    Check(SUModelAddComponentDefinitions(su_model, 1, &su_definition),
          "SUModelAddComponentDefinitions");
    SUEntitiesRef su_inside = SU_INVALID;
    Check(SUComponentDefinitionGetEntities(su_definition, &su_inside),
          "SUComponentDefinitionGetEntities");
    if (i == 0 && size.firstCorners > 0) FillLargeFace(su_inside, size.firstCorners, 0);
    const std::size_t share = size.faces / size.definitions + (i < size.faces % size.definitions);
    Wall(share, size.seed + static_cast<std::uint32_t>(i), su_materials).Build(su_inside);
    su_definitions.push_back(su_definition);
  }
  for (std::size_t i = 0; i < size.placements; ++i) {
    Place(su_definitions[i % su_definitions.size()], RootOf(su_model), i);
  }
  return su_model;
}

SUModelRef BuildLargeFace(std::size_t corners, std::size_t holes) {
  const SUModelRef su_model = NewModel();
  FillLargeFace(RootOf(su_model), corners, holes);
  return su_model;
}

SUModelRef BuildRow(std::size_t squares) {
  const SUModelRef su_model = NewModel();
  Input input;
  for (std::size_t i = 0; i < squares; ++i) {
    const double x = 10.0 * static_cast<double>(i);
    const double side = i % 3 == 1 ? 1e39 : 5.0;
    const std::size_t first = input.Vertex({x, 0, 0});
    input.Vertex({x + side, 0, 0});
    input.Vertex({x + side, side, 0});
    input.Vertex({x, side, 0});
    input.Face({first, first + 1, first + 2, first + 3},
               [](std::size_t, std::size_t) { return false; });
  }
  input.Fill(RootOf(su_model));
  return su_model;
}

SUModelRef BuildCone(std::size_t faces) {
  const SUModelRef su_model = NewModel();
  Input input;
  const std::size_t apex = input.Vertex({0, 0, 50});
  const std::size_t first = apex + 1;
  for (std::size_t i = 0; i < faces; ++i) {
    const double angle = 2 * kPi * static_cast<double>(i) / static_cast<double>(faces);
    input.Vertex({100 * std::cos(angle), 100 * std::sin(angle), 0});
  }
  for (std::size_t i = 0; i < faces; ++i) {
    input.Face({first + i, first + (i + 1) % faces, apex},
               [apex](std::size_t a, std::size_t b) { return a == apex || b == apex; });
  }
  input.Fill(RootOf(su_model));
  return su_model;
}

}  // namespace bench
