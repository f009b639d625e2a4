#pragma once

#include "app/Decoder.h"
#include "app/MessageReader.h"

// The commands that carry scene content; Decode chooses among them by id. Each reads its record
// and items from `reader` and returns what it read; problems are left in the reader.

namespace kvapp {

Command DecodeClassicMaterial(MessageReader& reader, const DecodeOptions& options);
Command DecodePbrMaterial(MessageReader& reader, const DecodeOptions& options);
Command DecodeOmniLight(MessageReader& reader);
Command DecodeSpotLight(MessageReader& reader);
Command DecodeMesh(MessageReader& reader, const DecodeOptions& options);
Command DecodeInstance(MessageReader& reader);
Command DecodeOwnerList(MessageReader& reader);
Command DecodeMaterialReferences(MessageReader& reader);
Command DecodeTransformUpdate(MessageReader& reader);

}  // namespace kvapp
