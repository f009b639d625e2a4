#pragma once

#include <cstring>
#include <exception>
#include <new>

#include "host/ProtectedCall.h"
#include "host/RubyHeaders.h"
#include "host/Session.h"

namespace quellix {

// Runs a method's body so that no C++ exception meets a frame of the interpreter: it is caught, all
// destructors run, and only then its text is raised as a RuntimeError. The body must hold nothing
// that has a destructor, since raising skips those of this frame; it must not call Ruby
// unprotected. A link that ended while the body ran is released when the outermost body has
// returned; an interrupt that came meanwhile goes on then.
template <class Body>
VALUE Guarded(Body body) {
  const VALUE fiber = rb_fiber_current();
  char message[1024] = "";
  VALUE result = Qnil;
  bool failed = true;
  try {
    const MethodScope scope(fiber);
    result = body();
    failed = false;
  } catch (const std::bad_alloc&) {
    std::strcpy(message, "there is not enough memory");
  } catch (const std::exception& error) {
    std::strncpy(message, error.what(), sizeof message - 1);
    message[sizeof message - 1] = '\0';
  } catch (...) {
    std::strcpy(message, "an unknown error in the extension");
  }
  if (const int tag = TakeInterruption()) rb_jump_tag(tag);
  if (failed) rb_raise(rb_eRuntimeError, "%s", message);
  return result;
}

}  // namespace quellix
