#ifndef QUILLMARK_GEOM_GEOM_H
#define QUILLMARK_GEOM_GEOM_H

// Every geometry type of the library.
#include <quillmark/geom/geom_aligned_bounding_box2.h>
#include <quillmark/geom/geom_bounding_box3.h>
#include <quillmark/geom/geom_color.h>
#include <quillmark/geom/geom_quaternion.h>
#include <quillmark/geom/geom_queries.h>
#include <quillmark/geom/geom_tolerances.h>
#include <quillmark/geom/geom_transformation.h>
#include <quillmark/geom/geom_vector2.h>
#include <quillmark/geom/geom_vector3.h>
#include <quillmark/geom/geom_vector4.h>

#endif
