#ifndef SKETCHUP_API_MODEL_ENTITY_H
#define SKETCHUP_API_MODEL_ENTITY_H

#include <SketchUpAPI/model/defs.h>

SU_API_BEGIN

/* Unique within the entity's model; the same number the host's Ruby API reports. */
SU_EXPORT SUResult SUEntityGetID(SUEntityRef entity, int32_t* entity_id);
SU_EXPORT SUResult SUEntityGetNumAttributeDictionaries(SUEntityRef entity, size_t* count);
SU_EXPORT SUResult SUEntityGetAttributeDictionaries(SUEntityRef entity, size_t len,
                                                    SUAttributeDictionaryRef dictionaries[],
                                                    size_t* count);

SU_API_END

#endif
