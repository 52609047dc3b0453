#ifndef SKETCHUP_API_SKETCHUP_H
#define SKETCHUP_API_SKETCHUP_H

#include <SketchUpAPI/color.h>
#include <SketchUpAPI/common.h>
#include <SketchUpAPI/geometry.h>
#include <SketchUpAPI/model/attribute_dictionary.h>
#include <SketchUpAPI/model/component_definition.h>
#include <SketchUpAPI/model/component_instance.h>
#include <SketchUpAPI/model/defs.h>
#include <SketchUpAPI/model/entities.h>
#include <SketchUpAPI/model/entity.h>
#include <SketchUpAPI/model/group.h>
#include <SketchUpAPI/model/model.h>
#include <SketchUpAPI/model/typed_value.h>
#include <SketchUpAPI/unicodestring.h>

#endif
