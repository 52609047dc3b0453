#ifndef SKETCHUP_API_MODEL_COMPONENT_DEFINITION_H
#define SKETCHUP_API_MODEL_COMPONENT_DEFINITION_H

#include <SketchUpAPI/model/defs.h>

SU_API_BEGIN

/* An invalid definition gives an invalid entity. */
SU_EXPORT SUEntityRef SUComponentDefinitionToEntity(SUComponentDefinitionRef comp_def);
SU_EXPORT SUResult SUComponentDefinitionGetEntities(SUComponentDefinitionRef comp_def,
                                                    SUEntitiesRef* entities);

SU_API_END

#endif
