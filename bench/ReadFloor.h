#pragma once

#include <cstddef>

#include <SketchUpAPI/sketchup.h>

// The read floor of an export: its host calls alone, one after the other on one thread, with the
// answers thrown away. The calls are taken down while a real export makes them, so they are the
// same ones in the same order; only those that a model has few of are left out.

namespace bench {

// From here to Stop, the calls of every thread are taken down.
void StartRecordingCalls();
void StopRecordingCalls();
std::size_t RecordedCalls();

// Makes the recorded calls again.
void ReplayCalls();

}  // namespace bench
