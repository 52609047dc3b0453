#ifndef SKETCHUP_API_MODEL_COMPONENT_INSTANCE_H
#define SKETCHUP_API_MODEL_COMPONENT_INSTANCE_H

#include <SketchUpAPI/geometry.h>
#include <SketchUpAPI/model/defs.h>

SU_API_BEGIN

/* An invalid instance gives an invalid entity. */
SU_EXPORT SUEntityRef SUComponentInstanceToEntity(SUComponentInstanceRef instance);
SU_EXPORT SUResult SUComponentInstanceGetDefinition(SUComponentInstanceRef instance,
                                                    SUComponentDefinitionRef* definition);
SU_EXPORT SUResult SUComponentInstanceGetTransform(SUComponentInstanceRef instance,
                                                   struct SUTransformation* transform);

SU_API_END

#endif
