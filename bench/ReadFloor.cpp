#include "ReadFloor.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <mutex>
#include <unordered_map>
#include <vector>

// The linker gives every call of these functions to __wrap_, and the host's own as __real_; the
// list is repeated in the build file.
#define FLOOR_SIMPLE(X)                                        \
  X(SUDrawingElementGetLayer, SUDrawingElementRef, SULayerRef) \
  X(SUEdgeGetNumFaces, SUEdgeRef, std::size_t)                 \
  X(SUEdgeGetSmooth, SUEdgeRef, bool)                          \
  X(SUEntityGetPersistentID, SUEntityRef, std::int64_t)        \
  X(SUFaceGetBackMaterial, SUFaceRef, SUMaterialRef)           \
  X(SUFaceGetFrontMaterial, SUFaceRef, SUMaterialRef)          \
  X(SUFaceGetNumInnerLoops, SUFaceRef, std::size_t)            \
  X(SUFaceGetNumOpenings, SUFaceRef, std::size_t)              \
  X(SUFaceGetOuterLoop, SUFaceRef, SULoopRef)                  \
  X(SUFaceGetPlane, SUFaceRef, SUPlane3D)                      \
  X(SULoopGetNumVertices, SULoopRef, std::size_t)              \
  X(SUMaterialGetTexture, SUMaterialRef, SUTextureRef)         \
  X(SUVertexGetPosition, SUVertexRef, SUPoint3D)               \
  X(SUEntitiesGetNumFaces, SUEntitiesRef, std::size_t)

#define FLOOR_LISTS(X)                         \
  X(SUEdgeGetFaces, SUEdgeRef, SUFaceRef)      \
  X(SUFaceGetInnerLoops, SUFaceRef, SULoopRef) \
  X(SULoopGetEdges, SULoopRef, SUEdgeRef)      \
  X(SULoopGetVertices, SULoopRef, SUVertexRef) \
  X(SUEntitiesGetFaces, SUEntitiesRef, SUFaceRef)

