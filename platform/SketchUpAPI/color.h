#ifndef SKETCHUPAPI_COLOR_H_
#define SKETCHUPAPI_COLOR_H_

#include <SketchUpAPI/common.h>

typedef struct {
  SUByte red;
  SUByte green;
  SUByte blue;
  SUByte alpha;
} SUColor;

#endif  // SKETCHUPAPI_COLOR_H_
