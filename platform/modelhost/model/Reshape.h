// Edits that take several elements at once: taking apart, grouping, copying and moving.
#pragma once

#include <memory>
#include <unordered_set>

#include "model/Entities.h"

namespace modelhost {

using Elements = std::unordered_set<const Entity*>;

// Puts the contents of a placed component or group in its place. What wears no paint, or is on the
// first layer, gets those of the instance; a texture stays where it lies. False for what flattens
// its contents, or is an image.
bool explode(Instance& instance);
// Gives the instance a definition of its own; nothing happens to one that has.
void makeUnique(Instance& instance);
// Moves elements of `entities` into a new group among them. Edges go with their faces, and stay
// for faces that stay.
Group& group(Entities& entities, const Elements& elements);
// Moves elements of `entities`, with all that touches the vertices of faces and edges.
void transform(Entities& entities, const Elements& elements, const SUTransformation& t);

}  // namespace modelhost
