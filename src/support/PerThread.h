#pragma once

#include <pthread.h>

#include <system_error>

namespace quellix {

// One T for each thread that asks for it, made at its first call of Get and destroyed when the
// thread ends. `thread_local` does the same only for a T without a destructor: MinGW's runtime
// frees a thread's variables before it destroys them. Objects of this kind live as long as the
// process.
template <class T>
class PerThread {
 public:
  // Throws std::system_error when the process has no key left.
  PerThread() {
    const int error = ::pthread_key_create(&key, [](void* own) { delete static_cast<T*>(own); });
    if (error != 0) throw std::system_error(error, std::generic_category());
  }
  PerThread(const PerThread&) = delete;
  PerThread& operator=(const PerThread&) = delete;

  // The calling thread's own. Any thread.
  T& Get() {
    if (void* own = ::pthread_getspecific(key)) return *static_cast<T*>(own);
    T* own = new T();
    ::pthread_setspecific(key, own);
    return *own;
  }

 private:
  pthread_key_t key{};
};

}  // namespace quellix
