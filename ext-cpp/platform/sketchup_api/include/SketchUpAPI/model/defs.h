#ifndef SKETCHUP_API_MODEL_DEFS_H
#define SKETCHUP_API_MODEL_DEFS_H

#include <SketchUpAPI/common.h>

DEFINE_SU_TYPE(SUModelRef)
DEFINE_SU_TYPE(SUEntitiesRef)
DEFINE_SU_TYPE(SUEntityRef)
DEFINE_SU_TYPE(SUGroupRef)
DEFINE_SU_TYPE(SUComponentDefinitionRef)
DEFINE_SU_TYPE(SUComponentInstanceRef)
DEFINE_SU_TYPE(SUAttributeDictionaryRef)
DEFINE_SU_TYPE(SUTypedValueRef)

#endif
