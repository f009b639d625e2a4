// Exports two faces the way the switches in its environment say, and tells what happened. A program
// of its own, because a process reads each switch only once.
//
// Prints, for each face, the vertices it gave: a square gives 4 by the own tessellation and 3 by
// the host's helper, which here knows one triangle. The second face has no readable plane.
#include <cstdio>

#include "ScriptedHost.h"
#include "geometry/FaceExporter.h"
#include "geometry/TessValidation.h"

int main() {
  scripted::Host host;
  const std::vector<glm::dvec3> square = {{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}};
  scripted::Face* readable = host.AddFace(square);
  scripted::Face* unreadable = host.AddFace(square);
  unreadable->planeFails = true;
  scripted::Loop& outline = readable->loops[0];
  outline.edges[0]->smooth = true;
  outline.edges[1]->soft = true;
  for (scripted::Face* face : {readable, unreadable}) {
    host.GiveHelperFan(face);
    face->helper.positions.resize(3);
    face->helper.indexes.resize(3);
    quellix::FaceCollector collector;
    quellix::MeshBuffer buffer;
    quellix::ExportFaceSerial(collector, face->ref(), {}, buffer);
    std::printf("%zu ", buffer.vertices.size());
  }
  std::printf("helpers=%d compared=%d\n", host.Calls("SUMeshHelperCreate"),
              static_cast<int>(quellix::ValidationTotals().faces));
  quellix::WriteValidationSummary(true);
  return host.Outstanding() == 0 ? 0 : 1;
}
