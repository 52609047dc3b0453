#ifndef SKETCHUP_API_GEOMETRY_H
#define SKETCHUP_API_GEOMETRY_H

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

/* A 4x4 matrix, column-major: values[12..14] hold the translation, values[15] the weight. */
struct SUTransformation {
  double values[16];
};

#ifndef __cplusplus
typedef struct SUPoint3D SUPoint3D;
typedef struct SUVector3D SUVector3D;
typedef struct SUTransformation SUTransformation;
#endif

#endif