namespace bench {

namespace {

enum class Call : std::uint8_t {
#define NAME(function, Ref, Out) function,
  FLOOR_SIMPLE(NAME) FLOOR_LISTS(NAME)
#undef NAME
      SUFaceToDrawingElement,
  SUMaterialToEntity,
  SUTextureWriterLoadFace,
  SUUVHelperGetFrontUVQ,
  SUUVHelperGetBackUVQ,
  CreateFrontHelper,
  CreateBackHelper,
  SUUVHelperRelease,
  Length,   // the length of the list that follows
  Texture,  // the texture id of the helper that follows
  Slot,     // which of the helpers alive the following calls are about
};

// Looked at in every call of an export, also in those that are timed: it must cost them nothing.
constinit std::atomic<bool> recording{false};

struct Recorder {
  std::mutex mutex;
  // What was called, and with which handle or number.
  std::deque<Call> what;
  std::deque<std::uint64_t> values;
  std::size_t calls = 0;
  // The UV helpers alive, by the slot that stands for each.
  std::unordered_map<void*, std::uint64_t> slots;
  std::vector<std::uint64_t> freeSlots;
};

Recorder& TheRecorder() {
  static Recorder recorder;
  return recorder;
}

void Write(Recorder& recorder, Call call, std::uint64_t value) {
  recorder.what.push_back(call);
  recorder.values.push_back(value);
  if (call < Call::Length) ++recorder.calls;
}

template <class Ref>
std::uint64_t Value(Ref su_ref) {
  return reinterpret_cast<std::uintptr_t>(su_ref.ptr);
}

template <class Ref>
void Record(Call call, Ref su_ref, std::int64_t length = -1) {
  if (!recording.load(std::memory_order_relaxed)) return;
  Recorder& recorder = TheRecorder();
  const std::lock_guard lock(recorder.mutex);
  if (length >= 0) Write(recorder, Call::Length, static_cast<std::uint64_t>(length));
  Write(recorder, call, Value(su_ref));
}

// Asks something of a helper, or gives it back.
void RecordHelperCall(Call call, void* helper) {
  if (!recording.load(std::memory_order_relaxed)) return;
  Recorder& recorder = TheRecorder();
  const std::lock_guard lock(recorder.mutex);
  const auto slot = recorder.slots.find(helper);
  if (slot == recorder.slots.end()) return;
  Write(recorder, Call::Slot, slot->second);
  Write(recorder, call, 0);
  if (call != Call::SUUVHelperRelease) return;
  recorder.freeSlots.push_back(slot->second);
  recorder.slots.erase(slot);
}

void RecordNewHelper(SUFaceRef su_face, bool front, long textureId, void* helper) {
  if (!recording.load(std::memory_order_relaxed)) return;
  Recorder& recorder = TheRecorder();
  const std::lock_guard lock(recorder.mutex);
  std::uint64_t slot = recorder.slots.size();
  if (!recorder.freeSlots.empty()) {
    slot = recorder.freeSlots.back();
    recorder.freeSlots.pop_back();
  }
  recorder.slots[helper] = slot;
  Write(recorder, Call::Slot, slot);
  Write(recorder, Call::Texture, static_cast<std::uint64_t>(textureId));
  Write(recorder, front ? Call::CreateFrontHelper : Call::CreateBackHelper, Value(su_face));
}

}  // namespace

extern "C" {

#define WRAP_SIMPLE(function, Ref, Out)              \
  SUResult __real_##function(Ref su_ref, Out* out);  \
  SUResult __wrap_##function(Ref su_ref, Out* out) { \
    Record(Call::function, su_ref);                  \
    return __real_##function(su_ref, out);           \
  }
FLOOR_SIMPLE(WRAP_SIMPLE)

#define WRAP_LIST(function, Ref, Item)                                                        \
  SUResult __real_##function(Ref su_ref, std::size_t len, Item items[], std::size_t* count);  \
  SUResult __wrap_##function(Ref su_ref, std::size_t len, Item items[], std::size_t* count) { \
    Record(Call::function, su_ref, static_cast<std::int64_t>(len));                           \
    return __real_##function(su_ref, len, items, count);                                      \
  }
FLOOR_LISTS(WRAP_LIST)

SUDrawingElementRef __real_SUFaceToDrawingElement(SUFaceRef su_face);
SUDrawingElementRef __wrap_SUFaceToDrawingElement(SUFaceRef su_face) {
  Record(Call::SUFaceToDrawingElement, su_face);
  return __real_SUFaceToDrawingElement(su_face);
}
SUEntityRef __real_SUMaterialToEntity(SUMaterialRef su_material);
SUEntityRef __wrap_SUMaterialToEntity(SUMaterialRef su_material) {
  Record(Call::SUMaterialToEntity, su_material);
  return __real_SUMaterialToEntity(su_material);
}
SUResult __real_SUTextureWriterLoadFace(SUTextureWriterRef su_writer, SUFaceRef su_face,
                                        long* front, long* back);
SUResult __wrap_SUTextureWriterLoadFace(SUTextureWriterRef su_writer, SUFaceRef su_face,
                                        long* front, long* back) {
  Record(Call::SUTextureWriterLoadFace, su_face);
  return __real_SUTextureWriterLoadFace(su_writer, su_face, front, back);
}
SUResult __real_SUFaceGetUVHelperWithTextureHandle(SUFaceRef su_face, bool front, bool back,
                                                   SUTextureWriterRef su_writer, long textureId,
                                                   SUUVHelperRef* su_helper);
SUResult __wrap_SUFaceGetUVHelperWithTextureHandle(SUFaceRef su_face, bool front, bool back,
                                                   SUTextureWriterRef su_writer, long textureId,
                                                   SUUVHelperRef* su_helper) {
  const SUResult result = __real_SUFaceGetUVHelperWithTextureHandle(su_face, front, back, su_writer,
                                                                    textureId, su_helper);
  RecordNewHelper(su_face, front, textureId, su_helper->ptr);
  return result;
}
#define WRAP_UVQ(function)                                                                  \
  SUResult __real_##function(SUUVHelperRef su_helper, const SUPoint3D* point, SUUVQ* uvq);  \
  SUResult __wrap_##function(SUUVHelperRef su_helper, const SUPoint3D* point, SUUVQ* uvq) { \
    RecordHelperCall(Call::function, su_helper.ptr);                                        \
    return __real_##function(su_helper, point, uvq);                                        \
  }
