#include "host/Session.h"

#include <stdexcept>

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
  if (ipcInterface) {
    ipcInterface->AwaitAttachment();
    Release();
  }
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
  if (running) {
    cacheChanges.BeginExport();
  } else {
    cacheChanges.EndExport();
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

void Session::EnterMethod(VALUE fiber) {
  if (methodDepth > 0 && methodThread != std::this_thread::get_id()) {
    throw std::runtime_error(
        "another thread is inside a method of the extension; wait for its end");
  }
  if (methodDepth > 0 && methodFiber != fiber) {
    throw std::runtime_error(
        "another fiber is inside a method of the extension; resume it until its end");
  }
  if (methodDepth == 0) {
    methodThread = std::this_thread::get_id();
    methodFiber = fiber;
    if (ipcInterface) ipcInterface->BecomeHostThread();
  }
  ++methodDepth;
}

void Session::LeaveMethod() {
  if (methodDepth == 1) {
    try {
      ReleaseWhenEnded();
    } catch (const std::exception& error) {
      LogLine("quit: %s", error.what());
    }
  }
  --methodDepth;
}

}  // namespace quellix
