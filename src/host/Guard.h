#pragma once

#include <cstring>
#include <exception>

#include "host/RubyHeaders.h"
#include "host/Session.h"

namespace quellix {

// Runs a method's body so that no C++ exception meets a frame of the interpreter: it is caught, all
// destructors run, and only then its text is raised as a RuntimeError. The body must hold nothing
// that has a destructor, since raising skips those of this frame; it must not call Ruby
// unprotected. A link that ended while the body ran is released when the outermost body has
// returned.
template <class Body>
VALUE Guarded(Body body) {
  char message[1024];
  try {
    const MethodScope scope;
    return body();
  } catch (const std::exception& error) {
    std::strncpy(message, error.what(), sizeof message - 1);
    message[sizeof message - 1] = '\0';
  } catch (...) {
    std::strcpy(message, "an unknown error in the extension");
  }
  rb_raise(rb_eRuntimeError, "%s", message);
  return Qnil;
}

}  // namespace quellix
