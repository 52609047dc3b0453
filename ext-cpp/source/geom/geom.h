#ifndef QUILLMARK_GEOM_GEOM_H
#define QUILLMARK_GEOM_GEOM_H

// Every geometry type of the library.
#include "geom_tolerances.h"
#include "geom_color.h"
#include "geom_vector3.h"
#include "geom_vector4.h"
#include "geom_vector2.h"
#include "geom_queries.h"

#endif
