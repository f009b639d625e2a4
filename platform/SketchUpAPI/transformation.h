#ifndef SKETCHUPAPI_TRANSFORMATION_H_
#define SKETCHUPAPI_TRANSFORMATION_H_

#include <SketchUpAPI/common.h>

// A 4x4 matrix for column vectors, column after column; the translation is values[12..14].
struct SUTransformation {
  double values[16];
};

#ifndef __cplusplus
typedef struct SUTransformation SUTransformation;
#endif

#endif  // SKETCHUPAPI_TRANSFORMATION_H_
