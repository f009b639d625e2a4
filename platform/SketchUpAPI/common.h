// Result codes and the handle convention that every call of the host's C API follows.
#ifndef SKETCHUPAPI_COMMON_H_
#define SKETCHUPAPI_COMMON_H_

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#if defined(_WIN32)
#ifdef MODELHOST_BUILD
#define SU_EXPORT __declspec(dllexport)
#else
#define SU_EXPORT __declspec(dllimport)
#endif
#else
#define SU_EXPORT __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
#define SU_EXTERN_C_BEGIN extern "C" {
#define SU_EXTERN_C_END }
#else
#define SU_EXTERN_C_BEGIN
#define SU_EXTERN_C_END
#endif

enum SUResult {
  SU_ERROR_NONE = 0,
  SU_ERROR_NULL_POINTER_INPUT = 1,
  SU_ERROR_INVALID_INPUT = 2,
  SU_ERROR_NULL_POINTER_OUTPUT = 3,
  SU_ERROR_INVALID_OUTPUT = 4,
  SU_ERROR_OVERWRITE_VALID = 5,
  SU_ERROR_GENERIC = 6,
  SU_ERROR_SERIALIZATION = 7,
  SU_ERROR_OUT_OF_RANGE = 8,
  SU_ERROR_NO_DATA = 9,
  SU_ERROR_INSUFFICIENT_SIZE = 10,
  SU_ERROR_UNKNOWN_EXCEPTION = 11,
  SU_ERROR_MODEL_INVALID = 12,
  SU_ERROR_MODEL_VERSION = 13,
  SU_ERROR_LAYER_LOCKED = 14,
  SU_ERROR_DUPLICATE = 15,
  SU_ERROR_PARTIAL_SUCCESS = 16,
  SU_ERROR_UNSUPPORTED = 17,
  SU_ERROR_INVALID_ARGUMENT = 18,
  SU_ERROR_ENTITY_LOCKED = 19,
  SU_ERROR_INVALID_OPERATION = 20
};

#ifndef __cplusplus
typedef enum SUResult SUResult;
#endif

typedef uint8_t SUByte;

// A handle is one opaque pointer in a struct of its own, so that kinds cannot be mixed up.
#define DEFINE_SU_TYPE(name) \
  typedef struct {           \
    void* ptr;               \
  } name;

// `SUFaceRef face = SU_INVALID;`
#define SU_INVALID \
  { 0 }

#define SUIsValid(handle) ((handle).ptr != 0)
#define SUIsInvalid(handle) ((handle).ptr == 0)
#define SUSetInvalid(handle) ((handle).ptr = 0)
#define SUAreEqual(a, b) ((a).ptr == (b).ptr)

#endif  // SKETCHUPAPI_COMMON_H_
