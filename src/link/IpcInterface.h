#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <boost/interprocess/mapped_region.hpp>
#include <boost/interprocess/shared_memory_object.hpp>
#include <wx/thread.h>

#include "link/CommandMessage.h"
#include "link/ManualEvent.h"
#include "link/RendererProcess.h"
#include "link/RequestReceiver.h"
#include "link/SceneDigest.h"
#include "link/SceneRecords.h"
#include "link/SharedObjects.h"
#include "link/WireRecords.h"

namespace quellix {

// The plug-in's end of the link to the renderer: the segments and events, the renderer's process,
// every command that is sent and every request that is answered.
//
// Senders may be called from any thread; the send lock makes each command whole. A command for a
// renderer that is not alive is dropped. Everything else, and PollToPlugin above all, belongs to
// the host thread: the one that called OpenChannel, or BecomeHostThread since.
//
// A callback that PollToPlugin makes may itself send. When nothing was in flight as its request was
// taken, its commands go out like any others. When the request interrupted a command (signalled and
// not yet completed), they are held and go out, in order, right after that one. The same holds for
// what a signal handler sends that Ruby runs inside a wait.
class IpcInterface {
 public:
  IpcInterface() = default;
  virtual ~IpcInterface();
  IpcInterface(const IpcInterface&) = delete;
  IpcInterface& operator=(const IpcInterface&) = delete;

  // Removes leftovers of an earlier run and makes our events and our segment. The receiver must
  // live as long as the link. False, with everything released, when there is no segment. Host
  // thread.
  bool OpenChannel(RequestReceiver* requestReceiver);

  // Starts the renderer; shows the error box and returns false when it does not start. Host thread.
  bool LaunchApp(const std::string& directory);

  // True while the renderer's process exists and has not announced its end; never in a process
  // that was forked off the one that opened the channel. Any thread.
  bool IsAlive() const;

  // Asks the renderer to close and returns when it has acknowledged, or is gone. Host thread.
  void CloseApp();

  // Gives the renderer a moment to take hold of the channel, if it has not yet. A renderer that
  // finds the names of the next channel instead would take that one's renderer's place. Host
  // thread.
  void AwaitAttachment();

  // Gives up every shared object of our end, and what a renderer that is gone left of its own;
  // names that another host has taken over since, or that belong to the process that this one was
  // forked off, are left alone. No sender may be inside. Host thread.
  void ReleaseChannel();

  // The calling thread is the host thread from here on. While no other thread uses the link.
  void BecomeHostThread() { hostThread = std::this_thread::get_id(); }

  // The renderer's id; 0 or less when there is none.
  std::int32_t ProcessId() const { return process.Id(); }

  // True once the renderer has announced that it quits, a wait was given up or another host has
  // taken the channel: nothing is sent any more, and the owner is to release and destroy the link
  // as soon as nobody uses it.
  bool Ended() const { return ended; }

  // Ends the link when the receiver wants waits to be given up. After a callback that ended like
  // that, what is in flight is given a moment first: the renderer goes on once its request is
  // acknowledged, and the link stays. Any thread; only the host thread asks the receiver.
  void EndIfInterrupted();

  // Takes the renderer's request, if there is one, has the receiver answer it and acknowledges it;
  // then sends what callbacks left to be sent, if that can be done without waiting behind another
  // thread. Host thread.
  void PollToPlugin();

  // True when a command that the calling thread sent now would be held: in a callback or a signal
  // handler that interrupted another command. Host thread.
  bool WouldHold();

  // Scene content.
  void AppendMaterial(const ClassicMaterialRecord& material);
  void AppendPBRMaterial(const PbrMaterialRecord& material);
  void AppendOmniLight(const float color[3], const float position[4]);
  void AppendSpotLight(const float color[3], const float position[4], const float direction[3],
                       float beamAngle, float wideBeamAngle);
  // `vertices` holds ten floats a vertex, `triangles` five words a triangle, as on the wire. These
  // two are false when the command was left out although the renderer lives, which then does not
  // hold what is recorded as sent.
  bool AppendMesh(std::uint64_t meshId, const float transform[16], std::uint32_t vertexCount,
                  const float* vertices, std::uint32_t triangleCount,
                  const std::uint32_t* triangles, std::uint8_t pass, bool manifold,
                  std::uint64_t cacheKey);
  bool InstanciateMesh(std::uint64_t meshId, const float transform[16], std::uint64_t cacheKey);
  void InstanciateMeshBatch(const std::vector<std::uint64_t>& ownerIds);
  void AppendCachedMaterials(const std::vector<wire::CachedMaterialReference>& references);
  void UpdateInstanceTransform(std::uint64_t ownerId, const float transform[16]);

  // Control.
  void PrepareRendering(bool reload);
  void SetCamera(const CameraValues& camera, bool withProgress);
  void SetBackgroundSettings(const BackgroundValues& background);
  void SetCameraAndBackgroundSettings(const CameraValues& camera,
                                      const BackgroundValues& background);
  void SetModelName(const std::string& name);
  void SetMessage(const std::string& text);
  void SetProgress(float fraction);
  bool GetLinkCamera();
  void SetLinkCamera(bool linked);
  void ReloadFromPlugin();
  void ClearModelDataForReload();

  // Makes the segment large enough for a message of that many bytes. Throws
  // boost::interprocess::interprocess_exception, with no segment left, when it cannot be made.
  // Under the send lock, or before any sender exists.
  void ExpandSharedMemory(std::uint64_t requiredBytes);

