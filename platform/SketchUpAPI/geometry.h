#ifndef SKETCHUPAPI_GEOMETRY_H_
#define SKETCHUPAPI_GEOMETRY_H_

#include <SketchUpAPI/common.h>

struct SUPoint2D {
  double x;
  double y;
};

struct SUPoint3D {
  double x;
  double y;
  double z;
};

struct SUVector3D {
  double x;
  double y;
  double z;
};

// a*x + b*y + c*z + d = 0, (a, b, c) of unit length.
struct SUPlane3D {
  double a;
  double b;
  double c;
  double d;
};

struct SUBoundingBox3D {
  struct SUPoint3D min_point;
  struct SUPoint3D max_point;
};

// Texture coordinates before the division by q.
struct SUUVQ {
  double u;
  double v;
  double q;
};

#ifndef __cplusplus
typedef struct SUPoint2D SUPoint2D;
typedef struct SUPoint3D SUPoint3D;
typedef struct SUVector3D SUVector3D;
typedef struct SUPlane3D SUPlane3D;
typedef struct SUBoundingBox3D SUBoundingBox3D;
typedef struct SUUVQ SUUVQ;
#endif

#endif  // SKETCHUPAPI_GEOMETRY_H_