WRAP_UVQ(SUUVHelperGetFrontUVQ)
WRAP_UVQ(SUUVHelperGetBackUVQ)
SUResult __real_SUUVHelperRelease(SUUVHelperRef* su_helper);
SUResult __wrap_SUUVHelperRelease(SUUVHelperRef* su_helper) {
  RecordHelperCall(Call::SUUVHelperRelease, su_helper->ptr);
  return __real_SUUVHelperRelease(su_helper);
}

}  // extern "C"

void StartRecordingCalls() {
  TheRecorder().what.clear();
  TheRecorder().values.clear();
  TheRecorder().calls = 0;
  recording = true;
}

void StopRecordingCalls() {
  recording = false;
}

std::size_t RecordedCalls() {
  return TheRecorder().calls;
}

void ReplayCalls() {
  SUTextureWriterRef su_writer = SU_INVALID;
  SUTextureWriterCreate(&su_writer);
  std::vector<SUUVHelperRef> su_helpers;
  std::size_t slot = 0;
  const SUPoint3D point = {1, 2, 3};
  SUUVQ uvq{};
  std::size_t length = 0;
  long texture = 0;
  std::vector<void*> list;
  auto next = TheRecorder().values.begin();
  for (const Call call : TheRecorder().what) {
    const std::uint64_t value = *next++;
    void* const handle = reinterpret_cast<void*>(value);
    switch (call) {
#define REPLAY_SIMPLE(function, Ref, Out) \
  case Call::function: {                  \
    Out out{};                            \
    __real_##function(Ref{handle}, &out); \
    break;                                \
  }
      FLOOR_SIMPLE(REPLAY_SIMPLE)
#define REPLAY_LIST(function, Ref, Item)                                                \
  case Call::function: {                                                                \
    if (list.size() < length) list.resize(length);                                      \
    std::size_t got = 0;                                                                \
    __real_##function(Ref{handle}, length, reinterpret_cast<Item*>(list.data()), &got); \
    break;                                                                              \
  }
      FLOOR_LISTS(REPLAY_LIST)
      case Call::SUFaceToDrawingElement:
        __real_SUFaceToDrawingElement(SUFaceRef{handle});
        break;
      case Call::SUMaterialToEntity:
        __real_SUMaterialToEntity(SUMaterialRef{handle});
        break;
      case Call::SUTextureWriterLoadFace: {
        long front = 0;
        long back = 0;
        __real_SUTextureWriterLoadFace(su_writer, SUFaceRef{handle}, &front, &back);
        break;
      }
      case Call::SUUVHelperGetFrontUVQ:
        __real_SUUVHelperGetFrontUVQ(su_helpers[slot], &point, &uvq);
        break;
      case Call::SUUVHelperGetBackUVQ:
        __real_SUUVHelperGetBackUVQ(su_helpers[slot], &point, &uvq);
        break;
      case Call::CreateFrontHelper:
      case Call::CreateBackHelper: {
        const bool front = call == Call::CreateFrontHelper;
        __real_SUFaceGetUVHelperWithTextureHandle(SUFaceRef{handle}, front, !front, su_writer,
                                                  texture, &su_helpers[slot]);
        break;
      }
      case Call::SUUVHelperRelease:
        __real_SUUVHelperRelease(&su_helpers[slot]);
        SUSetInvalid(su_helpers[slot]);
        break;
      case Call::Slot:
        slot = value;
        if (slot >= su_helpers.size()) su_helpers.resize(slot + 1, SUUVHelperRef SU_INVALID);
        break;
      case Call::Length:
        length = value;
        break;
      case Call::Texture:
        texture = static_cast<long>(value);
        break;
    }
  }
  SUTextureWriterRelease(&su_writer);
}

}  // namespace bench
