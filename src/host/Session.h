#pragma once

#include "host/RubyHeaders.h"

#include <memory>
#include <thread>
#include <utility>

#include "export/CacheChanges.h"
#include "host/RubyReceiver.h"
#include "link/IpcInterface.h"

namespace quellix {

// What the methods share for the life of the process: the one link to a renderer, and whether the
// next camera goes out even to a renderer whose camera is not linked. The thread inside the
// outermost method is the host thread for as long; no other may be in here meanwhile.
class Session {
 public:
  static Session& Instance();

  // The link, or null: before init_renderer, after quit, and once the renderer has quit.
  IpcInterface* Link() { return closing ? nullptr : ipcInterface.get(); }

  // Replaces the link by a new one whose requests go to that Ruby object. Not in a callback.
  IpcInterface& Open(VALUE receiver);

  // Closes the renderer and drops the link; in a callback, as soon as the method that it runs under
  // returns.
  void Close();

  // True while an export runs on the link.
  bool Exporting() const { return exporting; }
  void SetExporting(bool running);

  // Changes the reload caches: now, or, while an export runs, when it has ended.
  void ChangeCaches(CacheChanges::Change change) { cacheChanges.Make(std::move(change)); }

  bool forceCameraSend = true;

 private:
  friend class MethodScope;

  void EnterMethod(VALUE fiber);
  void LeaveMethod();

  void ForgetInterface();
  void Release();
  void ReleaseWhenEnded();

  std::unique_ptr<RubyReceiver> rubyReceiver;
  std::unique_ptr<IpcInterface> ipcInterface;
  int methodDepth = 0;
  std::thread::id methodThread;  // while a method runs: whose
  VALUE methodFiber = Qnil;      // and on which of its fibers
  bool exporting = false;
  bool closing = false;
  CacheChanges cacheChanges;
};

// Counts the methods that are running, one inside a callback of another; the outermost one's end is
// where a link that ended can be released. Throws when another thread or fiber is inside a method:
// this one would wait for that one while it keeps the interpreter from running it.
class MethodScope {
 public:
  explicit MethodScope(VALUE fiber) { Session::Instance().EnterMethod(fiber); }
  ~MethodScope() { Session::Instance().LeaveMethod(); }
  MethodScope(const MethodScope&) = delete;
  MethodScope& operator=(const MethodScope&) = delete;
};

}  // namespace quellix
