#ifndef SKETCHUP_API_MODEL_ENTITIES_H
#define SKETCHUP_API_MODEL_ENTITIES_H

#include <SketchUpAPI/model/defs.h>

SU_API_BEGIN

/* The list calls fill at most len elements and set *count to the number filled. */
SU_EXPORT SUResult SUEntitiesGetNumGroups(SUEntitiesRef entities, size_t* count);
SU_EXPORT SUResult SUEntitiesGetGroups(SUEntitiesRef entities, size_t len, SUGroupRef groups[],
                                       size_t* count);
SU_EXPORT SUResult SUEntitiesGetNumInstances(SUEntitiesRef entities, size_t* count);
SU_EXPORT SUResult SUEntitiesGetInstances(SUEntitiesRef entities, size_t len,
                                          SUComponentInstanceRef instances[], size_t* count);

SU_API_END

#endif
