// One collection of things in one coordinate system: the root of a model or the inside of a
// definition.
#pragma once

#include <functional>
#include <memory>
#include <span>
#include <unordered_set>
#include <vector>

#include "model/Entity.h"
#include "model/Topology.h"
#include "model/WeldGrid.h"

namespace modelhost {

// One outline of a face to be built.
struct LoopSpec {
  struct EdgeFlags {
    bool hidden = false;
    bool soft = false;
    bool smooth = false;
    Link<SUMaterialRef> material;
    Link<SULayerRef> layer;
  };
  std::vector<Vertex*> vertices;
  // As many as vertices; flag i is of the edge from vertex i to the next.
  std::vector<EdgeFlags> edges;
};

class Entities : public Object {
 public:
  // `owner` is null for the root of a model.
  explicit Entities(Definition* owner);
  ~Entities() override;

  Definition* owner() const { return owner_; }
  // Null until the owner is part of a model.
  Model* model() const { return model_; }

  // A vertex at `p`: one that is there within the welding distance, else a new one.
  Vertex& weldedVertex(const SUPoint3D& p);
  Vertex& newVertex(const SUPoint3D& p);
  // The edge between two different vertices: the one that is there, else a new one.
  Edge& edgeBetween(Vertex& a, Vertex& b);
  // Builds a face on vertices of this collection. `plane` is that of the first loop, which is
  // counter-clockwise about it; the others are holes in any direction.
  Face& addFace(std::vector<LoopSpec> loops, const SUPlane3D& plane);
  // Puts outlines into a face that has none among these entities yet.
  void addLoop(Face& face, LoopSpec loop);

  // Take over what belonged to its maker.
  void adopt(std::unique_ptr<Face> face);
  void adopt(std::unique_ptr<Edge> edge);
  void adopt(std::unique_ptr<Instance> instance);

  // The vertex is at `to` from now on.
  void move(Vertex& vertex, const SUPoint3D& to);

  // Removes elements of this collection, with what cannot be without them: edges take their
  // faces, vertices that no edge uses any more go.
  void erase(const std::unordered_set<const Entity*>& doomed);
  void clear();
  // The same for what goes as a whole: nobody is told, and nothing comes back.
  void release();

  // Makes everything here, at any depth, part of `model`.
  void attach(Model& model);

  const std::vector<std::unique_ptr<Face>>& faces() const { return faces_; }
  const std::vector<std::unique_ptr<Edge>>& edges() const { return edges_; }
  const std::vector<std::unique_ptr<Vertex>>& vertices() const { return vertices_; }
  const std::vector<std::unique_ptr<Instance>>& instances() const { return instances_; }
  const std::vector<std::unique_ptr<Instance>>& groups() const { return groups_; }
  const std::vector<std::unique_ptr<Instance>>& images() const { return images_; }

 private:
  friend class Face;
  void enter(DrawingElement& element);
  // Tells the ends of an edge that it is theirs.
  void link(Edge& edge);
  // Keeps the places of vertices that come and go.
  std::function<void(Vertex&, bool)> weld();
  Recorder* recorder() const;
  template <class T>
  void noteAppended(std::vector<std::unique_ptr<T>>& list);
  // Takes what doomed(item) says out of a list.
  template <class T, class Doomed>
  void drop(std::vector<std::unique_ptr<T>>& list, Doomed doomed);
  void takeOver(LoopSpec& spec, const Loop& loop);
  void unlink(Face& face);
  void dropUnusedVertices();

  Definition* owner_;
  Model* model_ = nullptr;
  std::vector<std::unique_ptr<Vertex>> vertices_;
  std::vector<std::unique_ptr<Edge>> edges_;
  std::vector<std::unique_ptr<Face>> faces_;
  std::vector<std::unique_ptr<Instance>> instances_;
  std::vector<std::unique_ptr<Instance>> groups_;
  std::vector<std::unique_ptr<Instance>> images_;
  WeldGrid grid_;
};

}  // namespace modelhost
