// Vertices, edges, loops and faces. Edges and vertices are shared by all that touch them.
#pragma once

#include <SketchUpAPI/color.h>

#include <memory>
#include <optional>
#include <vector>

#include "model/Entity.h"
#include "model/Geometry.h"
#include "model/UvMapping.h"

namespace modelhost {

class Vertex : public Entity {
 public:
  explicit Vertex(const SUPoint3D& p) : Entity(Kind::Vertex), position(p) {}
  SUPoint3D position;
  std::vector<Edge*> edges;
};

class Edge : public DrawingElement {
 public:
  Edge(Vertex& from, Vertex& to);
  ~Edge() override;

  Vertex* start;
  Vertex* end;
  bool soft = false;
  bool smooth = false;
  std::optional<SUColor> color;
  // Each face once, also one that runs along the edge twice.
  std::vector<Face*> faces;
  // Holds the vertices of an edge that still belongs to its maker.
  std::unique_ptr<Entities> scratch;
};

// Edge i leads from vertex i to vertex i + 1.
class Loop : public Entity {
 public:
  explicit Loop(Face& owner) : Entity(Kind::Loop), face(&owner) {}
  std::vector<SUPoint3D> points() const;

  Face* face;
  std::vector<Vertex*> vertices;
  std::vector<Edge*> edges;
};

class Face : public DrawingElement {
 public:
  Face();
  ~Face() override;

  SUVector3D normal() const { return normalOf(plane); }
  Material* sideMaterial(bool front) const;
  // How the side's own material lies; null when it lies as it does by default, or there is none.
  const UvMapping* sideMapping(bool front) const;
  // Paints one side; without a mapping the texture lies as it does by default.
  void paint(bool front, Material* with, std::optional<UvMapping> mapping = std::nullopt);
  // Lets the outlines run the other way round.
  void turnLoops();
  // The normal as seen by someone who looks at that side.
  SUVector3D sideNormal(bool front) const { return front ? normal() : -normal(); }

  SUPlane3D plane{0, 0, 1, 0};
  // The outer loop first; it is counter-clockwise about the normal, the others clockwise.
  std::vector<std::unique_ptr<Loop>> loops;
  // Outlines cut out by components glued to the face.
  std::vector<std::vector<SUPoint3D>> openings;
  Link<SUMaterialRef> backMaterial;
  std::shared_ptr<const UvMapping> frontMapping;
  std::shared_ptr<const UvMapping> backMapping;
  // Holds vertices and edges of a face that still belongs to its maker.
  std::unique_ptr<Entities> scratch;
};

// Points of an outline cut out of a face; a snapshot that the caller owns.
class Opening : public Object {
 public:
  explicit Opening(std::vector<SUPoint3D> outline)
      : Object(Kind::Opening), points(std::move(outline)) {}
  std::vector<SUPoint3D> points;
};

}  // namespace modelhost
