#ifndef SKETCHUPAPI_INITIALIZE_H_
#define SKETCHUPAPI_INITIALIZE_H_

#include <SketchUpAPI/common.h>

SU_EXTERN_C_BEGIN

SU_EXPORT void SUInitialize(void);
SU_EXPORT void SUTerminate(void);
SU_EXPORT void SUGetAPIVersion(size_t* major, size_t* minor);

SU_EXTERN_C_END

#endif  // SKETCHUPAPI_INITIALIZE_H_
