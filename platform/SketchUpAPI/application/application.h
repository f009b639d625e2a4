#ifndef SKETCHUPAPI_APPLICATION_APPLICATION_H_
#define SKETCHUPAPI_APPLICATION_APPLICATION_H_

#include <SketchUpAPI/common.h>
#include <SketchUpAPI/model/defs.h>

SU_EXTERN_C_BEGIN

// The model that the user works on, in the process of the host. It stays the host's and is not to be
// released. NO_DATA when none is open.
SU_EXPORT enum SUResult SUApplicationGetActiveModel(SUModelRef* model);

SU_EXTERN_C_END

#endif  // SKETCHUPAPI_APPLICATION_APPLICATION_H_
