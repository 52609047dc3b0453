#ifndef SKETCHUP_API_MODEL_GROUP_H
#define SKETCHUP_API_MODEL_GROUP_H

#include <SketchUpAPI/geometry.h>
#include <SketchUpAPI/model/defs.h>

SU_API_BEGIN

/* An invalid group gives an invalid entity. */
SU_EXPORT SUEntityRef SUGroupToEntity(SUGroupRef group);
SU_EXPORT SUResult SUGroupGetDefinition(SUGroupRef group, SUComponentDefinitionRef* definition);
SU_EXPORT SUResult SUGroupGetTransform(SUGroupRef group, struct SUTransformation* transform);

SU_API_END

#endif
