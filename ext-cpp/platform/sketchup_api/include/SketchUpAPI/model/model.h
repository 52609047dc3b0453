#ifndef SKETCHUP_API_MODEL_MODEL_H
#define SKETCHUP_API_MODEL_MODEL_H

#include <SketchUpAPI/model/defs.h>

SU_API_BEGIN

/* Wraps the address the host's Ruby model reports; an address that names no live model
   gives an invalid reference. */
SU_EXPORT SUModelRef SUModelFromExisting(uintptr_t data);
SU_EXPORT SUResult SUModelGetEntities(SUModelRef model, SUEntitiesRef* entities);

/* Definitions owned by groups, and ordinary component definitions: two separate lists. */
SU_EXPORT SUResult SUModelGetNumGroupDefinitions(SUModelRef model, size_t* count);
SU_EXPORT SUResult SUModelGetGroupDefinitions(SUModelRef model, size_t len,
                                              SUComponentDefinitionRef definitions[],
                                              size_t* count);
SU_EXPORT SUResult SUModelGetNumComponentDefinitions(SUModelRef model, size_t* count);
SU_EXPORT SUResult SUModelGetComponentDefinitions(SUModelRef model, size_t len,
                                                  SUComponentDefinitionRef definitions[],
                                                  size_t* count);

SU_API_END

#endif
