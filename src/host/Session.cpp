#include "host/Session.h"

#include <stdexcept>
#include <utility>

#include "support/TimingLog.h"

namespace quellix {

// Never destroyed: nothing runs when the host's process ends.
Session& Session::Instance() {
  static auto* session = new Session;
  return *session;
}

IpcInterface& Session::Open(VALUE receiver) {
  if (methodDepth > 1) {
    throw std::runtime_error("init_renderer cannot be called from a callback of the renderer");
  }
  if (ipcInterface) Release();
  ForgetInterface();
  rubyReceiver = std::make_unique<RubyReceiver>(receiver);
  ipcInterface = std::make_unique<IpcInterface>();
  ipcInterface->OpenChannel(rubyReceiver.get());
  return *ipcInterface;
}

void Session::Close() {
  if (!ipcInterface || closing) return;
  closing = true;
  if (methodDepth > 1) return;
  ReleaseWhenEnded();
}

void Session::SetExporting(bool running) {
  exporting = running;
  if (exporting) {
    cacheChanges.clear();
  } else {
    ApplyCacheChanges();
  }
}

void Session::ApplyCacheChanges() {
  for (const CacheChange& change : cacheChanges) change(ReloadCaches::Instance());
}

void Session::UpdateCacheInfo() {
  ChangeCaches([](ReloadCaches& caches) { caches.UpdateCacheInfo(); });
  if (exporting) return;
  ApplyCacheChanges();
  cacheChanges.clear();
}

void Session::ChangeCaches(CacheChange change) {
  if (exporting) {
    cacheChanges.push_back(std::move(change));
  } else {
    change(ReloadCaches::Instance());
  }
}

void Session::ForgetInterface() {
  forceCameraSend = true;
  ReloadCaches::Instance().ClearReloadCache();
}

void Session::Release() {
  ipcInterface->ReleaseChannel();
  ipcInterface.reset();
  rubyReceiver.reset();
  closing = false;
}

// Runs where no other method is active, so nobody is inside the link.
void Session::ReleaseWhenEnded() {
  if (!ipcInterface) return;
  if (closing) {
    ipcInterface->CloseApp();
    Release();
  } else if (ipcInterface->Ended()) {
    Release();
    ForgetInterface();
  }
}

MethodScope::~MethodScope() {
  Session& session = Session::Instance();
  if (session.methodDepth == 1) {
    try {
      session.ReleaseWhenEnded();
    } catch (const std::exception& error) {
      LogLine("quit: %s", error.what());
    }
  }
  --session.methodDepth;
}

}  // namespace quellix