  // The size of the mapped ToApp segment in bytes; 0 when there is none.
  std::uint64_t SegmentSize() const { return toAppSize; }

 private:
  class SendScope;
  class NestedRuby;

  using DigestFunction = DigestEntries (*)(const void* context);
  // Told of a command that has gone out, with its record and the milliseconds that Commit took (0
  // without the timing log).
  using SentFunction = void (*)(const std::byte* record, double elapsedMs);

  // How a command is sent, beside its bytes.
  struct SendTraits {
    bool grows = false;       // the segment grows for it; otherwise it must fit as it is
    bool wait = true;         // its completion is waited for, now or by the next sender
    bool countBytes = false;  // its size goes into the statistics
    DigestFunction digest = nullptr;
    const void* digestContext = nullptr;
    bool isProgress = false;  // goes out only when it differs enough from the last one
    SentFunction sent = nullptr;
  };

  // A whole message, and all that its sender wanted of it.
  struct HeldCommand {
    std::vector<std::byte> bytes;
    SendTraits traits;
    DigestEntries digest;
  };

  // How the host thread sends while Ruby code runs inside the link.
  enum class Sends {
    Normally,
    WhenFree,  // held while another thread sends or a command is in flight
    Held
  };

  // The one way of every command. False when it was left out although the renderer lives.
  bool Send(const CommandMessage& message, const SendTraits& traits);
  void SendPlain(wire::CommandId id, bool wait);
  void SendText(wire::CommandId id, const std::string& text);
  void Hold(const CommandMessage& message, const SendTraits& traits);
  void SendHeld();
  void SendOneHeld(const HeldCommand& command);
  bool TakeHeld(HeldCommand& command);
  bool MakeRoom(std::uint32_t command, std::uint64_t messageBytes, const SendTraits& traits);
  void Deliver(const std::byte* record, const SendTraits& traits);
  bool EnsureSegment(std::uint64_t messageBytes);
  bool AdmitProgress(const std::byte* record);

  bool Commit(bool wait);
  bool WaitCompletion();
  bool TakeCompletion(double& settledAt);
  bool FlushPending();
  bool AwaitPending();
  bool AwaitOutstanding();
  bool AwaitReloadTaken();
  template <class Done>
  bool AwaitInSlices(Done&& done);
  bool SeenAlive();
  bool InFlight();
  bool AskInterrupted();
  void AcknowledgeMemoryDestroyed();
  void CreateEvents();
  bool StillOurs() const;
  bool PeerAlive();

  bool OpenToPluginSide();
  bool MapRequestSegment();
  void ServeRequest();
  bool RequestInterrupts();
  void HandleRequest(std::uint32_t code);
  void SetRequired(std::uint64_t required);
  bool AnswerFits(std::uint64_t required);
  std::uint64_t Capacity() const;
  bool ReadName(std::uint64_t offsetField, std::string& name) const;
  bool ReadRequest(std::uint64_t offset, void* target, std::uint64_t bytes) const;
  void WriteAnswer(std::uint64_t offset, const void* source, std::uint64_t bytes);
  void HandleCameraChanged();
  void HandleDatetimeUpdated();
  void HandleGetScenes();
  void HandleCameraInfo();
  void HandleShadowInfo();
  void HandleBool(std::optional<bool> (RequestReceiver::*question)());
  void HandleSaveParameters();
  void HandleLoadParameters();
  void HandleRemoveAttribute();
  void HandleSetUsePbr();
  void HandleSuVersion();

  RequestReceiver* receiver = nullptr;
  std::thread::id hostThread;
  std::uint32_t ownProcess = 0;  // the one that opened the channel

  std::unique_ptr<ManualEvent> commandReady;
  std::unique_ptr<ManualEvent> commandDone;
  std::unique_ptr<ManualEvent> segmentReplaced;
  std::unique_ptr<boost::interprocess::shared_memory_object> toAppMemory;
  std::unique_ptr<boost::interprocess::mapped_region> toAppRegion;
  std::byte* toAppBase = nullptr;
  std::uint64_t toAppSize = 0;

  std::unique_ptr<ManualEvent> requestReady;
  std::unique_ptr<ManualEvent> requestDone;
  std::unique_ptr<boost::interprocess::shared_memory_object> toPluginMemory;
  std::unique_ptr<boost::interprocess::mapped_region> toPluginRegion;
  std::byte* toPluginBase = nullptr;
  std::optional<ObjectIdentity> toPluginIdentity;

  RendererProcess process;
  std::atomic<bool> ended{false};
  std::atomic<std::uint64_t> aliveTick{0};  // when it last was

  wxCriticalSection sendLock;
  std::atomic<std::thread::id> sendOwner{};  // who holds sendLock; only its owner relies on it
  bool suppressCamera = false;
  float lastProgress = -1.0f;
  bool pendingWait = false;
  std::int32_t pendingCommand = -1;
  int reloadsOutstanding = 0;  // ReloadFromPlugin commands whose completion nobody has seen

  // Host thread only.
  bool serving = false;  // a request is being served
  Sends sends = Sends::Normally;
  double patienceEnds = 0.0;  // until then an interrupted callback does not end the link

  std::mutex heldMutex;
  std::deque<HeldCommand> held;
  std::atomic<bool> anyHeld{false};  // so that a command without company need not lock
};

}  // namespace quellix
