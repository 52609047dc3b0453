#ifndef SKETCHUP_API_COLOR_H
#define SKETCHUP_API_COLOR_H

typedef unsigned char SUByte;

struct SUColor {
  SUByte red;
  SUByte green;
  SUByte blue;
  SUByte alpha;
};

#ifndef __cplusplus
typedef struct SUColor SUColor;
#endif

#endif
