#ifndef QUILLMARK_GEOM_GEOM_H
#define QUILLMARK_GEOM_GEOM_H

// Every geometry type of the library.
#include "geom_tolerances.h"
#include "geom_aligned_bounding_box2.h"
#include "geom_bounding_box3.h"
#include "geom_color.h"
#include "geom_quaternion.h"
#include "geom_queries.h"
#include "geom_transformation.h"
#include "geom_vector2.h"
#include "geom_vector3.h"
#include "geom_vector4.h"

#endif
